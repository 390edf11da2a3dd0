// SPDX-License-Identifier: MIT

/// @file
/// Bounded formatting with one rule for "did not fit", in narrow and wide text alike.
///
/// The formats are the C library's; `%s` takes a `const char*` and `%S` a `const wchar_t*` in both.
/// Sizes are in characters of the buffer and include the terminator. The result is the length of
/// the text if it is below `size - 1`, and -1 otherwise: a text that fills the buffer exactly
/// counts as failure, and so does a size of 0 or 1. The functions have plain linkage and are safe
/// from any thread.
///
/// @code
/// char buffer[4];
/// assert(ZL_snprintf(buffer, sizeof buffer, "%d", 12) == 2);
/// assert(ZL_snprintf(buffer, sizeof buffer, "%d", 123) == -1); // would fill the buffer
/// @endcode

#pragma once

#include <cstdarg>
#include <cstddef>

#include "Base/zeBaseExport.h"

extern "C" {

/// Formats like `vsnprintf`; the buffer is terminated if `size` is not 0.
ZEBASE_API int ZL_vsnprintf(char* buffer, std::size_t size, const char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));

/// ZL_vsnprintf() of its arguments.
ZEBASE_API int ZL_snprintf(char* buffer, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Formats like `vswprintf`; after a failure the buffer's content is unspecified.
ZEBASE_API int ZL_vswprintf(wchar_t* buffer, std::size_t size, const wchar_t* format,
                            va_list arguments);

/// ZL_vswprintf() of its arguments.
ZEBASE_API int ZL_swprintf(wchar_t* buffer, std::size_t size, const wchar_t* format, ...);

/// A copy of a wide format, which must not be null, that suits the C library's printf family. The
/// caller frees it with `free`. Null when memory is out.
ZEBASE_API wchar_t* ZL_convert_string_format(const wchar_t* format);

} // extern "C"
