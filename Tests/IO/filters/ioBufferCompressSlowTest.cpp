// SPDX-License-Identifier: MIT

// Sections so long that the clearing of the table is decided in another way.

#include <gtest/gtest.h>

#include "IO/filters/CompressTwin.h"
#include "IO/filters/FilterData.h"
#include "IO/filters/FilterSupport.h"

namespace {

constexpr Switch compress = &ioBufferedStream::compress;

void expectTheDefinedSection(const std::string& bytes) {
    const std::string section = CompressTwinWriter::section(bytes);
    ASSERT_TRUE(filtered(compress, bytes) == section);
    ASSERT_TRUE(unfiltered(compress, section) == (Unfiltered{bytes, streamCompressEnd, ""}));
}

} // namespace

// Strings of more than 8000 bytes come up at 32,012,001.
TEST(CompressAtLength, KeepsOneByteManyTimes) {
    for (const unsigned n : {32'012'000u, 32'012'001u, 34'000'000u})
        expectTheDefinedSection(std::string(n, '\0'));
}

// The ratio is worked out another way from 8,388,608 bytes on.
TEST(CompressAtLength, KeepsMoreThanEightMillionBytes) {
    expectTheDefinedSection(mixedData(9'500'000));
    expectTheDefinedSection(randomData(9'500'000));
    EXPECT_GT(CompressTwinWriter::forgotten, 0);
}
