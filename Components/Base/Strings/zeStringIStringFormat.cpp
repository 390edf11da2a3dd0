// SPDX-License-Identifier: MIT

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>

#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeStringIStringImpl.h"
#include "Base/Strings/zeStringPrintf.h"
#include "Base/Strings/zeStringTextImpl.h"

namespace zeString {
namespace {

constexpr auto firstSize = static_cast<unsigned int>(detail::formatStackSize);

/// The most that a size hint reserves; a longer text is formatted on a stream anyway.
constexpr std::size_t largestFirstSize = 1 << 16;

struct Free {
    void operator()(void* block) const { std::free(block); }
};

/// Formats a text of any length; null if the format fails. `vswprintf` returns -1 both for that and
/// for a short buffer; a stream tells the two cases apart without growing a buffer again and again.
std::unique_ptr<wchar_t, Free> formatOnStream(const wchar_t* fmt, va_list arguments) {
    wchar_t* text = nullptr;
    std::size_t length = 0;
    std::FILE* stream = open_wmemstream(&text, &length);
    if (!stream)
        return nullptr;
    const bool formatted = std::vfwprintf(stream, fmt, arguments) >= 0;
    const bool closed = std::fclose(stream) == 0;
    std::unique_ptr<wchar_t, Free> result(text);
    return formatted && closed ? std::move(result) : nullptr;
}

} // namespace

bool IStringImpl::doFormat(const wchar_t* fmt, va_list arguments, unsigned int size) {
    wchar_t stack[detail::formatStackSize];
    std::unique_ptr<wchar_t[]> heap;
    std::size_t room = detail::formatStackSize;
    if (size > room) {
        room = std::min<std::size_t>(size, largestFirstSize);
        heap = std::make_unique_for_overwrite<wchar_t[]>(room);
    }
    wchar_t* buffer = heap ? heap.get() : stack;

    VariadicArguments again;
    va_copy(again.list, arguments);
    const int length = std::vswprintf(buffer, room, fmt, arguments);
    bool formatted = length > 0;
    // Up to the first terminator in either case, if a "%c" put one there.
    if (length > 0) {
        wideText.assign(buffer);
    } else if (length < 0) {
        if (const auto longer = formatOnStream(fmt, again.list)) {
            wideText.assign(longer.get());
            formatted = true;
        }
    }
    return formatted;
}

unsigned int IString::format(const wchar_t* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return vformat(fmt, arguments.list);
}

unsigned int IString::vformat(const wchar_t* fmt, va_list arguments) {
    return fmt && impl_->doFormat(fmt, arguments, firstSize) ? length() : npos;
}

unsigned int IString::format(const IString* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return vformat(fmt ? fmt->asWChar() : nullptr, arguments.list);
}

unsigned int IString::format(unsigned int initialSize, const wchar_t* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return fmt && impl_->doFormat(fmt, arguments.list, initialSize) ? length() : npos;
}

unsigned int IString::format(unsigned int initialSize, const IString* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return fmt && impl_->doFormat(fmt->asWChar(), arguments.list, initialSize) ? length() : npos;
}

unsigned int IString::format(const char* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return vformat(fmt, arguments.list);
}

unsigned int IString::vformat(const char* fmt, va_list arguments) {
    return vformat(IString(fmt, EncodingMultibyte).asWChar(), arguments);
}

unsigned int IString::format(unsigned int initialSize, const char* fmt, ...) {
    const IString wide(fmt, EncodingMultibyte);
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return impl_->doFormat(wide.asWChar(), arguments.list, initialSize) ? length() : npos;
}

} // namespace zeString
