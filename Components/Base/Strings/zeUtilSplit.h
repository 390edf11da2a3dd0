// SPDX-License-Identifier: MIT

/// @file
/// Taking strings apart and putting them together.
///
/// A byte string is taken byte by byte: multi-byte characters pass through unchanged, as long as
/// they hold no byte that separates. No item may be longer than 0x7FFFFFFF characters.
///
/// Threads: any thread may call, while no thread changes the locale or the arguments.
///
/// @code
/// const zeString::CString list("a,b,,c,");
/// assert(zeUtil::split(list, ',').size() == 4); // "a", "b", "", "c"
/// assert(zeUtil::split(list, ',', true).size() == 3);
/// std::vector<zeString::CString> words;
/// assert(zeUtil::splitWithQuotes("open \"my scene.ze\"", words).code() == 0);
/// assert(words[1] == "my scene.ze");
/// const zeUtil::Error bad = zeUtil::splitWithQuotes("open scene\".ze", words);
/// assert(bad.code() == 10); // the column of the character before the quote
/// @endcode

#pragma once

#include <concepts>
#include <vector>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

/// @{
/// The items between separators: characters equal to `separator`, or those for which `test` holds.
/// A separator with no text before it gives an empty item, unless `skipEmpty`; one at the end
/// gives none, so that "a," is one item and ",a" two. With `keepSeparators` each separator becomes
/// an item of its own instead, and no item is empty. An empty text gives no items. Of a wide text
/// only what stands before its first terminator is split. A `const char*` with zeString::isSpace()
/// is split as bytes.
ZEBASE_API std::vector<zeString::CString> split(const zeString::CString& text, char separator,
                                                bool skipEmpty = false,
                                                bool keepSeparators = false);
ZEBASE_API std::vector<zeString::CString> split(const zeString::CString& text, bool (*test)(char),
                                                bool skipEmpty = false,
                                                bool keepSeparators = false);
template<std::same_as<char> Char> // so that nothing is converted to a pointer
std::vector<zeString::CString> split(const Char* text, bool (*test)(char), bool skipEmpty = false,
                                     bool keepSeparators = false) {
    return split(zeString::CString(text), test, skipEmpty, keepSeparators);
}
ZEBASE_API std::vector<zeString::IString> split(const zeString::IString& text, wchar_t separator,
                                                bool skipEmpty = false,
                                                bool keepSeparators = false);
ZEBASE_API std::vector<zeString::IString> split(const zeString::IString& text,
                                                bool (*test)(wchar_t), bool skipEmpty = false,
                                                bool keepSeparators = false);
/// @}

/// @{
/// All items in their order, with nothing between them.
ZEBASE_API zeString::CString join(const std::vector<zeString::CString>& items);
ZEBASE_API zeString::IString join(const std::vector<zeString::IString>& items);
/// @}

/// Splits a command line at its spaces (zeString::isSpace()). An item may be enclosed in double
/// quotes, as a whole, and may hold spaces then; the quotes are dropped, and "" is an empty item.
///
/// Returns success, or an error whose code is the column of what is wrong, counting from 1: of a
/// quote that is not closed, or of a character that touches a quote from outside. The message names
/// the character; it is empty where the locale cannot convert that byte. `out`, which must not hold
/// `text` itself, is emptied first, and after an error holds the items before it.
ZEBASE_API Error splitWithQuotes(const zeString::CString& text,
                                 std::vector<zeString::CString>& out);

/// The same with two differences: quotes may open and close anywhere in an item, so that
/// `ab" c "d` is one, and a backslash, quoted or not, makes a backslash or double quote after it an
/// ordinary character. Errors: a quote that is not closed, a backslash at the end, and the
/// character that a backslash cannot escape.
ZEBASE_API Error splitWithQuotesAndBackslash(const zeString::CString& text,
                                             std::vector<zeString::CString>& out);

/// The lines of the text, which each CR and each LF ends: a pair of them makes an empty line
/// between. There is always one more than there are such characters; the last may be empty.
ZEBASE_API std::vector<zeString::CString> splitMultiLines(const zeString::CString& text);
/// How many items splitMultiLines() gives.
ZEBASE_API unsigned int numMultiLines(const zeString::CString& text);

/// The items in ascending order of bytes, each once.
ZEBASE_API std::vector<zeString::CString>
removeDuplicated(const std::vector<zeString::CString>& items);

} // namespace zeUtil
