// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringConversion.h"

#include <iconv.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <optional>

#include "Base/Strings/zeStringString.h"
#include "Base/Strings/zeStringUTF8Impl.h"

namespace zeString {
namespace {

constexpr unsigned int toTerminator = String::npos;
constexpr std::size_t failed = static_cast<std::size_t>(-1);
constexpr const char* wideIconvName = "UCS-4LE"; // a wchar_t in memory
constexpr const char* utf8IconvName = "UTF-8";

void report(bool* ok, bool value) {
    if (ok)
        *ok = value;
}

/// Decodes bad text with the locale, byte by byte where nothing else helps, and returns the number
/// of characters. At most `count` positions are filled, and at most `destCap - 1`; the rest through
/// index `count` is zeroed. Without `dest` it only counts.
unsigned int fillWithDefaultWChar(const char* src, wchar_t* dest, int destCap, int count) {
    if (dest && count >= destCap)
        count = std::max(destCap, 0) - 1;
    static const wchar_t replacement = getDefaultWChar();
    unsigned int converted = 0;
    int i = 0;
    for (; i < count; ++i) {
        wchar_t c = 0;
        std::mbstate_t fresh{};
        const std::size_t used = std::mbrtowc(&c, src, MB_CUR_MAX, &fresh);
        if (used == 0)
            break;
        const bool bad = used > MB_LEN_MAX; // -1 or -2
        if (dest)
            dest[i] = bad ? replacement : c;
        src += bad ? 1 : used;
        ++converted;
    }
    if (dest)
        for (; i <= count; ++i)
            dest[i] = 0;
    return converted;
}

/// The single byte that the locale has for a character, or the replacement.
char byteOrDefault(wchar_t c) {
    static const char replacement = getDefaultMBChar();
    char bytes[MB_LEN_MAX];
    std::mbstate_t fresh{};
    return std::wcrtomb(bytes, c, &fresh) == 1 ? bytes[0] : replacement;
}

/// Converts all of the source in one call of iconv, and returns the number of bytes written;
/// nothing if any of it is invalid or does not fit. Without memory for a converter, 0 are written.
std::optional<std::size_t> iconvWhole(const char* to, const char* from, const void* src,
                                      std::size_t srcBytes, void* dest, std::size_t destBytes) {
    const iconv_t converter = iconv_open(to, from);
    if (converter == iconv_t(-1))
        return 0;
    // iconv does not write through its source, whatever its signature says.
    char* in = const_cast<char*>(static_cast<const char*>(src));
    char* out = static_cast<char*>(dest);
    std::size_t room = destBytes;
    const std::size_t result = iconv(converter, &in, &srcBytes, &out, &room);
    iconv_close(converter);
    if (result == failed)
        return std::nullopt;
    return destBytes - room;
}

/// The same without a destination: into a block of `scratchBytes` that is thrown away.
std::optional<std::size_t> iconvCount(const char* to, const char* from, const void* src,
                                      std::size_t srcBytes, std::size_t scratchBytes) {
    const auto scratch = std::make_unique_for_overwrite<char[]>(scratchBytes);
    return iconvWhole(to, from, src, srcBytes, scratch.get(), scratchBytes);
}

/// Whether ASCII of this length can be copied: it leaves room for the terminator, and its length is
/// a number of characters that the converters can return.
bool fitsTerminated(std::size_t length, const void* dest, unsigned int destCap) {
    return length <= INT_MAX && (!dest || length < destCap);
}

template<class From, class To>
unsigned int copyTerminated(const From* src, std::size_t length, To* dest) {
    if (dest) {
        detail::copyAscii(src, length, dest);
        dest[length] = 0;
    }
    return static_cast<unsigned int>(length);
}

} // namespace

char getDefaultMBChar() {
    return '?';
}

wchar_t getDefaultWChar() {
    return L'?';
}

unsigned int getMultiByteStringSize(wchar_t* dest, const char* src, unsigned int n) {
    return static_cast<unsigned int>(std::mbstowcs(dest, src, n));
}

unsigned int MBStoWCS(const char* src, unsigned int srcLen, wchar_t* dest, unsigned int destCap,
                      bool* ok) {
    report(ok, true);
    if (!src)
        return 0;
    const std::size_t length = std::strlen(src);
    if (srcLen != toTerminator && length > srcLen)
        return 0;
    if (fitsTerminated(length, dest, destCap)) {
        if (detail::isAsciiText(src, length) && detail::localeExtendsAscii())
            return copyTerminated(src, length, dest);
        // There is room for a character for each byte, so that counting first is not needed.
        if (dest)
            if (const std::size_t n = std::mbstowcs(dest, src, destCap); n < destCap)
                return static_cast<unsigned int>(n);
    }

    auto needed = static_cast<unsigned int>(std::mbstowcs(nullptr, src, 0));
    if (needed == static_cast<unsigned int>(failed)) {
        needed = fillWithDefaultWChar(src, nullptr, 0, static_cast<int>(srcLen));
        report(ok, false);
    }
    if (static_cast<int>(needed) < 0) {
        report(ok, false);
        return 0;
    }
    if (!dest)
        return needed;
    if (needed >= destCap)
        return 0;
    if (const std::size_t n = std::mbstowcs(dest, src, destCap); n != failed)
        return static_cast<unsigned int>(n);
    fillWithDefaultWChar(src, dest, static_cast<int>(destCap), static_cast<int>(needed));
    report(ok, false);
    return needed;
}

unsigned int WCStoMBS(const wchar_t* src, unsigned int srcLen, char* dest, unsigned int destCap,
                      bool* ok) {
    report(ok, true);
    if (!src)
        return 0;
    const std::size_t length = std::wcslen(src);
    if (srcLen != toTerminator && length > srcLen)
        return 0;
    if (fitsTerminated(length, dest, destCap) && detail::isAsciiText(src, length) &&
        detail::localeExtendsAscii())
        return copyTerminated(src, length, dest);

    auto needed = static_cast<unsigned int>(std::wcstombs(nullptr, src, 0));
    if (needed == static_cast<unsigned int>(failed)) {
        needed = static_cast<unsigned int>(length);
        report(ok, false);
    }
    if (static_cast<int>(needed) < 0) {
        report(ok, false);
        return 0;
    }
    if (!dest)
        return needed;
    if (needed >= destCap)
        return 0;
    if (const std::size_t n = std::wcstombs(dest, src, destCap); n != failed) {
        // It ended before the bad character, by what fitted, and not at the terminator.
        if (n < destCap)
            dest[n] = 0;
        return static_cast<unsigned int>(n);
    }
    // What needs more than one byte becomes the replacement here, also where the locale has it.
    for (unsigned int i = 0; i < needed; ++i)
        dest[i] = byteOrDefault(src[i]);
    dest[needed] = 0;
    report(ok, false);
    return needed;
}

unsigned int detectUTF8BOM(const char* src, int len) {
    if (!src || (len != -1 && len <= 2))
        return 0;
    return std::strncmp(src, "\xEF\xBB\xBF", 3) == 0 ? 3 : 0;
}

unsigned int UTF8toWCS(const char* src, unsigned int srcLen, wchar_t* dest, unsigned int destCap,
                       bool keepBOM, bool* ok) {
    report(ok, false);
    if (!src)
        return 0;
    if (srcLen == 0 || (srcLen == toTerminator && !*src)) {
        report(ok, true);
        return 0;
    }
    if (!keepBOM) {
        const unsigned int skipped = detectUTF8BOM(src, static_cast<int>(srcLen));
        src += skipped;
        if (srcLen != toTerminator)
            srcLen -= skipped;
    }
    const std::size_t bytes = srcLen == toTerminator ? std::strlen(src) + 1 : srcLen;
    const std::size_t count = detail::countUTF8(src, bytes);
    if ((!dest || count <= destCap) && detail::decodeUTF8(src, bytes, dest, count)) {
        report(ok, true);
        return static_cast<unsigned int>(count);
    }
    const auto written =
        dest ? iconvWhole(wideIconvName, utf8IconvName, src, bytes, dest, destCap * sizeof(wchar_t))
             : iconvCount(wideIconvName, utf8IconvName, src, bytes, bytes * sizeof(wchar_t));
    if (written) {
        report(ok, *written != 0);
        return static_cast<unsigned int>(*written / sizeof(wchar_t));
    }
    // The repair decodes with the locale, not with UTF-8: what survives depends on the locale.
    const unsigned int positions = destCap == 0 ? srcLen : destCap - 1;
    return fillWithDefaultWChar(src, dest, static_cast<int>(destCap), static_cast<int>(positions));
}

unsigned int WCStoUTF8(const wchar_t* src, unsigned int srcLen, char* dest, unsigned int destCap,
                       bool* ok) {
    report(ok, false);
    if (!src)
        return 0;
    if (srcLen == 0 || (srcLen == toTerminator && !*src)) {
        report(ok, true);
        return 0;
    }
    const std::size_t length = srcLen == toTerminator ? std::wcslen(src) + 1 : srcLen;
    const auto size = detail::sizeInUTF8(src, length);
    if (size && (!dest || *size <= destCap)) {
        if (dest)
            detail::encodeUTF8(src, length, dest);
        report(ok, true);
        return static_cast<unsigned int>(*size);
    }
    const std::size_t bytes = length * sizeof(wchar_t);
    const auto written = dest ? iconvWhole(utf8IconvName, wideIconvName, src, bytes, dest, destCap)
                              : iconvCount(utf8IconvName, wideIconvName, src, bytes, bytes / 2 * 3);
    if (!written) // no repair in this direction, and no partial result
        return 0;
    report(ok, *written != 0);
    return static_cast<unsigned int>(*written);
}

} // namespace zeString
