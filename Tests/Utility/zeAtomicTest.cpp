// SPDX-License-Identifier: MIT

#include "Base/Utility/zeAtomic.h"

#include <gtest/gtest.h>

namespace {

TEST(Atomic, PlaceholdersDoNothing) {
    int n = 5;
    EXPECT_EQ(ze::atomic_increment(&n), 0);
    EXPECT_EQ(ze::atomic_decrement(&n), 0);
    EXPECT_EQ(n, 5);
}

} // namespace
