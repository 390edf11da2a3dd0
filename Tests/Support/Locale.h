// SPDX-License-Identifier: MIT

#pragma once

#include <clocale>

#include <gtest/gtest.h>

namespace support {

/// Gives its tests a UTF-8 locale for character types, and the "C" locale back afterwards.
class Utf8LocaleTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

} // namespace support
