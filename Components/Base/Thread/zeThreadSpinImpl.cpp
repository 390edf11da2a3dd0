// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadSpinImpl.h"

#include <sched.h>

#include <algorithm>
#include <ctime>

namespace zeThread {

namespace {

/// 127 waits in a row do without at most, so that a spin in vain adds less than a fifth of a
/// microsecond to each.
constexpr unsigned int mostDoublings = 7;

unsigned int countProcessors() {
    cpu_set_t usable;
    return sched_getaffinity(0, sizeof usable, &usable) == 0
               ? static_cast<unsigned int>(CPU_COUNT(&usable))
               : 1;
}

} // namespace

unsigned int usableProcessors() {
    static const unsigned int count = countProcessors();
    return count;
}

long AdaptiveSpin::now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000L + time.tv_nsec;
}

bool AdaptiveSpin::isWorthwhile() {
    if (usableProcessors() < 2)
        return false;
    const unsigned int skipped = skipped_.load(std::memory_order_relaxed);
    if (skipped == 0)
        return true;
    skipped_.store(skipped - 1, std::memory_order_relaxed);
    return false;
}

void AdaptiveSpin::noteMiss() {
    const unsigned int misses =
        std::min(misses_.load(std::memory_order_relaxed) + 1, mostDoublings);
    misses_.store(misses, std::memory_order_relaxed);
    skipped_.store((1u << misses) - 1, std::memory_order_relaxed);
}

} // namespace zeThread
