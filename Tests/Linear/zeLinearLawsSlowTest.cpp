// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "Linear/zeLinearLaws.h"

TEST(LinearLaws, HoldOnAMillionInputs) {
    expectLaws(1'000'000);
}
