// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDirectoryIterator.h"

#include <sys/stat.h>

#include <utility>
#include <vector>

#include "Base/OS/files/zeOSFileFactoryImpl.h"
#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/files/zeOSLocalPathImpl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"

namespace zeOS {

using zeString::IString;

namespace {

bool isSlash(wchar_t c) {
    return c == L'/' || c == L'\\'; // both, on every platform
}

IString withoutSlashesAtEnd(IString name) {
    while (name.length() > 1 && isSlash(name[name.last()]))
        name.erase(name.last());
    return name;
}

/// How often a directory may be entered as if for the first time: a root of "/" is entered three
/// times, see isDots().
constexpr unsigned int freeVisits = 3;

/// How many characters the names found by all further visits may have: 64 MB. A link that leads
/// back up to a directory of some thousand files stays below that.
constexpr unsigned long maxRepeatedText = 1UL << 24;

/// Whether a full name is that of an entry "." or "..". Names of less than 4 characters are not
/// tested, so that a root of one character is walked through "./." as well: kept for compatibility.
bool isDots(const IString& name) {
    const unsigned int length = name.length();
    if (length < 4 || name[length - 1] != L'.')
        return false;
    const wchar_t before = name[length - 2];
    return isSlash(before) || (before == L'.' && isSlash(name[length - 3]));
}

} // namespace

DirectoryIterator::iteratorEntry::iteratorEntry(IString&& fullName) {
    name.swap(fullName);
    if (everyNameIsLocal()) { // the same by one system call
        const mode_t type = localFileType(LocalPath(name).text());
        exists = type != 0;
        isDirectory = type == S_IFDIR;
        return;
    }
    FileStatus status;
    if (File::query(name, status).code() != File::ErrNone || !status.exists())
        return;
    exists = true;
    isDirectory = status.isDirectory();
}

DirectoryIterator::DirectoryIterator(const IString& root) {
    entries_.emplace_back(withoutSlashesAtEnd(root));
    if (!entries_.back().exists)
        entries_.pop_back();
}

DirectoryIterator::~DirectoryIterator() = default;

void DirectoryIterator::next() {
    if (const iteratorEntry& current = entries_.front(); current.isDirectory && !current.pruned)
        visit(current.name);
    entries_.pop_front();
}

void DirectoryIterator::visit(const IString& directory) {
    File file(directory);
    if (!file.isValid())
        return;
    const bool isRepeated = isEnteredTooOften(file);
    if (isRepeated && repeatedText_ > maxRepeatedText)
        return;
    // A name that decodes to nothing would be the directory once more, and for ever.
    IString unnamed = file.getFullName();
    if (unnamed.isEmpty() || unnamed[unnamed.last()] != file.getSeparator())
        unnamed.append(file.getSeparator());

    std::vector<IString> names;
    file.readDir(names, true);
    for (IString& name : names) {
        if (isDots(name) || name == unnamed)
            continue;
        if (isRepeated)
            repeatedText_ += name.length();
        entries_.emplace_back(std::move(name));
        if (!entries_.back().exists)
            entries_.pop_back();
    }
}

/// Counts a visit. Links that lead back up make the same directory appear under more names than
/// could ever be visited; the system knows that it is the same. Of other transports it is unknown.
bool DirectoryIterator::isEnteredTooOften(const File& file) {
    struct stat status;
    if (file.transportId() != LocalFileTransport::id ||
        ::stat(file.getFullName().asUTF8(), &status) != 0)
        return false;
    return ++visits_[{status.st_dev, status.st_ino}] > freeVisits;
}

} // namespace zeOS
