// SPDX-License-Identifier: MIT

/// @file
/// How the strings meet the standard library's: its strings and views are known by their members,
/// and its streams by their declaration, so that who uses none of them pays for none.
///
/// Threads: any thread may call; a stream belongs to one thread at a time.
///
/// @code
/// #include <string>
/// #include <string_view>
/// #include <vector>
/// static_assert(zeString::StandardText<std::string, char>);
/// static_assert(zeString::StandardView<std::wstring_view, wchar_t>);
/// static_assert(!zeString::StandardText<std::vector<char>, char>);
/// @endcode

#pragma once

#include <stddef.h> // NOLINT(modernize-deprecated-headers): <cstddef> costs each includer more

#include <concepts>
#include <iosfwd>
#include <type_traits>

namespace zeString {

/// Whether `T` is an instance of a template for `Char`. What derives from one is not: it may have
/// conversions of its own.
template<class T, class Char>
inline constexpr bool isInstanceFor = false;
/// Such an instance.
template<template<class...> class Template, class Char, class... More>
inline constexpr bool isInstanceFor<Template<Char, More...>, Char> = true;

/// A `std::basic_string` or `std::basic_string_view` of `Char`.
template<class T, class Char>
concept StandardText = isInstanceFor<T, Char> && requires(const T& text) {
    typename T::traits_type;
    { text.data() } -> std::same_as<const Char*>;
    { text.size() } -> std::same_as<size_t>;
};

/// A `std::basic_string_view` of `Char`.
template<class T, class Char>
concept StandardView = StandardText<T, Char> && std::is_trivially_copyable_v<T> &&
    std::constructible_from<T, const Char*, size_t>;

/// What compares with a string without becoming one: a `StandardText`, or a pointer to a terminated
/// text.
template<class T, class Char>
concept ComparedText =
    StandardText<T, Char> || std::same_as<std::decay_t<T>, std::add_pointer_t<const Char>> ||
    std::same_as<std::decay_t<T>, std::add_pointer_t<Char>>;

/// What `+` and `+=` add to a `String`: a text that its append() takes, or one of its characters.
/// Numbers and characters of another width, which append() would convert, are refused.
template<class T, class String, class... Chars>
concept AddedText = (std::is_class_v<T> || std::is_array_v<T> || std::is_pointer_v<T> ||
                     (std::same_as<T, Chars> || ...)) &&
                    requires(String& string, const T& text) {
    string.append(text);
};

/// Writes `length` bytes as `<<` writes a text: in the stream's width, which it sets back to 0,
/// with its fill character. A failure is noted in the stream.
template<class Traits>
std::basic_ostream<char, Traits>& writeText(std::basic_ostream<char, Traits>& stream,
                                            const char* text, unsigned int length) {
    using Stream = std::basic_ostream<char, Traits>;
    const bool left = (stream.flags() & Stream::adjustfield) == Stream::left;
    auto fill = stream.width(0) - static_cast<decltype(stream.width())>(length);
    for (; !left && fill > 0 && stream; --fill)
        stream.put(stream.fill());
    stream.write(text, length);
    for (; fill > 0 && stream; --fill)
        stream.put(stream.fill());
    return stream;
}

} // namespace zeString
