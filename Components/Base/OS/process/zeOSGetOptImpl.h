// SPDX-License-Identifier: MIT

/// @file
/// The state of a parser, and the parsing. The readers of single arguments are in a source of their
/// own, zeOSGetOptReadersImpl.cpp.

#pragma once

#include <deque>
#include <string_view>
#include <vector>

#include "Base/OS/process/zeOSOptionImpl.h"
#include "Base/OS/process/zeOSOptionTrieImpl.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilError.h"

namespace zeOS {

class GetOpt;

/// A comparison that makes no IString of the literal.
inline bool isText(const zeString::IString& text, std::wstring_view literal) {
    return text.asWChar() == literal;
}

class GetOptImpl : public ze::ImplBase {
public:
    explicit GetOptImpl(GetOpt& parser) : owner(parser) {}

    impl::option* addOption(const zeString::CString& names, const char* types);
    const impl::result* getOpt();

    /// The option of that index, or null.
    impl::option* optionAt(int index) const;

    GetOpt& owner; ///< For its checks of files.
    bool hasError = false;
    bool finished = false; ///< "--" was met.
    bool needLeadingDash = true;
    ze::Reference<impl::parse> root{new impl::parse};
    std::vector<ze::Reference<impl::option>> options;
    zeString::IString error;
    zeString::CString currentName;      ///< Of the option in hand, for messages.
    std::deque<zeString::IString> args; ///< Not read yet.
    impl::result current;

private:
    /// The option that `argument` stands for; null at "--" and after an error.
    const impl::option* readName(const zeString::IString& argument);
    void getArguments(const impl::option& option);

    void readArgument(impl::optionTypes type);
    void readBool(const zeString::IString& argument);
    void readNumber(const zeString::IString& argument, bool isFloat);
    void readFile(const zeString::IString& argument, impl::optionTypes type);
    void readSequence();

    void store(const zeString::IString& argument) { current.arguments.push_back(argument); }
    /// Sets the error by a format of the C library.
    void fail(const wchar_t* format, ...);
    /// The name of the option in hand as `%S` takes it, valid until the next call.
    const wchar_t* shownName();

    zeString::IString shownName_;
};

} // namespace zeOS
