// SPDX-License-Identifier: MIT

/// @file
/// A child process that tells its parent through a pipe how far it came.
///
/// The parent reads the pipe to its end. The write end is closed by a successful `execv`, which so
/// reports itself; a child that fails writes a CallResult first.
///
/// The process may have other threads, and any lock may be held at the moment of the `fork`. So
/// whatever a child needs is made before it, and a Callable makes only async-signal-safe calls and
/// allocates nothing. (`fork` within a child is safe too: the C library keeps its locks
/// consistent.)

#pragma once

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "Base/Utility/zeUtilError.h"

namespace zeString {
class IString;
}

namespace zeOS {

/// What goes through the pipe, in the byte order of the machine: both ends are the same program.
struct CallResult {
    enum Code : std::int32_t {
        Success = 0,
        GeneralFailure = 1,
        OutOfMemory = 4,
        OutOfProcesses = 5,
        ExecFailed = 6,
    };

    std::int32_t code = Success;
    char message[256] = {}; ///< Zero-terminated.

    /// The code and message as they are.
    zeUtil::Error error() const;
};
static_assert(sizeof(CallResult) == 260 && offsetof(CallResult, message) == 4);

/// The texts of system errors, made before there is a child: `strerror` takes locks.
class ErrorTexts {
public:
    ErrorTexts();

    /// A failure with the text `what`, which ends in a colon and a blank, and that of `error`.
    CallResult failure(CallResult::Code code, const char* what, int error) const;

private:
    /// What `pipe2`, `fcntl`, `fork`, `read` and `execv` are documented to fail with. For any other
    /// error there is the text in English.
    static constexpr int known[] = {
        E2BIG,  EACCES, EAGAIN, EBADF,        EFAULT, EINVAL, EIO,     EISDIR, ELIBBAD, ELOOP,
        EMFILE, ENFILE, ENOENT, ENAMETOOLONG, ENOMEM, ENOSYS, ENOEXEC, EPERM,  ENOTDIR, ETXTBSY,
    };

    const char* text(int error) const;

    std::array<std::string, std::size(known)> texts_;
};

/// What is done in a child process, or leads to one.
class Callable {
public:
    virtual ~Callable();

    /// Sets `processId` where it makes a process.
    virtual CallResult operator()(int& processId) = 0;
};

/// Becomes another program. Returns only if that fails.
class Exec final : public Callable {
public:
    /// Borrows the texts.
    explicit Exec(const ErrorTexts& texts) : texts_(&texts) {}

    /// Sets the file to execute and the arguments. False if one of them has no UTF-8 form.
    bool set(const zeString::IString& path, const std::vector<zeString::IString>& args);

    CallResult operator()(int& processId) override;

private:
    std::string path_;
    std::vector<char*> argv_; ///< The texts of `arguments_`, and null.
    std::vector<std::string> arguments_;
    const ErrorTexts* texts_;
};

/// Calls another Callable in a child process, and passes a failure on. Success means that the call
/// succeeded or that the child became another program; the child is the caller's to wait for, as
/// it is after a failure that leaves `processId` positive.
class ForkAndCall final : public Callable {
public:
    /// Borrows both.
    ForkAndCall(Callable& inner, const ErrorTexts& texts) : inner_(&inner), texts_(&texts) {}

    CallResult operator()(int& processId) override;

private:
    [[noreturn]] void runChild(int pipe);
    CallResult receive(int pipe) const;

    Callable* inner_;
    const ErrorTexts* texts_;
};

} // namespace zeOS
