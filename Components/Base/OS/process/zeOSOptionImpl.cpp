// SPDX-License-Identifier: MIT

#include "Base/OS/process/zeOSOptionImpl.h"

#include <cstddef>
#include <iterator>

#include "Base/Strings/zeUtilSplit.h"

namespace zeOS::impl {

using zeString::CString;
using zeString::IString;

namespace {

struct TypeWords {
    const wchar_t* specification;
    const wchar_t* usage;
};

/// In the order of optionTypes.
constexpr TypeWords words[] = {
    {L"bool", L"bool"},           {L"int", L"integer"},       {L"float", L"float"},
    {L"string", L"string"},       {L"inputfile", L"file"},    {L"inputfile-", L"file"},
    {L"outputfile", L"file"},     {L"outputfile-", L"file"},  {L"inoutfile", L"file"},
    {L"directory", L"directory"}, {L"sequence", L"sequence"}, {L"?", L"?"},
};
static_assert(std::size(words) == Optional + 1);

} // namespace

const wchar_t* optionTypeName(optionTypes type) {
    return words[type].usage;
}

option::option(const CString& longName, const IString& typeString)
    : name(longName), specification(typeString) {
    compileOptions();
}

/// Words that are not known are dropped.
void option::compileOptions() {
    for (const IString& word : zeUtil::split(specification, L' '))
        for (std::size_t type = 0; type < std::size(words); ++type)
            if (word == words[type].specification)
                types.push_back(static_cast<optionTypes>(type));
}

optionNames::optionNames(const CString& names) {
    const unsigned int bar = names.find('|');
    if (bar == CString::npos) {
        longName = names;
    } else {
        shortName = names.substr(0, bar);
        longName = names.substr(bar + 1);
    }
}

} // namespace zeOS::impl
