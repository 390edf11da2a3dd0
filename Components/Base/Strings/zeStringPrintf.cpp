// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringPrintf.h"

#include <cstdio>
#include <cwchar>

namespace {

/// Callers rely on an exactly filled buffer being a failure. No subtraction, so that a size of 0
/// needs no care.
int lengthIfBelowSize(int length, std::size_t size) {
    return length >= 0 && static_cast<std::size_t>(length) + 1 < size ? length : -1;
}

} // namespace

int ZL_vsnprintf(char* buffer, std::size_t size, const char* format, va_list arguments) {
    return lengthIfBelowSize(std::vsnprintf(buffer, size, format, arguments), size);
}

int ZL_snprintf(char* buffer, std::size_t size, const char* format, ...) {
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    return ZL_vsnprintf(buffer, size, format, arguments.list);
}

int ZL_vswprintf(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list arguments) {
    return lengthIfBelowSize(std::vswprintf(buffer, size, format, arguments), size);
}

int ZL_swprintf(wchar_t* buffer, std::size_t size, const wchar_t* format, ...) {
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    return ZL_vswprintf(buffer, size, format, arguments.list);
}

wchar_t* ZL_convert_string_format(const wchar_t* format) {
    return ::wcsdup(format);
}
