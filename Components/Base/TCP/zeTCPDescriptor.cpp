// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPDescriptor.h"

#include <sys/socket.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstddef>

#include "Base/TCP/zeTCPDescriptorSetImpl.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeTCP {

void DescriptorSetImpl::add(int fd) {
    if (fd < 0)
        return;
    const auto number = static_cast<std::size_t>(fd);
    if (number / FD_SETSIZE >= sets_.size())
        sets_.resize(number / FD_SETSIZE + 1);
    FD_SET(number % FD_SETSIZE, &sets_[number / FD_SETSIZE]);
    maxFd_ = std::max(maxFd_, fd);
}

bool DescriptorSetImpl::contains(int fd) const {
    const auto number = static_cast<std::size_t>(fd);
    return fd >= 0 && fd <= maxFd_ && FD_ISSET(number % FD_SETSIZE, &sets_[number / FD_SETSIZE]);
}

void DescriptorSetImpl::clear() {
    sets_.clear();
    maxFd_ = -1;
}

int DescriptorSetImpl::select(const zeUtil::Interval& timeout) {
    return doSelect(maxFd_ + 1, sets_.data(), timeout);
}

int DescriptorSetImpl::selectOnce(timeval* timeout) {
    return ::select(maxFd_ + 1, sets_.data(), nullptr, nullptr, timeout);
}

timeval asTimeval(const zeUtil::Interval& interval) {
    return {interval.seconds, interval.microseconds};
}

int makeSocket(int domain) {
    return ::socket(domain, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

int setLinger(int) {
    return 0;
}

int doSelect(int nfds, fd_set* set, const zeUtil::Interval& timeout) {
    // Made once: the system leaves the remaining time in it, so that signals do not extend the
    // wait.
    timeval remaining = asTimeval(timeout);
    timeval* const limit = timeout == zeUtil::Interval() ? nullptr : &remaining;
    return zeUtil::retried([&] { return ::select(nfds, set, nullptr, nullptr, limit); });
}

int doSelect(int fd, const zeUtil::Interval& timeout) {
    if (fd < 0) {
        errno = EBADF; // as for any other descriptor that is closed
        return -1;
    }
    DescriptorSetImpl set;
    set.add(fd);
    return set.select(timeout);
}

int doSelect(const std::vector<int>& fds, const zeUtil::Interval& timeout, fd_set& set) {
    int maxFd = 0;
    for (const int fd : fds) {
        if (fd < 0)
            continue;
        assert(fd < FD_SETSIZE);
        FD_SET(fd, &set);
        maxFd = std::max(maxFd, fd);
    }
    return doSelect(maxFd + 1, &set, timeout);
}

int doSelect(const std::vector<int>& fds, const zeUtil::Interval& timeout) {
    DescriptorSetImpl set;
    for (const int fd : fds)
        set.add(fd);
    return set.select(timeout);
}

} // namespace zeTCP
