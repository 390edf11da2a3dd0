// SPDX-License-Identifier: MIT

#include <langinfo.h>

#include <bit>
#include <optional>
#include <string_view>

#include "Base/Strings/zeStringUTF8Impl.h"

namespace zeString::detail {
namespace {

constexpr bool isContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

constexpr char lastContinuation = '\xBF'; // as signed bytes, the continuations are the least

constexpr bool isSurrogate(unsigned int c) {
    return (c & 0xFFFFF800) == 0xD800;
}

/// Decodes the sequence of two to four bytes at `src`, whose first byte is not ASCII, and returns
/// its length; 0 if it is not regular, or longer than `n`.
inline std::size_t decodeSequence(const unsigned char* src, std::size_t n, unsigned int& c) {
    const unsigned int lead = src[0];
    if (lead < 0xE0) {
        if (lead < 0xC2 || n < 2 || !isContinuation(src[1]))
            return 0;
        c = (lead & 0x1F) << 6 | (src[1] & 0x3Fu);
        return 2;
    }
    if (lead < 0xF0) {
        if (n < 3 || !isContinuation(src[1]) || !isContinuation(src[2]))
            return 0;
        c = (lead & 0x0F) << 12 | (src[1] & 0x3Fu) << 6 | (src[2] & 0x3Fu);
        return c < 0x800 || isSurrogate(c) ? 0 : 3;
    }
    if (lead > 0xF4 || n < 4 || !isContinuation(src[1]) || !isContinuation(src[2]) ||
        !isContinuation(src[3]))
        return 0;
    c = (lead & 0x07) << 18 | (src[1] & 0x3Fu) << 12 | (src[2] & 0x3Fu) << 6 | (src[3] & 0x3Fu);
    return c < 0x10000 || c > 0x10FFFF ? 0 : 4;
}

constexpr char leadByte(unsigned int mark, unsigned int bits) {
    return static_cast<char>(mark | bits);
}

constexpr char continuation(unsigned int bits) {
    return static_cast<char>(0x80 | (bits & 0x3F));
}

/// Encodes a regular character and returns the number of its bytes; 0 if it is not regular.
template<bool store>
inline std::size_t encodeCharacter(unsigned int c, char* dest) {
    if (c < 0x80) {
        if constexpr (store)
            dest[0] = static_cast<char>(c);
        return 1;
    }
    if (c < 0x800) {
        if constexpr (store) {
            dest[0] = leadByte(0xC0, c >> 6);
            dest[1] = continuation(c);
        }
        return 2;
    }
    if (c < 0x10000) {
        if constexpr (store) {
            dest[0] = leadByte(0xE0, c >> 12);
            dest[1] = continuation(c >> 6);
            dest[2] = continuation(c);
        }
        return isSurrogate(c) ? 0 : 3;
    }
    if constexpr (store) {
        dest[0] = leadByte(0xF0, c >> 18);
        dest[1] = continuation(c >> 12);
        dest[2] = continuation(c >> 6);
        dest[3] = continuation(c);
    }
    return c < 0x110000 ? 4 : 0;
}

/// In blocks while they are ASCII, and through any other block character by character.
template<bool store>
std::optional<std::size_t> encode(const wchar_t* src, std::size_t n, char* dest) {
    std::size_t out = 0;
    for (std::size_t in = 0; in < n;) {
        std::size_t end = n;
        if (n - in >= asciiBlock) {
            end = in + asciiBlock;
            if (isAsciiBlock(src + in)) {
                if constexpr (store)
                    copyAsciiBlock(src + in, dest + out);
                in = end;
                out += asciiBlock;
                continue;
            }
        }
        for (; in < end; ++in) {
            const auto c = std::bit_cast<unsigned int>(src[in]);
            const std::size_t size = encodeCharacter<store>(c, store ? dest + out : nullptr);
            if (size == 0)
                return std::nullopt;
            out += size;
        }
    }
    return out;
}

/// Goes from one run of ASCII to the next: of a block, copies as much as is ASCII, and then takes
/// characters one by one up to the next that is.
///
/// A block is stored whole where there is room for it. What stands behind its run is overwritten by
/// the characters that follow, since there is no more room than characters.
template<bool store>
bool decode(const char* src, std::size_t n, wchar_t* dest, std::size_t count) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(src);
    std::size_t in = 0;
    std::size_t out = 0;
    while (in < n) {
        if (n - in >= asciiBlock && (!store || count - out >= asciiBlock)) {
            const std::size_t run = asciiRun(src + in);
            if constexpr (store)
                copyAsciiBlock(src + in, dest + out);
            in += run;
            out += run;
            if (run == asciiBlock)
                continue;
        }
        do {
            unsigned int c = bytes[in];
            const std::size_t taken = c < 0x80 ? 1 : decodeSequence(bytes + in, n - in, c);
            if (taken == 0)
                return false;
            if constexpr (store)
                dest[out] = static_cast<wchar_t>(c);
            in += taken;
            ++out;
        } while (in < n && !isAsciiUnit(src[in]));
    }
    return true;
}

} // namespace

bool localeExtendsAscii() {
    const std::string_view codeSet = nl_langinfo(CODESET);
    return codeSet == "UTF-8" || codeSet == "ANSI_X3.4-1968" || codeSet.starts_with("ISO-8859-") ||
           codeSet.starts_with("EUC-") || codeSet.starts_with("KOI8-");
}

std::size_t countUTF8(const char* src, std::size_t n) {
    const __m128i zero = _mm_setzero_si128();
    __m128i counts = zero;
    std::size_t i = 0;
    for (; n - i >= asciiBlock; i += asciiBlock) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
        const __m128i first = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(lastContinuation)); // 0 or -1
        counts = _mm_add_epi64(counts, _mm_sad_epu8(_mm_sub_epi8(zero, first), zero));
    }
    auto count = static_cast<std::size_t>(
        _mm_cvtsi128_si64(_mm_add_epi64(counts, _mm_unpackhi_epi64(counts, counts))));
    for (; i < n; ++i)
        count += src[i] > lastContinuation;
    return count;
}

bool decodeUTF8(const char* src, std::size_t n, wchar_t* dest, std::size_t count) {
    return dest ? decode<true>(src, n, dest, count) : decode<false>(src, n, nullptr, count);
}

std::optional<std::size_t> sizeInUTF8(const wchar_t* src, std::size_t n) {
    return encode<false>(src, n, nullptr);
}

std::optional<std::size_t> encodeUTF8(const wchar_t* src, std::size_t n, char* dest) {
    return encode<true>(src, n, dest);
}

} // namespace zeString::detail
