// SPDX-License-Identifier: MIT

#include "Linear/zeLinearLaws.h"

#include <gtest/gtest.h>

TEST(LinearLaws, HoldOnRandomInputs) {
    expectLaws(5'000);
}
