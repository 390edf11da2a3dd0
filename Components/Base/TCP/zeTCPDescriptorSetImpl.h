// SPDX-License-Identifier: MIT

/// @file
/// A set of descriptors for `select` without the limit of `fd_set`.

#pragma once

#include <sys/select.h>
#include <sys/time.h>

#include <vector>

#include "Base/Utility/zeUtilInterval.h"

namespace zeTCP {

/// Grows by whole fd_sets, one after the other: the kernel reads them as one long set.
class DescriptorSetImpl {
public:
    /// Adds `fd`; a negative one is skipped.
    void add(int fd);
    bool contains(int fd) const;
    void clear();

    /// The highest that was added; -1 for none.
    int maxFd() const { return maxFd_; }

    /// doSelect() on the set.
    int select(const zeUtil::Interval& timeout);
    /// One call of the system's `select`, without a limit if `timeout` is null.
    int selectOnce(timeval* timeout);

private:
    std::vector<fd_set> sets_;
    int maxFd_ = -1;
};

timeval asTimeval(const zeUtil::Interval& interval);

} // namespace zeTCP
