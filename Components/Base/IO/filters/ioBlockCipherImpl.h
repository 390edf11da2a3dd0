// SPDX-License-Identifier: MIT

/// @file
/// The block cipher below ioBufferEncrypt: RC6 with words of 32 bits, 20 rounds and a key of 32
/// bytes. Every block is by itself.

#pragma once

#include <cstdint>

namespace ioBlockCipher {

inline constexpr int rounds = 20;
inline constexpr unsigned blockBytes = 16;
inline constexpr unsigned keyBytes = 32;

/// Two words at the start, two for each round, and two at the end.
using Schedule = std::uint32_t[2 * rounds + 4];

/// The numbers from which a schedule starts.
struct Constants {
    std::uint32_t first;
    std::uint32_t step;
};

/// The ways to the same result.
enum class Kernel {
    plain, ///< For any processor.
    avx2   ///< 16 blocks at once.
};

/// The fastest kernel of this machine.
Kernel bestKernel();

/// Mixes a key into a schedule. The words of keys and blocks have their lowest byte first.
void expandKey(Schedule& schedule, const unsigned char (&key)[keyBytes], Constants constants);

/// Enciphers blocks in place.
void encipher(char* data, unsigned blocks, const Schedule& schedule, Kernel kernel = bestKernel());

/// The way back.
void decipher(char* data, unsigned blocks, const Schedule& schedule, Kernel kernel = bestKernel());

} // namespace ioBlockCipher
