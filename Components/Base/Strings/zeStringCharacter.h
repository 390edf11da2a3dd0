// SPDX-License-Identifier: MIT

/// @file
/// Character classes, each for a byte and for a wide character.
///
/// The tests are the C library's in the current locale, except where a function says otherwise. A
/// `char` is taken as an unsigned byte.
///
/// Threads: any thread may call, while no thread changes the locale.
///
/// @code
/// assert(zeString::isSpace(L' ') && zeString::isDigit('7'));
/// assert(zeString::isAlpha(L'\u2460') && !zeString::isPunct(L'\u2460')); // a circled one
/// assert(zeString::toUpper('a') == 'A');
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeString {

/// @{
/// Whether the code is below 128.
ZEBASE_API bool isAscii(char c);
ZEBASE_API bool isAscii(wchar_t c);
/// @}

/// Whether every byte is ASCII; true for null and for an empty text.
ZEBASE_API bool isAscii(const char* text);

/// @{
/// The C library's test of that name, in the current locale.
ZEBASE_API bool isUpper(char c);
ZEBASE_API bool isUpper(wchar_t c);
ZEBASE_API bool isLower(char c);
ZEBASE_API bool isLower(wchar_t c);
ZEBASE_API bool isXDigit(char c);
ZEBASE_API bool isXDigit(wchar_t c);
ZEBASE_API bool isSpace(char c);
ZEBASE_API bool isSpace(wchar_t c);
ZEBASE_API bool isCntrl(char c);
ZEBASE_API bool isCntrl(wchar_t c);
/// @}

/// "0" to "9" in any locale.
ZEBASE_API bool isDigit(char c);
/// The C library's `iswdigit`.
ZEBASE_API bool isDigit(wchar_t c);

/// @{
/// A carriage return or a line feed.
ZEBASE_API bool isNewLine(char c);
ZEBASE_API bool isNewLine(wchar_t c);
/// @}

/// @{
/// The horizontal tab.
ZEBASE_API bool isTab(char c);
ZEBASE_API bool isTab(wchar_t c);
/// @}

/// @{
/// Whether the character is one of a fixed set of 178 symbols (arrows, mathematical signs, box
/// drawing, circled numbers, squared units and the like) that count as letters here, although the
/// C library classes them as punctuation or not at all. No byte is one.
ZEBASE_API bool isLetterModifier(char c);
ZEBASE_API bool isLetterModifier(wchar_t c);
/// @}

/// @{
/// The C library's test, or a letter modifier.
ZEBASE_API bool isAlnum(char c);
ZEBASE_API bool isAlnum(wchar_t c);
/// @}

/// @{
/// isAlnum() and not isDigit(). This is not the C library's isalpha.
ZEBASE_API bool isAlpha(char c);
ZEBASE_API bool isAlpha(wchar_t c);
/// @}

/// @{
/// The C library's test, and not a letter modifier.
ZEBASE_API bool isPunct(char c);
ZEBASE_API bool isPunct(wchar_t c);
/// @}

/// @{
/// The C library's test, or a letter modifier.
ZEBASE_API bool isPrint(char c);
ZEBASE_API bool isPrint(wchar_t c);
ZEBASE_API bool isGraph(char c);
ZEBASE_API bool isGraph(wchar_t c);
/// @}

/// @{
/// The C library's conversion in the current locale.
ZEBASE_API char toUpper(char c);
ZEBASE_API wchar_t toUpper(wchar_t c);
ZEBASE_API char toLower(char c);
ZEBASE_API wchar_t toLower(wchar_t c);
/// @}

} // namespace zeString
