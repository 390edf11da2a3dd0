// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringUTF8Impl.h"

namespace zeString::detail {
namespace {

constexpr std::size_t irregular = 0;

constexpr bool isContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

constexpr bool isSurrogate(unsigned int c) {
    return (c & 0xFFFFF800) == 0xD800;
}

/// Decodes the sequence of two to four bytes at `src`, whose first byte is not ASCII, and returns
/// its length; `irregular` if it is not one, or is longer than `n`.
std::size_t decodeSequence(const unsigned char* src, std::size_t n, wchar_t& out) {
    const unsigned int lead = src[0];
    if (lead < 0xE0) {
        if (lead < 0xC2 || n < 2 || !isContinuation(src[1]))
            return irregular;
        out = static_cast<wchar_t>((lead & 0x1F) << 6 | (src[1] & 0x3Fu));
        return 2;
    }
    if (lead < 0xF0) {
        if (n < 3 || !isContinuation(src[1]) || !isContinuation(src[2]))
            return irregular;
        const unsigned int c = (lead & 0x0F) << 12 | (src[1] & 0x3Fu) << 6 | (src[2] & 0x3Fu);
        if (c < 0x800 || isSurrogate(c))
            return irregular;
        out = static_cast<wchar_t>(c);
        return 3;
    }
    if (lead > 0xF4 || n < 4 || !isContinuation(src[1]) || !isContinuation(src[2]) ||
        !isContinuation(src[3]))
        return irregular;
    const unsigned int c =
        (lead & 0x07) << 18 | (src[1] & 0x3Fu) << 12 | (src[2] & 0x3Fu) << 6 | (src[3] & 0x3Fu);
    if (c < 0x10000 || c > 0x10FFFF)
        return irregular;
    out = static_cast<wchar_t>(c);
    return 4;
}

/// The number of bytes of a character; `irregular` for what iconv has to judge.
std::size_t encodedSize(unsigned int c) {
    if (c < 0x80)
        return 1;
    if (c < 0x800)
        return 2;
    if (c < 0x10000)
        return isSurrogate(c) ? irregular : 3;
    return c < 0x110000 ? 4 : irregular;
}

/// Writes a character in `size` bytes.
void encodeCharacter(unsigned int c, std::size_t size, char* dest) {
    constexpr unsigned int leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    if (size == 1) {
        *dest = static_cast<char>(c);
        return;
    }
    for (std::size_t i = size - 1; i > 0; --i, c >>= 6)
        dest[i] = static_cast<char>(0x80 | (c & 0x3F));
    dest[0] = static_cast<char>(leads[size] | c);
}

template<bool store>
std::optional<std::size_t> decode(const char* src, std::size_t n, wchar_t* dest, std::size_t cap) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(src);
    std::size_t in = 0;
    std::size_t out = 0;
    while (in < n) {
        std::size_t scalarEnd = n;
        if (n - in >= asciiBlock && (!store || cap - out >= asciiBlock)) {
            if (isAsciiBlock(src + in)) {
                if constexpr (store)
                    copyAsciiBlock(src + in, dest + out);
                in += asciiBlock;
                out += asciiBlock;
                continue;
            }
            scalarEnd = in + asciiBlock;
        }
        while (in < scalarEnd) {
            if (store && out == cap)
                return std::nullopt;
            wchar_t c = static_cast<wchar_t>(bytes[in]);
            std::size_t size = 1;
            if (c >= 0x80 && (size = decodeSequence(bytes + in, n - in, c)) == irregular)
                return std::nullopt;
            if constexpr (store)
                dest[out] = c;
            in += size;
            ++out;
        }
    }
    return out;
}

template<bool store>
std::optional<std::size_t> encode(const wchar_t* src, std::size_t n, char* dest, std::size_t cap) {
    std::size_t in = 0;
    std::size_t out = 0;
    while (in < n) {
        std::size_t scalarEnd = n;
        if (n - in >= asciiBlock && (!store || cap - out >= asciiBlock)) {
            if (isAsciiBlock(src + in)) {
                if constexpr (store)
                    copyAsciiBlock(src + in, dest + out);
                in += asciiBlock;
                out += asciiBlock;
                continue;
            }
            scalarEnd = in + asciiBlock;
        }
        for (; in < scalarEnd; ++in) {
            const auto c = static_cast<unsigned int>(src[in]);
            const std::size_t size = encodedSize(c);
            if (size == irregular || (store && cap - out < size))
                return std::nullopt;
            if constexpr (store)
                encodeCharacter(c, size, dest + out);
            out += size;
        }
    }
    return out;
}

} // namespace

std::optional<std::size_t> decodeUTF8(const char* src, std::size_t n, wchar_t* dest,
                                      std::size_t cap) {
    return dest ? decode<true>(src, n, dest, cap) : decode<false>(src, n, nullptr, 0);
}

std::optional<std::size_t> encodeUTF8(const wchar_t* src, std::size_t n, char* dest,
                                      std::size_t cap) {
    return dest ? encode<true>(src, n, dest, cap) : encode<false>(src, n, nullptr, 0);
}

} // namespace zeString::detail
