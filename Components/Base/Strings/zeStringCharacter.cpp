// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringCharacter.h"

#include <algorithm>
#include <cctype>
#include <cwctype>
#include <iterator>

namespace zeString {
namespace {

struct Range {
    wchar_t first;
    wchar_t last;
};

// clang-format off
constexpr Range letterModifiers[] = {
    {0x2103, 0x2103}, {0x2116, 0x2116}, {0x2121, 0x2121}, {0x2190, 0x2193}, {0x21D2, 0x21D2},
    {0x21D4, 0x21D4}, {0x2200, 0x2200}, {0x2202, 0x2203}, {0x2207, 0x2208}, {0x220B, 0x220B},
    {0x2211, 0x2211}, {0x221A, 0x221A}, {0x221D, 0x2220}, {0x2225, 0x2225}, {0x2227, 0x222C},
    {0x222E, 0x222E}, {0x2234, 0x2235}, {0x223D, 0x223D}, {0x2252, 0x2252}, {0x2260, 0x2261},
    {0x2266, 0x2267}, {0x226A, 0x226B}, {0x2282, 0x2283}, {0x2286, 0x2287}, {0x22A5, 0x22A5},
    {0x22BF, 0x22BF}, {0x2312, 0x2312}, {0x2460, 0x2473}, {0x2500, 0x2503}, {0x250C, 0x250C},
    {0x250F, 0x2510}, {0x2513, 0x2514}, {0x2517, 0x2518}, {0x251B, 0x251D}, {0x2520, 0x2520},
    {0x2523, 0x2525}, {0x2528, 0x2528}, {0x252B, 0x252C}, {0x252F, 0x2530}, {0x2533, 0x2534},
    {0x2537, 0x2538}, {0x253B, 0x253C}, {0x253F, 0x253F}, {0x2542, 0x2542}, {0x254B, 0x254B},
    {0x25A0, 0x25A1}, {0x25B2, 0x25B3}, {0x25BC, 0x25BD}, {0x25C6, 0x25C7}, {0x25CB, 0x25CB},
    {0x25CE, 0x25CF}, {0x25EF, 0x25EF}, {0x2605, 0x2606}, {0x2640, 0x2640}, {0x2642, 0x2642},
    {0x266A, 0x266A}, {0x266D, 0x266D}, {0x266F, 0x266F}, {0x3005, 0x3005}, {0x3012, 0x3013},
    {0x309B, 0x309E}, {0x30FC, 0x30FE}, {0x3231, 0x3232}, {0x3239, 0x3239}, {0x32A4, 0x32A8},
    {0x3303, 0x3303}, {0x330D, 0x330D}, {0x3314, 0x3314}, {0x3318, 0x3318}, {0x3322, 0x3323},
    {0x3326, 0x3327}, {0x332B, 0x332B}, {0x3336, 0x3336}, {0x333B, 0x333B}, {0x3349, 0x334A},
    {0x334D, 0x334D}, {0x3351, 0x3351}, {0x3357, 0x3357}, {0x337B, 0x337E}, {0x338E, 0x338F},
    {0x339C, 0x339E}, {0x33A1, 0x33A1}, {0x33C4, 0x33C4}, {0x33CD, 0x33CD}, {0xFF04, 0xFF04},
    {0xFF0B, 0xFF0B}, {0xFF1C, 0xFF1E}, {0xFF3E, 0xFF3E}, {0xFF40, 0xFF40}, {0xFF5C, 0xFF5C},
    {0xFF5E, 0xFF5E}, {0xFFE0, 0xFFE5}};
// clang-format on

int byte(char c) {
    return static_cast<unsigned char>(c);
}

std::wint_t wide(wchar_t c) {
    return static_cast<std::wint_t>(c);
}

} // namespace

bool isAscii(char c) {
    return byte(c) < 0x80;
}
bool isAscii(wchar_t c) {
    return wide(c) < 0x80;
}

bool isAscii(const char* text) {
    if (!text)
        return true;
    while (*text && isAscii(*text))
        ++text;
    return !*text;
}

bool isUpper(char c) {
    return std::isupper(byte(c)) != 0;
}
bool isUpper(wchar_t c) {
    return std::iswupper(wide(c)) != 0;
}

bool isLower(char c) {
    return std::islower(byte(c)) != 0;
}
bool isLower(wchar_t c) {
    return std::iswlower(wide(c)) != 0;
}

bool isXDigit(char c) {
    return std::isxdigit(byte(c)) != 0;
}
bool isXDigit(wchar_t c) {
    return std::iswxdigit(wide(c)) != 0;
}

bool isSpace(char c) {
    return std::isspace(byte(c)) != 0;
}
bool isSpace(wchar_t c) {
    return std::iswspace(wide(c)) != 0;
}

bool isCntrl(char c) {
    return std::iscntrl(byte(c)) != 0;
}
bool isCntrl(wchar_t c) {
    return std::iswcntrl(wide(c)) != 0;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isDigit(wchar_t c) {
    return std::iswdigit(wide(c)) != 0;
}

bool isNewLine(char c) {
    return (c == 13 || c == 10) && isCntrl(c);
}
bool isNewLine(wchar_t c) {
    return (c == 13 || c == 10) && isCntrl(c);
}

bool isTab(char c) {
    return c == 9 && isCntrl(c);
}
bool isTab(wchar_t c) {
    return c == 9 && isCntrl(c);
}

bool isLetterModifier(char) {
    return false;
}

bool isLetterModifier(wchar_t c) {
    const Range* range =
        std::lower_bound(std::begin(letterModifiers), std::end(letterModifiers), c,
                         [](const Range& r, wchar_t value) { return r.last < value; });
    return range != std::end(letterModifiers) && range->first <= c;
}

bool isAlnum(char c) {
    return std::isalnum(byte(c)) != 0;
}
bool isAlnum(wchar_t c) {
    return std::iswalnum(wide(c)) != 0 || isLetterModifier(c);
}

bool isAlpha(char c) {
    return isAlnum(c) && !isDigit(c);
}
bool isAlpha(wchar_t c) {
    return isAlnum(c) && !isDigit(c);
}

bool isPunct(char c) {
    return std::ispunct(byte(c)) != 0;
}
bool isPunct(wchar_t c) {
    return std::iswpunct(wide(c)) != 0 && !isLetterModifier(c);
}

bool isPrint(char c) {
    return std::isprint(byte(c)) != 0;
}
bool isPrint(wchar_t c) {
    return std::iswprint(wide(c)) != 0 || isLetterModifier(c);
}

bool isGraph(char c) {
    return std::isgraph(byte(c)) != 0;
}
bool isGraph(wchar_t c) {
    return std::iswgraph(wide(c)) != 0 || isLetterModifier(c);
}

char toUpper(char c) {
    return static_cast<char>(std::toupper(byte(c)));
}
wchar_t toUpper(wchar_t c) {
    return static_cast<wchar_t>(std::towupper(wide(c)));
}

char toLower(char c) {
    return static_cast<char>(std::tolower(byte(c)));
}
wchar_t toLower(wchar_t c) {
    return static_cast<wchar_t>(std::towlower(wide(c)));
}

} // namespace zeString
