// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferCompress.h"

#include <utility>

#include <gtest/gtest.h>

#include "IO/filters/CompressTwin.h"
#include "IO/filters/FilterData.h"
#include "IO/filters/FilterSupport.h"

namespace {

using namespace std::string_literals;

constexpr Switch compress = &ioBufferedStream::compress;

/// What the filter makes of a section by its fast decoder, which must be what the other one makes
/// of it, where no block below holds a whole group.
Unfiltered decoded(const std::string& section, int piece = 10'000) {
    Unfiltered result = unfiltered(compress, section, piece);
    EXPECT_EQ(unfiltered(compress, section, piece, 3), result);
    return result;
}

/// A section of nine-bit codes.
std::string sectionOf(const std::vector<int>& codes) {
    std::string section = "\x1f\x9d\x90";
    for (std::size_t i = 0; i < codes.size(); ++i) {
        if (i % 8 == 0)
            section.append(9, '\0');
        char* const group = section.data() + section.size() - 9;
        for (std::size_t bit = 0; bit < 9; ++bit) {
            const std::size_t at = 9 * (i % 8) + bit;
            group[at / 8] = static_cast<char>(group[at / 8] | (codes[i] >> bit & 1) << (at % 8));
        }
    }
    return section;
}

} // namespace

// Codes in hand-made groups, lowest bit first: 61 is `a`, 101 the end, 102 the first string.
TEST(Compress, WritesTheseBytes) {
    const struct {
        std::string bytes, section;
    } cases[] = {
        // 61 101
        {"a", "\x1f\x9d\x90\x61\x02\x02\0\0\0\0\0\0"s},
        // 61 102 101: the string `aa` by itself
        {"aaa", "\x1f\x9d\x90\x61\x04\x06\x04\0\0\0\0\0"s},
        // 61 62 102 101
        {"abab", "\x1f\x9d\x90\x61\xc4\x08\x0c\x08\0\0\0\0"s},
        // 74 69 63 6b 20 102 104 106; 103 105 107 6b 101, and the bits that the first group left.
        {"tick tick tick tick", "\x1f\x9d\x90\x74\xd2\x8c\x59\x03\x42\x20\x41\x83"
                                "\x03\x0b\x1e\x5c\x13\x50\x20\x41\x83"},
        // 61 to 68; 69 101.
        {"abcdefghi", "\x1f\x9d\x90\x61\xc4\x8c\x21\x53\xc6\xcc\x19\x34"
                      "\x69\x02\x8e\x21\x53\xc6\xcc\x19\x34"},
        // Nothing was written: codes 0 and 101 without a magic.
        {"", "\x00\x02\x02\0\0\0\0\0\0"s},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(filtered(compress, test.bytes), test.section) << test.bytes;
        const bool empty = test.bytes.empty();
        EXPECT_EQ(unfiltered(compress, test.section + "after"),
                  (Unfiltered{test.bytes, empty ? streamIOError : streamCompressEnd,
                              empty ? "" : "after"}));
    }
}

