// SPDX-License-Identifier: MIT

/// @file
/// A protected save as an application makes it, for a test and for the program that the test kills.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "Base/OS/zeOSProtectedWrite.h"

/// Neither is a multiple of the blocks in which files are copied.
inline const std::string oldContent(5000, 'o');
inline const std::string newContent(9000, 'n');

/// Writes a file in two pieces, and looks at every result.
inline bool writeFile(const zeOS::Filename& name, const std::string& content) {
    const int fd = open(name.path().asUTF8(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    const std::size_t half = content.size() / 2;
    const std::size_t rest = content.size() - half;
    const bool written = write(fd, content.data(), half) == static_cast<ssize_t>(half) &&
                         write(fd, content.data() + half, rest) == static_cast<ssize_t>(rest);
    return (close(fd) == 0) && written;
}

struct SaveResult {
    bool initialized;
    bool finalized;
    int status;
};

inline SaveResult saveNewContent(zeOS::ProtectedWrite& save,
                                 const std::string& content = newContent) {
    const bool initialized = save.init();
    if (initialized && !writeFile(save.getTempFilename(), content))
        save.invalidate();
    const bool finalized = save.finalize();
    return {initialized, finalized, save.getStatus()};
}

/// A save of its own, by copying or by renaming.
inline SaveResult saveOnce(const zeOS::Filename& name, bool copies,
                           const std::string& content = newContent) {
    zeOS::ProtectedWrite save(name);
    if (copies)
        save.useCopyStrategy();
    return saveNewContent(save, content);
}
