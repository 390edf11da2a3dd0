// SPDX-License-Identifier: MIT

#include "IO/formats/DecimalTwin.h"

TEST(DecimalTextAtLength, IsThatOfPrintf) {
    decimals::expectRandomAsPrintf(5'000'000, 2);
}
