// SPDX-License-Identifier: MIT

// Reads one argument by its type. An argument that is refused is taken all the same.

#include <algorithm>
#include <iterator>

#include "Base/OS/process/zeOSGetOptImpl.h"
#include "Base/OS/zeOSGetOpt.h"
#include "Base/Strings/zeStringCharacter.h"

namespace zeOS {

using zeString::IString;
using zeUtil::Error;

namespace {

constexpr const wchar_t* falseWords[] = {L"0", L"false", L"no", L"off"};
constexpr const wchar_t* trueWords[] = {L"1", L"true", L"yes", L"on"};

template<class Words>
bool isOneOf(const Words& words, const IString& argument) {
    return std::any_of(std::begin(words), std::end(words),
                       [&](const wchar_t* word) { return isText(argument, word); });
}

/// Looks at the beginning only: programs rely on "12abc" being taken.
bool beginsNumber(const wchar_t* text, bool isFloat) {
    if (*text == L'-')
        ++text;
    if (isFloat && *text == L'.')
        ++text;
    return zeString::isDigit(*text);
}

/// How a file is checked, and what a message calls it.
struct FileCheck {
    Error (GetOpt::*isValid)(const IString& name) const;
    const wchar_t* label;
    bool refusesDash = false;
};

FileCheck fileCheck(impl::optionTypes type) {
    switch (type) {
    case impl::InputFile:
    case impl::InputFileOrDash:
        return {&GetOpt::validInputFile, L"InputFile", true};
    case impl::OutputFile:
    case impl::OutputFileOrDash:
        return {&GetOpt::validOutputFile, L"OutputFile", true};
    case impl::InOutFile:
        return {&GetOpt::validInOutFile, L"InputOutputFile"};
    default:
        return {&GetOpt::validDirectory, L"Directory"};
    }
}

} // namespace

void GetOptImpl::readArgument(impl::optionTypes type) {
    if (type == impl::Sequence)
        return readSequence();
    const IString& argument = args.front();
    if (type == impl::Bool)
        readBool(argument);
    else if (type == impl::Int || type == impl::Float)
        readNumber(argument, type == impl::Float);
    else if (type == impl::String)
        store(argument);
    else
        readFile(argument, type);
    args.pop_front();
}

void GetOptImpl::readBool(const IString& argument) {
    if (isOneOf(falseWords, argument))
        store(L"0");
    else if (isOneOf(trueWords, argument))
        store(L"1");
    else
        fail(L"While processing option: -%S\n  Expected a boolean type, got: %S\n    valid boolean "
             L"types are: 1, 0, true,  false, yes, no, on, off.",
             shownName(), argument.asWChar());
}

void GetOptImpl::readNumber(const IString& argument, bool isFloat) {
    if (beginsNumber(argument.asWChar(), isFloat))
        store(argument);
    else
        fail(L"While processing option: -%S\n  Expected %S, got: %S", shownName(),
             isFloat ? L"a floating point value" : L"an integer", argument.asWChar());
}

void GetOptImpl::readFile(const IString& argument, impl::optionTypes type) {
    const bool isDash = isText(argument, L"-");
    if (isDash && (type == impl::InputFileOrDash || type == impl::OutputFileOrDash))
        return store(argument);
    const FileCheck check = fileCheck(type);
    const Error result = isDash && check.refusesDash ? Error(1, "The filename \"-\" is not valid")
                                                     : (owner.*check.isValid)(argument);
    if (result.code() == 0)
        return store(argument);
    fail(L"While processing option: -%S  (%S)\n  %S", shownName(), check.label,
         IString(result.message()).asWChar());
}

/// Brackets nest; the outermost pair is not stored. A "." ends the sequence in any depth, and so do
/// the end of the arguments and the closing bracket.
void GetOptImpl::readSequence() {
    int depth = 0;
    for (bool isOpen = true; isOpen && !args.empty(); args.pop_front()) {
        const IString& argument = args.front();
        if (isText(argument, L".") || (isText(argument, L"]") && --depth == 0))
            isOpen = false;
        else if (!isText(argument, L"[") || depth++ != 0)
            store(argument);
    }
    if (depth < 0)
        fail(L"While processing option: -%S\n  Too many ']' characters", shownName());
}

} // namespace zeOS
