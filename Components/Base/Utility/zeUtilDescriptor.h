// SPDX-License-Identifier: MIT

/// @file
/// The owner of a file descriptor, and the loop around system calls that signals interrupt.
///
/// Threads: a Descriptor belongs to one thread at a time; errno is the calling thread's.
///
/// @code
/// #include <fcntl.h>
/// const zeUtil::Descriptor zeros(
///     zeUtil::retried([] { return ::open("/dev/zero", O_RDONLY | O_CLOEXEC); }));
/// assert(zeros.isOpen());
/// char block[16];
/// assert(zeUtil::retried([&] { return ::read(zeros.get(), block, sizeof block); }) == 16);
/// @endcode

#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace zeUtil {

/// Calls `call` until it returns something other than -1 with errno EINTR, and returns that. `call`
/// takes no arguments, and is a system call that may be repeated as it is.
template<class Call>
auto retried(Call&& call) -> decltype(call()) {
    for (;;)
        if (const auto result = call(); result != -1 || errno != EINTR)
            return result;
}

/// Owns one file descriptor, or none (-1), and closes it when it dies. A moved-from Descriptor owns
/// none. Open with O_CLOEXEC, so that child processes do not inherit it.
class Descriptor {
public:
    /// Owns nothing.
    Descriptor() noexcept = default;

    /// Takes `fd` over; -1 for none, as a failed open gives it.
    explicit Descriptor(int fd) noexcept : fd_(fd) {}

    Descriptor(const Descriptor&) = delete; ///< Move it, or `dup` the descriptor.

    /// Takes over what `other` owns.
    Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}

    /// Closes what it owns and takes over what `other` owns. errno is unchanged.
    Descriptor& operator=(Descriptor other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }

    /// Closes what it owns, ignoring failures. errno is unchanged, so that the error which led here
    /// can still be read.
    ~Descriptor() {
        const int reason = errno;
        close();
        errno = reason;
    }

    /// The descriptor; -1 if none is owned.
    int get() const noexcept { return fd_; }

    /// Whether a descriptor is owned.
    bool isOpen() const noexcept { return fd_ != -1; }

    /// Gives the descriptor up without closing it: the caller owns it.
    int release() noexcept { return std::exchange(fd_, -1); }

    /// Closes the descriptor and owns none afterwards, whatever the result: 0, or -1 with errno.
    /// Not retried, since Linux has released the descriptor even when `close` fails. 0 if none is
    /// owned.
    int close() noexcept { return isOpen() ? ::close(release()) : 0; }

private:
    int fd_ = -1;
};

} // namespace zeUtil
