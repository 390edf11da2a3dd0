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

/// The number of bytes of a character; 0 if it is not regular.
constexpr std::size_t encodedSize(unsigned int c) {
    if (c < 0x80)
        return 1;
    if (c < 0x800)
        return 2;
    if (c < 0x10000)
        return isSurrogate(c) ? 0 : 3;
    return c < 0x110000 ? 4 : 0;
}

constexpr char leadByte(unsigned int mark, unsigned int bits) {
    return static_cast<char>(mark | bits);
}

constexpr char continuation(unsigned int bits) {
    return static_cast<char>(0x80 | (bits & 0x3F));
}

/// Writes a character in the `size` bytes that it takes.
inline void encodeSequence(unsigned int c, std::size_t size, char* dest) {
    switch (size) {
    case 1:
        dest[0] = static_cast<char>(c);
        break;
    case 2:
        dest[0] = leadByte(0xC0, c >> 6);
        dest[1] = continuation(c);
        break;
    case 3:
        dest[0] = leadByte(0xE0, c >> 12);
        dest[1] = continuation(c >> 6);
        dest[2] = continuation(c);
        break;
    default:
        dest[0] = leadByte(0xF0, c >> 18);
        dest[1] = continuation(c >> 12);
        dest[2] = continuation(c >> 6);
        dest[3] = continuation(c);
    }
}

/// One character from `n` bytes into room for `cap` characters. `store` is false for counting.
template<bool store>
Step step(const char* src, std::size_t n, wchar_t* dest, std::size_t cap) {
    if (store && cap == 0)
        return declined;
    unsigned int c = static_cast<unsigned char>(*src);
    const std::size_t taken =
        c < 0x80 ? 1 : decodeSequence(reinterpret_cast<const unsigned char*>(src), n, c);
    if constexpr (store)
        *dest = static_cast<wchar_t>(c);
    return {taken, 1};
}

/// One character into room for `cap` bytes.
template<bool store>
Step step(const wchar_t* src, std::size_t, char* dest, std::size_t cap) {
    const auto c = std::bit_cast<unsigned int>(*src);
    const std::size_t size = encodedSize(c);
    if (size == 0 || (store && cap < size))
        return declined;
    if constexpr (store)
        encodeSequence(c, size, dest);
    return {1, size};
}

/// Converts in blocks while they are ASCII, and through any other block character by character.
template<bool store, class From, class To>
std::optional<std::size_t> transcode(const From* src, std::size_t n, To* dest, std::size_t cap) {
    std::size_t in = 0;
    std::size_t out = 0;
    while (in < n) {
        std::size_t end = n;
        if (n - in >= asciiBlock && (!store || cap - out >= asciiBlock)) {
            if (isAsciiBlock(src + in)) {
                if constexpr (store)
                    copyAsciiBlock(src + in, dest + out);
                in += asciiBlock;
                out += asciiBlock;
                continue;
            }
            end = in + asciiBlock;
        }
        while (in < end) {
            const Step done =
                step<store>(src + in, n - in, store ? dest + out : nullptr, cap - out);
            if (done.taken == 0)
                return std::nullopt;
            in += done.taken;
            out += done.put;
        }
    }
    return out;
}

template<class From, class To>
std::optional<std::size_t> convert(const From* src, std::size_t n, To* dest, std::size_t cap) {
    return dest ? transcode<true>(src, n, dest, cap) : transcode<false>(src, n, dest, 0);
}

} // namespace

bool localeExtendsAscii() {
    const std::string_view codeSet = nl_langinfo(CODESET);
    return codeSet == "UTF-8" || codeSet == "ANSI_X3.4-1968" || codeSet.starts_with("ISO-8859-") ||
           codeSet.starts_with("EUC-") || codeSet.starts_with("KOI8-");
}

std::optional<std::size_t> decodeUTF8(const char* src, std::size_t n, wchar_t* dest,
                                      std::size_t cap) {
    return convert(src, n, dest, cap);
}

std::optional<std::size_t> encodeUTF8(const wchar_t* src, std::size_t n, char* dest,
                                      std::size_t cap) {
    return convert(src, n, dest, cap);
}

} // namespace zeString::detail
