// SPDX-License-Identifier: MIT

#include <langinfo.h>

#include <bit>
#include <string_view>

#include "Base/Strings/zeStringUTF8Impl.h"

namespace zeString::detail {
namespace {

/// What one character took from the source and put into the destination, in units of each. Nothing
/// was taken if the character is for iconv to judge, or does not fit.
struct Step {
    std::size_t taken;
    std::size_t put;
};

constexpr Step declined = {0, 0};

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

/// One character from `n` bytes. There is room for every character that countUTF8() counted.
template<bool store>
Step step(const char* src, std::size_t n, wchar_t* dest, std::size_t) {
    unsigned int c = static_cast<unsigned char>(*src);
    const std::size_t taken =
        c < 0x80 ? 1 : decodeSequence(reinterpret_cast<const unsigned char*>(src), n, c);
    if (store && taken != 0)
        *dest = static_cast<wchar_t>(c);
    return {taken, 1};
}

/// One character into room for `cap` bytes. `store` is false for counting.
template<bool store>
Step step(const wchar_t* src, std::size_t, char* dest, std::size_t cap) {
    const auto c = std::bit_cast<unsigned int>(*src);
    const std::size_t size = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    if (isSurrogate(c) || c > 0x10FFFF || (store && cap < size))
        return declined;
    if constexpr (store) {
        if (size == 1) {
            dest[0] = static_cast<char>(c);
        } else if (size == 2) {
            dest[0] = leadByte(0xC0, c >> 6);
            dest[1] = continuation(c);
        } else if (size == 3) {
            dest[0] = leadByte(0xE0, c >> 12);
            dest[1] = continuation(c >> 6);
            dest[2] = continuation(c);
        } else {
            dest[0] = leadByte(0xF0, c >> 18);
            dest[1] = continuation(c >> 12);
            dest[2] = continuation(c >> 6);
            dest[3] = continuation(c);
        }
    }
    return {1, size};
}

/// Goes from one run of ASCII to the next: of a block, copies as much as is ASCII, and then takes
/// characters one by one up to the next that is.
///
/// A block is stored whole, so behind its run stands what the characters that follow overwrite.
/// They reach that far: in decoding because there is no more room than characters, in encoding
/// because each of a block's characters gives at least one byte.
template<bool store, class From, class To>
std::optional<std::size_t> transcode(const From* src, std::size_t n, To* dest, std::size_t cap) {
    std::size_t in = 0;
    std::size_t out = 0;
    while (in < n) {
        if (n - in >= asciiBlock && (!store || cap - out >= asciiBlock)) {
            const std::size_t run = asciiRun(src + in);
            if constexpr (store)
                copyAsciiBlock(src + in, dest + out);
            in += run;
            out += run;
            if (run == asciiBlock)
                continue;
        }
        do {
            const Step done =
                step<store>(src + in, n - in, store ? dest + out : nullptr, cap - out);
            if (done.taken == 0)
                return std::nullopt;
            in += done.taken;
            out += done.put;
        } while (in < n && !isAsciiUnit(src[in]));
    }
    return out;
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

bool decodeUTF8(const char* src, std::size_t n, wchar_t* dest) {
    return dest ? transcode<true>(src, n, dest, countUTF8(src, n)).has_value()
                : transcode<false>(src, n, dest, 0).has_value();
}

std::optional<std::size_t> encodeUTF8(const wchar_t* src, std::size_t n, char* dest,
                                      std::size_t cap) {
    return dest ? transcode<true>(src, n, dest, cap) : transcode<false>(src, n, dest, 0);
}

} // namespace zeString::detail
