// SPDX-License-Identifier: MIT

#include "IO/formats/DecimalTwin.h"

TEST(DecimalTextAtLength, IsThatOfTheCLibrary) {
    decimals::expectRandomNumbers(2'000'000, 2);
}
