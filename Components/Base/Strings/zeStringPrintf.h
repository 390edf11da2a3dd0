// SPDX-License-Identifier: MIT

/// @file
/// Bounded formatting with one rule for "did not fit", in narrow and wide text alike, and what
/// functions with a format share.
///
/// The formats are the C library's; `%s` takes a `const char*` and `%S` a `const wchar_t*` in both.
/// Sizes are in characters of the buffer and include the terminator. The result is the length of
/// the text if it is below `size - 1`, and -1 otherwise: a text that fills the buffer exactly
/// counts as failure, and so does a size of 0 or 1. The functions have plain linkage.
///
/// Threads: any thread may call, while no thread changes the locale.
///
/// @code
/// char buffer[4];
/// assert(ZL_snprintf(buffer, sizeof buffer, "%d", 12) == 2);
/// assert(ZL_snprintf(buffer, sizeof buffer, "%d", 123) == -1); // would fill the buffer
/// @endcode

#pragma once

#include <stddef.h> // NOLINT(modernize-deprecated-headers): <cstddef> costs each includer more

#include <cstdarg>

#include "Base/zeBaseExport.h"

/// Lets the compiler check the arguments of a narrow format in zeString::CString,
/// zeString::IString, zeUtil::Error and what prints in zeOS, where ZEBASE_CHECK_FORMATS is defined
/// before the headers are included. `format` is the position of the format among the parameters,
/// with `this` as the first, and `first` that of the first variadic argument, or 0 for a `va_list`.
/// Not on by default, since compilers also object to what is legal here: to an empty format
/// (-Wformat-zero-length, part of -Wall), and to `%S` under GCC's -Wpedantic. No compiler checks
/// wide formats.
#ifdef ZEBASE_CHECK_FORMATS
#define ZEBASE_FORMAT(format, first) __attribute__((__format__(printf, format, first)))
#else
#define ZEBASE_FORMAT(format, first)
#endif

extern "C" {

/// Formats like `vsnprintf`; the buffer is terminated if `size` is not 0.
ZEBASE_API int ZL_vsnprintf(char* buffer, size_t size, const char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));

/// ZL_vsnprintf() of its arguments.
ZEBASE_API int ZL_snprintf(char* buffer, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Formats like `vswprintf`; after a failure the buffer's content is unspecified.
ZEBASE_API int ZL_vswprintf(wchar_t* buffer, size_t size, const wchar_t* format, va_list arguments);

/// ZL_vswprintf() of its arguments.
ZEBASE_API int ZL_swprintf(wchar_t* buffer, size_t size, const wchar_t* format, ...);

/// A copy of a wide format, which must not be null, that suits the C library's printf family. The
/// caller frees it with `free`. Null when memory runs out.
ZEBASE_API wchar_t* ZL_convert_string_format(const wchar_t* format);

} // extern "C"

namespace zeString {

/// The arguments behind the last named parameter of a variadic function, which starts them with
/// `va_start(arguments.list, last)`. The destructor calls `va_end`, however the function is left.
///
/// The C standard wants `va_end` in the function that called `va_start`. GCC and Clang do not need
/// that: on x86-64 their `va_end` does nothing.
struct VariadicArguments {
    /// Nothing to read until `va_start` or `va_copy`, one of which must follow.
    VariadicArguments() = default;
    VariadicArguments(const VariadicArguments&) = delete; ///< Use `va_copy`.
    VariadicArguments& operator=(const VariadicArguments&) = delete;
    ~VariadicArguments() { va_end(list); }

    va_list list; ///< What the functions with a `va_list` take.
};

} // namespace zeString
