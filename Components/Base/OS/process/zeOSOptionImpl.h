// SPDX-License-Identifier: MIT

/// @file
/// The declaration language of options: what one option takes, by the words of its type string.

#pragma once

#include <vector>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zeOS::impl {

/// What an argument may be.
enum optionTypes : int {
    Bool,
    Int,
    Float,
    String,
    InputFile,
    InputFileOrDash,
    OutputFile,
    OutputFileOrDash,
    InOutFile,
    Directory,
    Sequence,
    Optional, ///< No argument: where optional ones begin.
};

/// The word for a type in usage texts.
const wchar_t* optionTypeName(optionTypes type);

/// An option as it was declared.
class option : public ze::ReferenceCount {
public:
    option(const zeString::CString& longName, const zeString::IString& typeString);

    int index = -1; ///< In the order of declaration; -1 until it is added.
    zeString::CString name;
    zeString::IString specification; ///< The type string.
    zeString::IString usage;
    std::vector<optionTypes> types;
    bool deprecated = false;

private:
    void compileOptions();
};

/// An option that was found, with its arguments.
struct result {
    const impl::option* option = nullptr;
    std::vector<zeString::IString> arguments;
};

/// The names string `o|output`, taken apart at its first "|".
struct optionNames {
    explicit optionNames(const zeString::CString& names);

    zeString::CString longName;
    zeString::CString shortName; ///< Empty if there is none.
};

} // namespace zeOS::impl
