// SPDX-License-Identifier: MIT

#include "Base/OS/process/zeOSGetOptImpl.h"

#include <cstdarg>
#include <cstddef>
#include <cwchar>

#include "Base/OS/zeOSGetOpt.h"

namespace zeOS {

using zeString::CString;
using zeString::IString;

impl::option* GetOptImpl::addOption(const CString& names, const char* types) {
    const impl::optionNames parts(names);
    ze::Reference<impl::option> added(new impl::option(parts.longName, IString(types)));
    if (!root->add(parts.longName, added.get()))
        return nullptr;
    added->index = static_cast<int>(options.size());
    options.push_back(added);
    if (parts.shortName.length() > 0)
        root->add(parts.shortName, added.get());
    return added.get();
}

impl::option* GetOptImpl::optionAt(int index) const {
    const auto place = static_cast<std::size_t>(index); // what is negative is too large
    return place < options.size() ? options[place].get() : nullptr;
}

const impl::result* GetOptImpl::getOpt() {
    current.option = nullptr;
    current.arguments.clear();
    currentName.erase();
    if (hasError || finished)
        return nullptr;
    error.erase();
    if (args.empty())
        return nullptr;
    const impl::option* option = readName(args.front());
    args.pop_front();
    if (option == nullptr)
        return nullptr;
    currentName = option->name;
    current.option = option;
    getArguments(*option);
    return hasError ? nullptr : &current;
}

const impl::option* GetOptImpl::readName(const IString& argument) {
    const wchar_t* name = argument.asWChar();
    std::size_t dashes = 0;
    if (name[0] == L'-') {
        dashes = 1;
    } else if (argument.length() > 0 && needLeadingDash) {
        if (isText(argument, L"[") || isText(argument, L"]"))
            fail(L"%lc encountered outside of a sequence.", static_cast<wint_t>(name[0]));
        else
            fail(L"Malformed option: no leading dash: %S", name);
        return nullptr;
    }
    if (name[dashes] == L'\0') {
        fail(L"Malformed option: no option specified: %S", name);
        return nullptr;
    }
    if (name[dashes] == L'-') {
        ++dashes;
        finished = name[dashes] == L'\0';
        if (finished)
            return nullptr;
    }
    bool isConverted = false;
    const char* const text = argument.asUTF8(&isConverted);
    const impl::option* option = isConverted ? root->find(text + dashes) : nullptr;
    if (option == nullptr)
        fail(L"Option does not exist or is ambiguous: %S", name);
    return option;
}

/// The types from "?" on are optional: there an argument that begins with "-" is the next option,
/// negative numbers included, and a "." ends the arguments without being taken.
void GetOptImpl::getArguments(const impl::option& option) {
    bool isOptional = false;
    for (const impl::optionTypes type : option.types) {
        isOptional = isOptional || type == impl::Optional;
        if (args.empty()) {
            if (!isOptional)
                fail(L"Insufficient arguments when processing option: %S\nUsage:\n%S", shownName(),
                     owner.getOptionUsage(&option, false).asWChar());
            return;
        }
        if (isOptional && (args.front()[0] == L'-' || isText(args.front(), L".")))
            return;
        if (type == impl::Optional)
            continue;
        readArgument(type);
        if (hasError)
            return;
    }
}

void GetOptImpl::fail(const wchar_t* format, ...) {
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    IString text; // `error` would keep the narrow form of its text before
    text.vformat(format, arguments.list);
    error = text;
    hasError = true;
}

const wchar_t* GetOptImpl::shownName() {
    shownName_.assign(currentName, zeString::EncodingUTF8);
    return shownName_.asWChar();
}

} // namespace zeOS
