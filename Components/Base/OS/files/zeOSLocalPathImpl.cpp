// SPDX-License-Identifier: MIT

#include "Base/OS/files/zeOSLocalPathImpl.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>
#include <string>

#include "Base/OS/zeOSFilename.h"

namespace zeOS {
namespace {

using zeString::IString;

/// The entries of a directory, one after the other, each with a terminator.
struct RawEntries {
    explicit RawEntries(const IString& directory) {
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(directory.asUTF8()),
                                                          &::closedir);
        if (!entries)
            return;
        while (const dirent* entry = ::readdir(entries.get())) {
            bytes.append(entry->d_name).push_back('\0');
            ++count;
        }
    }

    /// Calls `action` with each name.
    template<class Action>
    void forEach(const Action& action) const {
        const char* name = bytes.c_str();
        for (std::size_t i = 0; i < count; ++i, name += std::strlen(name) + 1)
            action(name);
    }

    std::string bytes;
    std::size_t count = 0;
};

} // namespace

LocalPath::LocalPath(const IString& name) : name_(name) {
    const unsigned int colon = name.find(L':');
    if (colon == zeString::String::npos || name.substr(0, colon) != L"file")
        return;
    withoutScheme_.emplace(name.substr(colon + 1));
    withoutScheme_->rstrip(Filename::separator()).prepend(Filename::separator());
}

mode_t localFileType(const IString& path) {
    struct stat status;
    return ::stat(path.asUTF8(), &status) == 0 ? status.st_mode & S_IFMT : 0;
}

std::optional<bool> findLocalDirectory(IString path) {
    // With a separator at its end the system would refuse the name of a file.
    if (path.length() > 1 && path[path.last()] == Filename::separator())
        path.erase(path.last());
    const mode_t type = localFileType(path);
    return type == 0 ? std::nullopt : std::optional(type == S_IFDIR);
}

std::vector<IString> localEntries(const IString& directory) {
    const RawEntries entries(directory);
    std::vector<IString> names;
    names.reserve(entries.count);
    std::string text;
    entries.forEach([&](const char* name) {
        // Only a mark at the very beginning of a text is dropped.
        names.emplace_back((text.assign(1, '/') += name).c_str(), zeString::EncodingUTF8);
        names.back().erase(0, 1);
    });
    return names;
}

std::vector<IString> decodedLocalEntries(const IString& directory, const IString& prefix) {
    // Bytes first, so that the array is made once: growing would copy every name again.
    const RawEntries entries(directory);
    std::vector<IString> names;
    names.reserve(entries.count);
    entries.forEach([&](const char* name) {
        names.emplace_back(name, zeString::EncodingUTF8);
        if (!prefix.isEmpty())
            names.back().prepend(prefix);
    });
    return names;
}

} // namespace zeOS
