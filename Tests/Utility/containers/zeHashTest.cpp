// SPDX-License-Identifier: MIT

#include "Base/Utility/zeHash.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"

// The expected values come from a separate program that interprets the steps one by one, over the
// S-boxes as the RFC prints them.

TEST(Hash, ByteAndWordFormsBeginTheLastCycleInTheMiddle) {
    const int lengths[] = {-1, 0,  1,  2,  3,  4,  5,  6,  7,  8,  9,
                           10, 11, 12, 13, 14, 15, 16, 17, 30, 31, 3840};
    // Of 0, 1, 2 ... modulo 256; the longest has every byte in every step.
    const std::uint32_t ofBytes[] = {
        0,           0,           0x8defc240u, 0x06da4d0bu, 0x2d7fd738u, 0x8040f4b4u,
        0x62a48e1cu, 0x9135951fu, 0xf19d682cu, 0xa29e79b5u, 0x94a49a2bu, 0x3f6cedaeu,
        0x4274cf3du, 0xb5c82b71u, 0x28ad4d4au, 0xfe241c4fu, 0x835d21a1u, 0x112d3174u,
        0xec64ac0du, 0x0cefc4e8u, 0x9eba0105u, 0xbdd4c318u};
    // Of 0, 0x9E3779B9, 2 * 0x9E3779B9 ...
    const std::uint32_t ofWords[] = {
        0,           0,           0x8defc240u, 0x9cad1392u, 0x97bd30bfu, 0x794deab2u,
        0xd2f7f7c6u, 0xa69fa4f6u, 0xeb3cb725u, 0xa3543601u, 0xcf10d6d5u, 0xa08e2afbu,
        0x456b0ffeu, 0x75461ba3u, 0xa4cd7e76u, 0xbfcff71au, 0x32141fe2u, 0xb8e838dau,
        0x4a8fded5u, 0xad520fb3u, 0xaf93f31eu, 0x8ec49ccau};
    std::vector<unsigned char> bytes;
    std::vector<unsigned int> words;
    std::vector<wchar_t> wide;
    for (unsigned int i = 0; i < 3840; ++i) {
        bytes.push_back(static_cast<unsigned char>(i));
        words.push_back(i * 0x9E3779B9u);
        wide.push_back(static_cast<wchar_t>(words.back()));
    }
    for (std::size_t i = 0; i < std::size(lengths); ++i) {
        const int length = lengths[i];
        SCOPED_TRACE(length);
        EXPECT_EQ(ze::hashfunction(bytes.data(), length), ofBytes[i]);
        const char* first = reinterpret_cast<const char*>(bytes.data());
        EXPECT_EQ(ze::hashfunction(first, first + std::max(length, 0)), ofBytes[i]);
        EXPECT_EQ(ze::hashfunction(words.data(), length), ofWords[i]);
        EXPECT_EQ(ze::hashfunction(wide.data(), length), ofWords[i]);
    }
}

TEST(Hash, TextFormStopsAtAnyPlaceInItsGroup) {
    const std::string text = "The quick";
    const std::uint32_t expected[] = {0,           0x29f9d4d5u, 0x16c8d6b0u, 0xe2bbf0e8u,
                                      0x62e8f1e8u, 0x0b8b3420u, 0x40221d71u, 0xe893cc99u,
                                      0xc7026fd9u, 0x9ea0a17fu};
    for (std::size_t length = 0; length <= text.size(); ++length)
        EXPECT_EQ(ze::hashfunction(text.substr(0, length).c_str()), expected[length]) << length;

    std::string everyByteInEveryPlace;
    for (int i = 0; i < 1020; ++i)
        everyByteInEveryPlace += static_cast<char>(i % 255 + 1);
    EXPECT_EQ(ze::hashfunction(everyByteInEveryPlace.c_str()), 0x783c732eu);
}

TEST(Hash, StringsHashTheirContentWithZerosInside) {
    EXPECT_EQ(hashfunction(zeString::CString("a\0b", 3)), 0xb29dd258u);
    EXPECT_EQ(hashfunction(zeString::IString(L"a\0\U0001F600", 3)), 0x2d816519u);
    EXPECT_EQ(ze::hashfunction(zeString::CString()), 0u);
}

TEST(Hasher, BeginsAfreshWithEachFlush) {
    // How many numbers stand between one getHash() and the next.
    const std::pair<std::vector<int>, std::uint32_t> cases[] = {
        {{0}, 0},
        {{1}, 0xe02e8080u},
        {{16}, 0x26d0e938u},
        {{17}, 0x1dff5b97u},
        {{16, 1}, 0x1dff5b97u},
        {{40}, 0xf52af0b9u},
        {{3, 0, 2}, 0x843cfdbfu},
    };
    for (const auto& [pieces, hash] : cases) {
        ze::Hasher hasher;
        std::uint64_t next = 0;
        for (int piece : pieces) {
            for (int i = 0; i < piece; ++i)
                hasher.add(next++ * 0x9E3779B97F4A7C15u);
            hasher.getHash();
        }
        EXPECT_EQ(hasher.getHash(), hash) << pieces.front();
    }
}
