// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSEnvironment.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

using zeString::IString;

namespace zeOS {
namespace {

/// Null if the variable is not set.
const char* valueOf(const IString& name) {
    return std::getenv(name.asUTF8());
}

bool saysYes(const char* value) {
    IString text(value);
    text.stripSpaces().rstripSpaces().toLowerCase();
    const wchar_t* const yes[] = {L"1", L"true", L"t", L"yes", L"on"};
    return std::any_of(std::begin(yes), std::end(yes),
                       [&](const wchar_t* word) { return text == word; });
}

} // namespace

bool GetEnv(const IString& name) {
    return valueOf(name) != nullptr;
}

bool GetEnvExists(const IString& name) {
    return GetEnv(name);
}

bool GetEnv(const IString& name, IString& value) {
    const char* const text = valueOf(name);
    if (text)
        value.assign(text);
    return text != nullptr;
}

bool GetEnv(const IString& name, int& value, int defaultValue) {
    const char* const text = valueOf(name);
    value = text ? static_cast<int>(std::strtol(text, nullptr, 10)) : defaultValue;
    return text != nullptr;
}

bool GetEnv(const IString& name, bool& value, bool defaultValue) {
    const char* const text = valueOf(name);
    value = text ? saysYes(text) : defaultValue;
    return text != nullptr;
}

} // namespace zeOS
