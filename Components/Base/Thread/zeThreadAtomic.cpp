// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadAtomic.h"

#include <cstdint>

#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadMutexImpl.h"
#include "Base/Thread/zeThreadRelaxedImpl.h"
#include "Base/Utility/zeUtilWrap.h"

namespace zeThread {

namespace {

constexpr std::uint64_t lockCount = 17;

// Leaves in the order of locks: nothing else is locked under one.
Mutex locktable[lockCount];

inline int add(int& value, int difference) {
    const BriefLock lock(locktable[reinterpret_cast<std::uint64_t>(&value) % lockCount]);
    const int sum = zeUtil::wrappedSum(value, difference);
    relaxedStore(value, sum); // ReferenceCount reads its count without the lock
    return sum;
}

} // namespace

int atomicIncrement(int& value) {
    return add(value, 1);
}

int atomicDecrement(int& value) {
    return add(value, -1);
}

} // namespace zeThread
