// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSSearchPath.h"

#include <algorithm>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeUtilSplit.h"

namespace zeOS {

using zeString::IString;

namespace {

/// What is there under exactly this name, which is not normalised; nothing if that cannot be asked.
FileStatus statusOf(const IString& name) {
    FileStatus status;
    File::query(name, status);
    return status;
}

bool isDirectory(const IString& name) {
    const FileStatus status = statusOf(name);
    return status.exists() && status.isDirectory();
}

} // namespace

SearchPath::SearchPath() = default;

SearchPath::SearchPath(const SearchPath& other)
    : directories_(other.directories_),
      separator_(other.separator_),
      shell_(other.shell_),
      isInitialized_(other.isInitialized_) {}

SearchPath& SearchPath::operator=(const SearchPath& other) {
    directories_ = other.directories_;
    joined_ = IString();
    separator_ = other.separator_;
    shell_ = other.shell_;
    isInitialized_ = other.isInitialized_;
    return *this;
}

SearchPath::~SearchPath() = default;

void SearchPath::initialize() {
    initialize(IString());
}

void SearchPath::initialize(const IString& path) {
    initialize(path, Filename::pathSeparator());
}

void SearchPath::initialize(const IString& path, wchar_t separator) {
    const std::vector<IString> parts = zeUtil::split(path, separator); // `path` may be joined_
    separator_ = separator;
    isInitialized_ = true;
    joined_ = IString();
    for (const IString& part : parts)
        addDirectoryToPath(part);
}

void SearchPath::reset() {
    clear();
    shell_ = true;
    isInitialized_ = false;
}

void SearchPath::clear() {
    directories_.clear();
    joined_ = IString();
}

bool SearchPath::addDirectoryToPath(const IString& dir) {
    if (!isDirectory(dir))
        return false;
    directories_.push_back(dir);
    joined_ = IString();
    return true;
}

bool SearchPath::insertDirectoryInPath(const IString& dir) {
    if (!isDirectory(dir))
        return false;
    directories_.insert(directories_.begin(), dir);
    joined_ = IString();
    return true;
}

bool SearchPath::removeDirectoryFromPath(const IString& dir) {
    const auto found = std::find(directories_.begin(), directories_.end(), dir);
    if (found == directories_.end())
        return false;
    directories_.erase(found);
    joined_ = IString();
    return true;
}

bool SearchPath::hasDirectory(const IString& dir) const {
    return std::find(directories_.begin(), directories_.end(), dir) != directories_.end();
}

void SearchPath::findFile(IString& result, const IString& name) const {
    if (&result == &name)
        return findFile(result, IString(name));
    result = IString();
    const Filename file(name);
    if (file.isAbsolute() || (shell_ && !file.dirname().isEmpty())) {
        if (statusOf(name).exists())
            result = name;
    } else {
        searchFor(result, name);
    }
}

IString SearchPath::findFile(const IString& name) const {
    IString result;
    findFile(result, name);
    return result;
}

IString SearchPath::findDirectory(const IString& name) const {
    return Filename(findFile(name)).dirname();
}

void SearchPath::searchFor(IString& result, const IString& name) const {
    for (const IString& directory : directories_) {
        if (!result.isEmpty())
            return;
        const Filename candidate(directory, name);
        if (doesFileExist(candidate))
            result = candidate.path();
    }
}

const IString& SearchPath::getDirectories() const {
    if (joined_.isEmpty())
        join();
    return joined_;
}

void SearchPath::join() const {
    for (const IString& directory : directories_) {
        if (&directory != &directories_.front())
            joined_.append(separator_);
        joined_.append(directory);
    }
}

} // namespace zeOS
