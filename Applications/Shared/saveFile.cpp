// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Base/OS/zeOSProtectedWrite.h"

#include "Shared/failure.h"
#include "Shared/interruption.h"
#include "Shared/message.h"
#include "Shared/save.h"

namespace app {

namespace {

using zeOS::ProtectedWrite;

/// The result of a system call, unless it is -1.
int checked(int result) {
    if (result == -1)
        throw Failure(systemMessage(errno));
    return result;
}

/// A new file, which nobody else may read until it has its final rights.
zeUtil::Descriptor createFile(const std::string& name) {
    return zeUtil::Descriptor(checked(zeUtil::retried(
        [&] { return open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); })));
}

/// Throws a Failure unless the content is on disk.
void completeFile(zeUtil::Descriptor& file, mode_t rights) {
    checked(fchmod(file.get(), rights));
    checked(zeUtil::retried([&] { return fsync(file.get()); }));
    checked(file.close());
}

/// Why a save could not begin, or end.
std::string reason(int status) {
    switch (status) {
    case ProtectedWrite::StatusTempDirCreated:
        return message("shared.temp_made",
                       "the temporary directory was missing; it exists now: try again");
    case ProtectedWrite::StatusTempNotDirectory:
        return message("shared.temp_file", "the temporary directory is a file");
    case ProtectedWrite::StatusCannotClearTemp:
        return message("shared.no_temp", "there is no name for a temporary file");
    case ProtectedWrite::StatusTempMissing:
        return message("shared.temp_gone", "the temporary file has disappeared");
    case ProtectedWrite::StatusCannotBackup:
        return message("shared.no_backup", "the old file cannot be moved aside");
    default:
        return message("shared.no_replace", "the new file cannot be put in its place");
    }
}

void begin(ProtectedWrite& save) {
    if (!save.init())
        throw Failure(save.getStatus() == ProtectedWrite::StatusNotWritable
                          ? systemMessage(EACCES)
                          : reason(save.getStatus()));
}

/// While it lives, nobody else may read what is made.
class PrivateMask {
public:
    PrivateMask() : before_(umask(077)) {}
    PrivateMask(const PrivateMask&) = delete;
    PrivateMask& operator=(const PrivateMask&) = delete;
    ~PrivateMask() { umask(before_); }

private:
    mode_t before_;
};

/// Puts the new file in its place. If the environment asks for copies, these get the rights of any
/// new file; the mask keeps others out until the file has its own rights again.
void finish(ProtectedWrite& save, const std::string& path, mode_t rights) {
    bool isDone = false;
    {
        const PrivateMask mask;
        isDone = save.finalize();
    }
    chmod(path.c_str(), rights);
    if (!isDone)
        throw Failure(reason(save.getStatus()));
}

/// Makes the file of that name and opens it.
using Maker = std::function<zeUtil::Descriptor(const std::string&)>;

void replace(const Target& target, const std::string& path, mode_t rights, const Maker& make) {
    ProtectedWrite save(libraryFilename(path));
    begin(save);
    // From here on every exception abandons the save: its destructor removes the temporary file.
    const std::string temporary = save.getTempFilename().path().asUTF8();
    Interruption interruption(temporary);
    zeUtil::Descriptor file = make(temporary);
    completeFile(file, rights);
    if (!target.isUntouched())
        throw Failure("another program has changed it meanwhile");
    interruption.holdBack();
    finish(save, path, rights);
}

[[noreturn]] void fail(const Target& target, const Failure& failure) {
    throw Failure(message("shared.not_written", "{1}: cannot be written: {2}",
                          {target.name(), failure.what()}));
}

} // namespace

void saveFile(const Target& target, const std::function<void(int)>& write) {
    try {
        if (target.isStandardOutput())
            return write(STDOUT_FILENO);
        replace(target, target.path(), target.rights(), [&](const std::string& name) {
            zeUtil::Descriptor file = createFile(name);
            write(file.get());
            return file;
        });
    } catch (const Failure& failure) {
        fail(target, failure);
    }
}

void saveFile(const Target& target, const std::function<void(const std::string&)>& make) {
    try {
        replace(target, target.path(), target.rights(), [&](const std::string& name) {
            const PrivateMask mask;
            make(name);
            return zeUtil::Descriptor(checked(zeUtil::retried(
                [&] { return open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW); })));
        });
    } catch (const Failure& failure) {
        fail(target, failure);
    }
}

} // namespace app
