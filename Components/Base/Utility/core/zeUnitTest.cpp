// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUnitTest.h"

#include <atomic>

namespace ze {

namespace {

std::atomic<bool> thisIsAUnitTest = false;

} // namespace

void setThisIsAUnitTest() {
    thisIsAUnitTest.store(true, std::memory_order_relaxed);
}

bool isThisAUnitTest() {
    return thisIsAUnitTest.load(std::memory_order_relaxed);
}

} // namespace ze
