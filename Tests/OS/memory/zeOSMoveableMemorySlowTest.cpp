// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "OS/memory/MoveableWork.h"

TEST(MMAllocator, DoesWhatASlowTwinDoesTenMillionTimes) {
    compareWithTwin(10000000);
}

TEST(MoveableAllocator, KeepsEachContentApartTenMillionTimes) {
    keepContents(10000000);
}
