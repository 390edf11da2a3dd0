// SPDX-License-Identifier: MIT

/// @file
/// What programs say, in English or as a catalog has it.

#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "Base/Strings/zeStringIString.h"

namespace app {

/// The text that the catalogs have for `key` (zeStringTableManager.h), or else `english`, in UTF-8.
/// "{1}" to "{9}" stand for the arguments, in any order and as often as the text likes. A text
/// from a catalog is never a format: whoever wrote it chooses what is shown, and nothing else.
std::string message(const char* key, std::string_view english,
                    std::initializer_list<std::string_view> arguments = {});

/// A text of several lines in one: a ": " for the end of each and the blanks behind it.
std::string oneLine(std::string text);

/// Reads a catalog. Throws a Failure.
void loadMessages(const std::string& file);

/// @{
/// Text in UTF-8, as the library takes and gives it.
zeString::IString wide(const std::string& text);
std::string narrow(const zeString::IString& text);
/// @}

} // namespace app
