// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilBitField.h"

#include <algorithm>
#include <cstddef>
#include <random>
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
}

void expectSame(const BitField& field, const Model& model) {
    expectBits(field, model);
    EXPECT_EQ(field.numBits(), static_cast<int>(model.size()));
    EXPECT_EQ(field.numSet(), std::count(model.begin(), model.end(), true));
}

template<class Operation>
Model combined(const Model& a, const Model& b, Operation operation) {
    Model result(a.size());
    for (std::size_t i = 0; i < a.size(); ++i)
        result[i] = operation(a[i], i < b.size() && b[i]);
    return result;
}

const auto exclusiveOr = [](bool a, bool b) { return a != b; };
const auto bothOf = [](bool a, bool b) { return a && b; };
const auto anyOf = [](bool a, bool b) { return a || b; };

} // namespace

TEST(BitField, DoesWhatAnArrayOfBoolDoes) {
    std::mt19937 random(3);
    for (int size : {0, 1, 10, 31, 32, 33, 64, 100}) {
        SCOPED_TRACE(size);
        const auto length = static_cast<std::size_t>(size);
        BitField a(300), b(size); // the memory of `a` does not shrink
        a.setAll();
        a.resizeAndReset(size);
        a.resizeAndReset(-1);
        Model modelA(length), modelB(length);
        for (int step = 0; step < 200; ++step) {
            if (size > 0) {
                const int i = static_cast<int>(random() % length);
                const bool v = random() % 2;
                (step % 2 ? a : b).setBit(i, v);
                (step % 2 ? modelA : modelB)[static_cast<std::size_t>(i)] = v;
            }
            expectSame(a, modelA);
            expectSame(~a, combined(modelA, Model(length, true), exclusiveOr));
            expectSame(a ^ b, combined(modelA, modelB, exclusiveOr));
            expectSame(a & b, combined(modelA, modelB, bothOf));
            expectSame(b | a, combined(modelA, modelB, anyOf));
            EXPECT_EQ(a == b, modelA == modelB);
        }
        a.setAll();
        for (int i = 0; i < size; ++i)
            b.setBit(i, true);
        EXPECT_EQ(a, b) << "spare bits do not count";
        a.recountSetBits();
        expectSame(a, Model(length, true));
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
    EXPECT_EQ((longField & BitField()).numSet(), 0);
    EXPECT_EQ((shortField ^ longField).numSet(), 0);
}

TEST(BitFieldAuto, DoesWhatAnEndlessArrayOfBoolDoes) {
    std::mt19937 random(4);
    for (int round = 0; round < 300; ++round) {
        BitFieldAuto a, b;
        Model modelA(200), modelB(200);
        for (auto n = random() % 20; n > 0; --n) {
            const std::size_t i = random() % (1 + random() % 200);
            const bool v = random() % 3 != 0;
            const bool intoA = random() % 2;
            (intoA ? a : b).setBit(static_cast<int>(i), v);
            (intoA ? modelA : modelB)[i] = v;
        }
        expectBits(a, modelA);
        expectBits(a ^ b, combined(modelA, modelB, exclusiveOr));
        expectBits(a & b, combined(modelA, modelB, bothOf));
        expectBits(a | b, combined(modelA, modelB, anyOf));
        EXPECT_EQ(a == b, modelA == modelB);
        EXPECT_EQ(a.anySet(), std::count(modelA.begin(), modelA.end(), true) > 0);
        EXPECT_EQ(a.testBits(b), b.maxAvailableBits() <= a.maxAvailableBits() &&
                                     combined(modelA, modelB, bothOf) == modelB);
        a.resetAll();
        EXPECT_EQ(a, BitFieldAuto());
    }
}

TEST(BitFieldAuto, MakesRoomOnlyForWhatIsSet) {
    BitFieldAuto field;
    field.setBit(-1, true);
    field.setBit(100, false);
    field.reserveSize(-1);
    EXPECT_EQ(field.maxAvailableBits(), 0);
    EXPECT_FALSE(field.testBit(-1));
    field.setBit(100, true);
    EXPECT_EQ(field.maxAvailableBits(), 128);
    field.reserveSize(127);
    EXPECT_EQ(field.maxAvailableBits(), 128);
    field.reserveSize(128);
    EXPECT_EQ(field.maxAvailableBits(), 160);
    field.setBit(100, false);
    EXPECT_EQ(field, BitFieldAuto());
    EXPECT_TRUE(field.testBits(BitFieldAuto()));
    EXPECT_FALSE(BitFieldAuto().testBits(field)) << "it has more words, though none is set";
}

TEST(PowerOfTwo, RoundsUpOrToTheNearest) {
    struct Case {
        int n, ceil, round;
    };
    const Case cases[] = {{-5, 1, 1},
                          {0, 1, 1},
                          {1, 1, 1},
                          {2, 2, 2},
                          {3, 4, 4},
                          {5, 8, 4},
                          {6, 8, 8},
                          {8, 8, 8},
                          {11, 16, 8},
                          {12, 16, 16},
                          {1 << 30, 1 << 30, 1 << 30},
                          {(1 << 29) + 1, 1 << 30, 1 << 29}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.n);
        EXPECT_EQ(zeUtil::ceilPowerOfTwo(c.n), c.ceil);
        EXPECT_EQ(zeUtil::roundPowerOfTwo(c.n), c.round);
        EXPECT_EQ(zeUtil::isPowerOfTwo(c.n), c.n == c.ceil);
    }
    EXPECT_EQ(zeUtil::ceilPowerOfTwo((1 << 30) + 1), 2147483647);
    EXPECT_TRUE(zeUtil::isPowerOfTwo(2147483647));
}
