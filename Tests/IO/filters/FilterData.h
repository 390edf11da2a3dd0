// SPDX-License-Identifier: MIT

/// @file
/// Bytes to send through filters.

#pragma once

#include <random>
#include <string>
#include <vector>

/// Words of small letters: the frequent ones more often, and short.
inline std::string textData(std::size_t n, unsigned seed = 1) {
    std::minstd_rand random(seed);
    std::vector<std::string> words(2000);
    for (std::size_t i = 0; i < words.size(); ++i)
        for (std::size_t length = 1 + random() % (2 + i / 200); length > 0; --length)
            words[i] += static_cast<char>('a' + random() % 26);
    std::string text;
    while (text.size() < n) {
        text += words[random() % (1 + random() % words.size())];
        text += random() % 10 == 0 ? '\n' : ' ';
    }
    text.resize(n);
    return text;
}

/// Numbers as they stand in a binary file: small ones, with many zero bytes, and a few of any size.
inline std::string recordData(std::size_t n, unsigned seed = 1) {
    std::minstd_rand random(seed);
    std::string records;
    for (unsigned i = 0; records.size() < n; ++i) {
        const unsigned fields[] = {i, static_cast<unsigned>(random() % 100), 0,
                                   static_cast<unsigned>(random())};
        records.append(reinterpret_cast<const char*>(fields), sizeof fields);
    }
    records.resize(n);
    return records;
}

/// Bytes from 0 to `range` - 1, at random.
inline std::string randomData(std::size_t n, unsigned seed = 1, unsigned range = 256) {
    std::mt19937 random(seed);
    std::string bytes(n, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random() % range);
    return bytes;
}

/// Stretches of all kinds.
inline std::string mixedData(std::size_t n, unsigned seed = 1) {
    std::minstd_rand random(seed);
    std::string bytes;
    while (bytes.size() < n) {
        const std::size_t length = random() % 20000;
        const auto part = static_cast<unsigned>(random());
        switch (random() % 4) {
        case 0:
            bytes += textData(length, part);
            break;
        case 1:
            bytes += recordData(length, part);
            break;
        case 2:
            bytes += randomData(length, part);
            break;
        default:
            bytes.append(length, static_cast<char>(part));
            break;
        }
    }
    bytes.resize(n);
    return bytes;
}
