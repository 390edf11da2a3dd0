// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilBitField.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Utility/zeUtilPowerOfTwo.h"

namespace {

using zeUtil::BitField;
using zeUtil::BitFieldAuto;
using Model = std::vector<bool>;

template<class Field>
void expectBits(const Field& field, const Model& model) {
    for (std::size_t i = 0; i < model.size(); ++i)
        ASSERT_EQ(field.testBit(static_cast<int>(i)), model[i]) << "bit " << i;
    if constexpr (std::is_same_v<Field, BitField>) {
        ASSERT_EQ(field.numSet(), std::count(model.begin(), model.end(), true));
    }
}

/// Sets and clears bits of two fields at random, as long as their models, and compares everything
/// that can be made of the two after each step.
template<class Field>
void compareWithModels(Field a, Field b, std::size_t length, unsigned int seed) {
    std::mt19937 random(seed);
    Model modelA(length), modelB(length);
    for (int step = 0; step < 100; ++step) {
        const std::size_t i = random() % length;
        const bool v = random() % 3 != 0;
        (step % 2 ? a : b).setBit(static_cast<int>(i), v);
        (step % 2 ? modelA : modelB)[i] = v;
        Model either = modelA, both = modelA, one = modelA;
        for (std::size_t k = 0; k < length; ++k) {
            either[k] = modelA[k] || modelB[k];
            both[k] = modelA[k] && modelB[k];
            one[k] = modelA[k] != modelB[k];
        }
        expectBits(a, modelA);
        expectBits(a | b, either);
        expectBits(a & b, both);
        expectBits(a ^ b, one);
        ASSERT_EQ(a == b, modelA == modelB);
        if constexpr (std::is_same_v<Field, BitFieldAuto>) {
            ASSERT_EQ(a.anySet(), modelA != Model(length));
            ASSERT_EQ(a.testBits(b),
                      b.maxAvailableBits() <= a.maxAvailableBits() && both == modelB);
        } else {
            modelA.flip();
            expectBits(~a, modelA);
            modelA.flip();
        }
    }
}

} // namespace

TEST(BitField, DoesWhatAnArrayOfBoolDoes) {
    for (int size : {1, 10, 31, 32, 33, 64, 100}) {
        SCOPED_TRACE(size);
        BitField a(300); // the memory does not shrink
        a.setAll();
        a.resizeAndReset(size);
        a.resizeAndReset(-1);
        EXPECT_EQ(a.numBits(), size);
        compareWithModels(a, BitField(size), static_cast<std::size_t>(size), 1);
        compareWithModels(BitField(size), a, static_cast<std::size_t>(size), 2);

        BitField each(size);
        for (int i = 0; i < size; ++i)
            each.setBit(i, true);
        a.setAll();
        EXPECT_EQ(a, each) << "spare bits do not count";
        a.recountSetBits();
        EXPECT_EQ(a.numSet(), size);
    }
}

TEST(BitField, CombinesWithFieldsOfOtherSizes) {
    EXPECT_EQ(BitField(), BitField(0));
    EXPECT_NE(BitField(32), BitField(33));
    EXPECT_EQ((~BitField()).numSet(), 0);
    BitField longField(100), shortField(5);
    longField.setAll();
    shortField.setAll();
    EXPECT_EQ((longField & shortField).numSet(), 32) << "the words that are there, spare bits too";
    EXPECT_EQ((shortField ^ longField).numSet(), 0);
}

TEST(BitFieldAuto, DoesWhatAnEndlessArrayOfBoolDoes) {
    for (std::size_t length : {1u, 32u, 70u, 200u})
        compareWithModels(BitFieldAuto(), BitFieldAuto(), length, 3);
}

TEST(BitFieldAuto, MakesRoomOnlyForWhatIsSet) {
    BitFieldAuto field;
    field.setBit(-1, true);
    field.setBit(100, false);
    field.reserveSize(-1);
    EXPECT_EQ(field.maxAvailableBits(), 0);
    EXPECT_FALSE(field.testBit(-1));
    field.reserveSize(127);
    EXPECT_EQ(field.maxAvailableBits(), 128);
    field.reserveSize(128);
    EXPECT_EQ(field.maxAvailableBits(), 160);
    EXPECT_EQ(field, BitFieldAuto());
    EXPECT_TRUE(field.testBits(BitFieldAuto()));
    EXPECT_FALSE(BitFieldAuto().testBits(field)) << "it has more words, though none is set";
}

TEST(PowerOfTwo, RoundsUpOrToTheNearest) {
    for (int n = -3; n < 5000; ++n) {
        int above = 1;
        while (above < n)
            above *= 2;
        const bool isNearerBelow = n - above / 2 < above - n;
        ASSERT_EQ(zeUtil::ceilPowerOfTwo(n), above);
        ASSERT_EQ(zeUtil::roundPowerOfTwo(n), above > 1 && isNearerBelow ? above / 2 : above) << n;
        ASSERT_EQ(zeUtil::isPowerOfTwo(n), n == above);
    }
    EXPECT_EQ(zeUtil::ceilPowerOfTwo(1 << 30), 1 << 30);
    EXPECT_EQ(zeUtil::ceilPowerOfTwo((1 << 30) + 1), 2147483647);
    EXPECT_TRUE(zeUtil::isPowerOfTwo(2147483647));
}
