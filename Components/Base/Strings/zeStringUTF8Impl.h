// SPDX-License-Identifier: MIT

/// @file
/// The fast paths of text conversion: ASCII in blocks of 16, and regular UTF-8.
///
/// They accept only text for which iconv and the C library give the same characters. All other text
/// is left to iconv and the C library.

#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <optional>

namespace zeString::detail {

constexpr std::size_t asciiBlock = 16;

inline bool isAsciiBlock(const char* src) {
    return _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src))) == 0;
}

inline bool isAsciiBlock(const wchar_t* src) {
    const auto* in = reinterpret_cast<const __m128i*>(src);
    const __m128i all =
        _mm_or_si128(_mm_or_si128(_mm_loadu_si128(in), _mm_loadu_si128(in + 1)),
                     _mm_or_si128(_mm_loadu_si128(in + 2), _mm_loadu_si128(in + 3)));
    const __m128i high = _mm_and_si128(all, _mm_set1_epi32(~0x7F));
    return _mm_movemask_epi8(_mm_cmpeq_epi32(high, _mm_setzero_si128())) == 0xFFFF;
}

inline void copyAsciiBlock(const char* src, wchar_t* dest) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
    const __m128i low = _mm_unpacklo_epi8(bytes, zero);
    const __m128i high = _mm_unpackhi_epi8(bytes, zero);
    auto* out = reinterpret_cast<__m128i*>(dest);
    _mm_storeu_si128(out, _mm_unpacklo_epi16(low, zero));
    _mm_storeu_si128(out + 1, _mm_unpackhi_epi16(low, zero));
    _mm_storeu_si128(out + 2, _mm_unpacklo_epi16(high, zero));
    _mm_storeu_si128(out + 3, _mm_unpackhi_epi16(high, zero));
}

inline void copyAsciiBlock(const wchar_t* src, char* dest) {
    const auto* in = reinterpret_cast<const __m128i*>(src);
    const __m128i low = _mm_packs_epi32(_mm_loadu_si128(in), _mm_loadu_si128(in + 1));
    const __m128i high = _mm_packs_epi32(_mm_loadu_si128(in + 2), _mm_loadu_si128(in + 3));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dest), _mm_packus_epi16(low, high));
}

inline bool isAsciiUnit(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}
inline bool isAsciiUnit(wchar_t c) {
    return static_cast<unsigned int>(c) < 0x80;
}

/// Whether all `n` characters are ASCII; NUL is.
template<class Char>
bool isAsciiText(const Char* src, std::size_t n) {
    std::size_t i = 0;
    for (; n - i >= asciiBlock; i += asciiBlock)
        if (!isAsciiBlock(src + i))
            return false;
    for (; i < n; ++i)
        if (!isAsciiUnit(src[i]))
            return false;
    return true;
}

/// Whether bytes below 0x80 are ASCII in the current locale, judged by the name of its code set.
/// False for code sets that are not in the list: in SHIFT_JIS the byte of the backslash is another
/// character.
bool localeExtendsAscii();

/// Copies `n` ASCII characters to the other width.
template<class From, class To>
void copyAscii(const From* src, std::size_t n, To* dest) {
    std::size_t i = 0;
    for (; n - i >= asciiBlock; i += asciiBlock)
        copyAsciiBlock(src + i, dest + i);
    for (; i < n; ++i)
        dest[i] = static_cast<To>(src[i]);
}

/// The number of characters of `n` bytes of UTF-8, if they are regular.
std::size_t countUTF8(const char* src, std::size_t n);

/// Decodes `n` bytes of UTF-8 into room for the `count` characters that countUTF8() gave, or only
/// looks at them without a `dest`. False if they are not all regular: shortest form, no surrogate,
/// up to U+10FFFF.
bool decodeUTF8(const char* src, std::size_t n, wchar_t* dest, std::size_t count);

/// The number of bytes that the characters take. Nothing if they are not all regular: no surrogate,
/// up to U+10FFFF.
std::optional<std::size_t> sizeInUTF8(const wchar_t* src, std::size_t n);

/// Encodes `n` characters into room for four bytes each, or for sizeInUTF8(), and returns the
/// number of bytes. Nothing if they are not all regular.
std::optional<std::size_t> encodeUTF8(const wchar_t* src, std::size_t n, char* dest);

} // namespace zeString::detail
