// SPDX-License-Identifier: MIT

/// @file
/// Bytes to send through filters; randomData() of TestLinks.h is the worst of them to compress.

#pragma once

#include <cstdint>

#include "IO/chain/TestLinks.h"

/// Words of small letters, which come again and again.
inline std::string textData(std::size_t n, unsigned seed = 1) {
    std::minstd_rand random(seed);
    const std::string letters = randomData(4000, seed, 26);
    std::string text;
    while (text.size() < n) {
        for (std::size_t at = random() % (1 + random() % 4000); at % 7 != 0 && at < 4000; ++at)
            text += static_cast<char>('a' + letters[at]);
        text += random() % 10 == 0 ? '\n' : ' ';
    }
    text.resize(n);
    return text;
}

/// Numbers as they lie in a binary file: small ones, with many zero bytes, and a few of any size.
inline std::string recordData(std::size_t n, unsigned seed = 1) {
    std::minstd_rand random(seed);
    std::string records;
    for (std::uint32_t i = 0; records.size() < n; ++i) {
        const std::uint32_t fields[] = {i, std::uint32_t(random() % 100), 0,
                                        std::uint32_t(random())};
        records.append(reinterpret_cast<const char*>(fields), sizeof fields);
    }
    records.resize(n);
    return records;
}

/// Sections of all kinds.
inline std::string mixedData(std::size_t n) {
    std::string bytes;
    for (unsigned seed = 1; bytes.size() < n; ++seed)
        bytes += textData(7000, seed) + recordData(5000, seed) + randomData(9000, seed) +
                 std::string(6000, static_cast<char>(seed));
    bytes.resize(n);
    return bytes;
}
