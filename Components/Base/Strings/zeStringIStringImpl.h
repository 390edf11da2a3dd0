// SPDX-License-Identifier: MIT

/// @file
/// The content of an IString: the wide text, and the narrow form that was last asked for.

#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "Base/Strings/zeStringEncoding.h"

namespace zeString {

class IStringImpl {
public:
    IStringImpl() = default;
    explicit IStringImpl(std::wstring_view text) : wideText(text) {}
    IStringImpl(std::size_t n, wchar_t c) : wideText(n, c) {}

    /// Every change of the text but those through at() and format() ends here.
    void changed() {
        multibyteDirty = true;
        conversionStatus = NotRecorded;
    }

    /// False, with the text kept, if the format fails or produces no text. `size` is that of the
    /// first buffer. The cache stays as it is.
    bool doFormat(const wchar_t* fmt, va_list arguments, unsigned int size);

    enum : int { NotRecorded, Clean, Lossy };

    std::wstring wideText;
    bool multibyteDirty = true; ///< the cache does not describe the text
    Encoding multibyteEncoding = EncodingMultibyte;
    std::string multibyteCache;
    int conversionStatus = NotRecorded; ///< the outcome of the last conversion, if it was asked for
};

} // namespace zeString
