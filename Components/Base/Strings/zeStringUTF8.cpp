// SPDX-License-Identifier: MIT

#include <langinfo.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "Base/Strings/zeStringUTF8Impl.h"

namespace zeString::detail {
namespace {

constexpr char lastContinuation = '\xBF'; // as signed bytes, the continuations are the least

constexpr bool isSurrogate(unsigned int c) {
    return (c & 0xFFFFF800) == 0xD800;
}

/// ASCII is looked for by so many bytes where other characters are near.
constexpr int asciiWord = 8;

/// The number of ASCII characters at the front of eight.
inline int asciiRun(const char* src) {
    std::uint64_t bytes;
    std::memcpy(&bytes, src, sizeof bytes);
    return std::countr_zero(bytes & 0x8080808080808080) / 8;
}

inline void copyAsciiWord(const char* src, wchar_t* dest) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src));
    const __m128i words = _mm_unpacklo_epi8(bytes, zero);
    auto* out = reinterpret_cast<__m128i*>(dest);
    _mm_storeu_si128(out, _mm_unpacklo_epi16(words, zero));
    _mm_storeu_si128(out + 1, _mm_unpackhi_epi16(words, zero));
}

/// The next four bytes, the first one lowest. Behind the last of them follow zeros, which continue
/// no sequence.
inline unsigned int nextBytes(const char* src, const char* end) {
    unsigned int bytes = 0;
    if (end - src >= static_cast<int>(sizeof bytes))
        std::memcpy(&bytes, src, sizeof bytes);
    else
        for (int shift = 0; src != end; shift += 8)
            bytes |= static_cast<unsigned int>(static_cast<unsigned char>(*src++)) << shift;
    return bytes;
}

/// Six bits of a continuation byte.
constexpr unsigned int bitsOf(unsigned int bytes, int index) {
    return bytes >> 8 * index & 0x3F;
}

/// Decodes the character at the front and returns the number of its bytes; 0 if it is not regular.
inline int decodeCharacter(unsigned int bytes, unsigned int& c) {
    if ((bytes & 0xC0C0F0) == 0x8080E0) {
        c = (bytes & 0x0F) << 12 | bitsOf(bytes, 1) << 6 | bitsOf(bytes, 2);
        return c < 0x800 || isSurrogate(c) ? 0 : 3;
    }
    if ((bytes & 0x80) == 0) {
        c = bytes & 0x7F;
        return 1;
    }
    if ((bytes & 0xC0E0) == 0x80C0) {
        c = (bytes & 0x1F) << 6 | bitsOf(bytes, 1);
        return c < 0x80 ? 0 : 2;
    }
    if ((bytes & 0xC0C0C0F8) == 0x808080F0) {
        c = (bytes & 0x07) << 18 | bitsOf(bytes, 1) << 12 | bitsOf(bytes, 2) << 6 |
            bitsOf(bytes, 3);
        return c < 0x10000 || c > 0x10FFFF ? 0 : 4;
    }
    return 0;
}

constexpr char leadByte(unsigned int mark, unsigned int bits) {
    return static_cast<char>(mark | bits);
}

constexpr char continuation(unsigned int bits) {
    return static_cast<char>(0x80 | (bits & 0x3F));
}

/// Encodes a character into room for four bytes, or for those that it takes if it is regular, and
/// returns their number; 0 if it is not regular.
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

/// Goes from one run of ASCII to the next: of eight bytes, copies as many as are ASCII, and then
/// takes characters one by one up to the next that is.
///
/// A regular character begins with a byte that countUTF8() counted, so that there is room for it.
/// Eight are stored where there is room for eight: what stands behind the run is overwritten by the
/// characters that follow, since there is no more room than characters.
template<bool store>
bool decode(const char* src, const char* end, wchar_t* dest, wchar_t* destEnd) {
    while (src != end) {
        if (end - src >= asciiWord && (!store || destEnd - dest >= asciiWord)) {
            const int run = asciiRun(src);
            if constexpr (store) {
                copyAsciiWord(src, dest);
                dest += run;
            }
            src += run;
            if (run == asciiWord)
                continue;
        }
        do {
            unsigned int c = 0;
            const int taken = decodeCharacter(nextBytes(src, end), c);
            if (taken == 0)
                return false;
            src += taken;
            if constexpr (store)
                *dest++ = static_cast<wchar_t>(c);
        } while (src != end && !isAsciiUnit(*src));
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
    return dest ? decode<true>(src, src + n, dest, dest + count)
                : decode<false>(src, src + n, nullptr, nullptr);
}

std::optional<std::size_t> sizeInUTF8(const wchar_t* src, std::size_t n) {
    return encode<false>(src, n, nullptr);
}

std::optional<std::size_t> encodeUTF8(const wchar_t* src, std::size_t n, char* dest) {
    return encode<true>(src, n, dest);
}

} // namespace zeString::detail