TEST(Compress, IsTheDefinedAlgorithmOnAllKindsOfData) {
    std::string zeroPairs;
    for (unsigned i = 0; i < 40; ++i)
        zeroPairs += recordData(2000, i) + std::string(i, '\0');
    const std::string cases[] = {
        textData(200'000),         recordData(150'000),
        randomData(250'000), // clears its table twice
        randomData(150'000, 1, 3), std::string(150'000, 'x'), std::string(150'000, '\0'), zeroPairs,
        mixedData(400'000),
    };
    for (const std::string& bytes : cases) {
        SCOPED_TRACE(bytes.substr(0, 10));
        const std::string section = CompressTwinWriter::section(bytes);
        // Where blocks end changes nothing.
        ASSERT_TRUE(filtered(compress, bytes, {1, 5000, 3}) == section);
        const Unfiltered all{bytes, streamCompressEnd, "after"};
        ASSERT_TRUE(unfiltered(compress, section + "after") == all);
        ASSERT_TRUE(unfiltered(compress, section + "after", 7) == all);
    }
}

// The string of two zero bytes, key 0, is forgotten where the search for another string meets it at
// any probe but the first. The data brings that about: it adds strings one by one, of which the
// first byte is always the last one of the string before.
TEST(Compress, ForgetsTheStringOfTwoZeroBytesWhereTheDefinedTableDoes) {
    std::string bytes = "\x01";
    for (int code = 258; code < 512; code += 2) // pairs: codes 258, 259; ...; 510, 511
        bytes += {static_cast<char>(10 + (code - 258) / 2), '\x01'};
    bytes += "\x89\x01";         // code 512 is 01 89
    bytes += "\x89\x02"s;        // 01 89 02, in slot 02 << 8 ^ 512 = 0
    bytes += "\0\0"s;            // 00 00 finds that slot taken: slot 69000
    bytes += "\xc4\x86\x05\x01"; // c4 86 in slot 0x86c4 = 34500
    bytes += "\x6b\x87";         // 01 6b 87 (01 6b is code 452): slot 34500 is taken: slot 69000
    bytes += "\0\0\0\0\0"s;      // two zero bytes once more
    const std::string section = CompressTwinWriter::section(bytes);
    EXPECT_EQ(CompressTwinWriter::forgotten, 1);
    EXPECT_EQ(filtered(compress, bytes), section);
    EXPECT_EQ(unfiltered(compress, section), (Unfiltered{bytes, streamCompressEnd, ""}));
    // The table is the usual one again after a clear.
    bytes += randomData(120'000) + bytes;
    EXPECT_TRUE(filtered(compress, bytes) == CompressTwinWriter::section(bytes));
}

// As 16 codes of nine bits, with nothing behind them; a string goes to the caller in pieces.
TEST(Compress, StaysInBoundsWhereTheStatusOfABadMagicIsReset) {
    std::string section = "bad" + std::string(18, '\0');
    ioBufferCompress link(true);
    link.chain(new MemorySink(true, 4096, section));
    std::string bytes(100, 'x');
    EXPECT_EQ(link.read(bytes.data(), 100), 0);
    EXPECT_EQ(link.getStatus(), ioBuffer::bufferIOError);
    link.setStatus(ioBuffer::bufferOK);
    EXPECT_EQ(link.read(bytes.data(), 9), 9);
    EXPECT_EQ(link.read(bytes.data() + 9, 91), 7);
    EXPECT_EQ(bytes.substr(0, 16), std::string(16, '\0'));
    EXPECT_EQ(link.read(bytes.data(), 100), 0);
    EXPECT_EQ(link.getStatus(), ioBuffer::bufferIOError);
}

// No writer makes these. They have a meaning nevertheless, or end in a status.
TEST(Compress, GivesForeignCodesTheirMeaningOrAStatus) {
    const struct {
        std::vector<int> codes;
        std::string bytes;
        ioStreamStatus status;
    } cases[] = {
        {{257}, "", streamCompressEnd},
        {{256, 257}, std::string("\0", 1), streamCompressEnd},
        {{0x161, 0x62, 257}, "ab", streamCompressEnd}, // the low byte of a first code
        {{0x61, 300, 0x62, 257}, "aaab", streamCompressEnd},
        {{0x61, 256}, "a", streamIOError},
        {{0x61, 0x62}, std::string("ab\0\0\0\0\0\0", 8), streamIOError},
        // The string of 259 becomes its own prefix: it has no end.
        {{0x61, 259, 0x61, 259, 257}, "aaaa", streamIOError},
    };
    for (const auto& test : cases) {
        const std::string section = sectionOf(test.codes);
        EXPECT_EQ(decoded(section), (Unfiltered{test.bytes, test.status, ""}));
    }
}

TEST(Compress, DeliversWhatACutSectionHoldsAndEndsDamagedOnesInAStatus) {
    // Short strings, a change of width, long strings.
    const std::string inputs[] = {"abcabcabcabcabcd", randomData(270) + textData(100),
                                  std::string(3000, 'x')};
    for (const std::string& input : inputs) {
        const std::string section = filtered(compress, input);
        for (std::size_t n = 0, held = 0; n < section.size(); ++n) {
            const auto [bytes, status, after] = decoded(section.substr(0, n));
            ASSERT_TRUE(input.starts_with(bytes)) << n;
            ASSERT_TRUE(status == streamIOError || bytes == input) << n;
            ASSERT_GE(bytes.size(), std::exchange(held, bytes.size())) << n;
            std::string flipped = section;
            flipped[n] = static_cast<char>(flipped[n] ^ 1 << (n % 8));
            decoded(flipped);
        }
    }
    for (unsigned seed = 0; seed < 100; ++seed)
        decoded("\x1f\x9d\x90" + randomData(20 * (1 + seed % 50), seed), 100);
}
