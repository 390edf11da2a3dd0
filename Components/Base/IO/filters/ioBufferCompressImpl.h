// SPDX-License-Identifier: MIT

/// @file
/// What both directions of the compression filter know of its format.

#pragma once

#include <cstdint>
#include <cstring>

#include "Base/IO/ioBufferCompress.h"

namespace ioCompressFormat {

/// The third byte says that codes may be cleared, and have 16 bits at most.
inline constexpr char magic[3] = {'\x1f', '\x9d', '\x90'};

inline constexpr int minBits = 9;
inline constexpr int maxBits = 16;
inline constexpr int clearCode = 256;
inline constexpr int endCode = 257;
inline constexpr int firstFreeCode = 258;
inline constexpr int maxMaxCode = 1 << maxBits; ///< No code has this value or a greater one.

/// The largest code of a width; at the greatest width the limit, which no code reaches.
constexpr int largestCode(int bits) {
    return bits == maxBits ? maxMaxCode : (1 << bits) - 1;
}

} // namespace ioCompressFormat

/// A string is that of its prefix and one byte more, its suffix. So that it need not be followed
/// byte by byte, it also holds its last piece: the bytes from the last multiple of 8 on, the first
/// of them lowest.
struct ioBufferCompress::String {
    static constexpr unsigned pieceSize = 8;

    std::uint64_t piece;
    std::uint16_t pieces; ///< The code of the string before that piece.
    std::uint16_t length;
    std::uint16_t prefix;
    std::uint8_t first;
    std::uint8_t suffix;

    static String ofByte(std::uint8_t byte) { return {byte, 0, 1, 0, byte, byte}; }

    /// This string, whose code is `code`, and `byte`.
    String extended(unsigned code, std::uint8_t byte) const {
        const unsigned used = length % pieceSize;
        const auto prefixCode = static_cast<std::uint16_t>(code);
        return {used == 0 ? byte : piece | std::uint64_t{byte} << (8 * used),
                used == 0 ? prefixCode : pieces,
                static_cast<std::uint16_t>(length + 1),
                prefixCode,
                first,
                byte};
    }

    /// Writes the string and, behind it, up to 7 bytes more.
    void write(char* out, const String* strings) const {
        unsigned at = (length - 1u) / pieceSize * pieceSize;
        std::memcpy(out + at, &piece, pieceSize);
        for (unsigned code = pieces; at > 0; code = strings[code].pieces) {
            at -= pieceSize;
            std::memcpy(out + at, &strings[code].piece, pieceSize);
        }
    }
};
