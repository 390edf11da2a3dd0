// SPDX-License-Identifier: MIT

#include "Support/SystemFaults.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>

namespace {

SystemFaults* active = nullptr;

} // namespace

SystemFaults::SystemFaults(Call call, std::vector<Answer> answers)
    : call_(call), answers_(std::move(answers)) {
    active = this;
}

SystemFaults::~SystemFaults() {
    active = nullptr;
}

SystemFaults::Answer SystemFaults::next(Call call) {
    Answer answer;
    if (active && active->call_ == call && active->calls_++ < active->answers_.size())
        answer = active->answers_[active->calls_ - 1];
    if (answer.error)
        errno = answer.error;
    return answer;
}

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (SystemFaults::next(SystemFaults::onOpen).error)
        return -1;
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

ssize_t read(int fd, void* destination, size_t n) {
    const SystemFaults::Answer answer = SystemFaults::next(SystemFaults::onRead);
    return answer.error ? -1 : syscall(SYS_read, fd, destination, std::min(n, answer.limit));
}

ssize_t write(int fd, const void* source, size_t n) {
    const SystemFaults::Answer answer = SystemFaults::next(SystemFaults::onWrite);
    return answer.error ? -1 : syscall(SYS_write, fd, source, std::min(n, answer.limit));
}

int close(int fd) {
    if (SystemFaults::next(SystemFaults::onClose).error)
        return -1;
    return static_cast<int>(syscall(SYS_close, fd));
}

} // extern "C"
