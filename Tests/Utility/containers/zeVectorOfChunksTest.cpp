// SPDX-License-Identifier: MIT

#include "Base/Utility/zeVectorOfChunks.h"

#include <cstdint>
#include <new>

#include <gtest/gtest.h>

TEST(VectorOfChunks, RefusesMoreElementsThanMemoryCanHold) {
    zeVectorOfChunks<int, 4000> numbers; // 1000 elements a chunk
    numbers.grow(1001);
    numbers[1000] = 7;
    for (std::size_t size : {SIZE_MAX, SIZE_MAX - 998, SIZE_MAX / 2}) {
        EXPECT_THROW(numbers.grow(size), std::bad_alloc) << size;
        EXPECT_EQ(numbers.size(), 1001u);
        EXPECT_EQ(numbers.capacity(), 2000u);
    }
    EXPECT_EQ(*numbers.find(1000), 7);
    EXPECT_THROW((zeVectorOfChunks<int, 4>().grow(SIZE_MAX)), std::bad_alloc);
}
