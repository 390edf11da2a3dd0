// SPDX-License-Identifier: MIT

/// @file
/// What CString and IString share: the operations on their standard strings, written once.
///
/// Positions are 32-bit at the boundary. String::npos lies beyond every position, so the standard
/// strings need no other value for it. The out-of-range texts are part of the behaviour.

#pragma once

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Base/Strings/zeStringCharacter.h"
#include "Base/Strings/zeStringString.h"

namespace zeString::detail {

/// A view of the characters of a standard string. As a parameter it takes no part in deduction, so
/// that strings and literals convert to it.
template<class Text>
using ViewOf = std::basic_string_view<typename Text::value_type>;

/// The text at a pointer; a null pointer is an empty text.
template<class Char>
std::basic_string_view<Char> view(const Char* text) {
    return text ? std::basic_string_view<Char>(text) : std::basic_string_view<Char>();
}

/// `n` characters at a pointer, terminators included; none for null or a negative count.
template<class Char>
std::basic_string_view<Char> view(const Char* text, int n) {
    return text && n > 0 ? std::basic_string_view<Char>(text, static_cast<std::size_t>(n))
                         : std::basic_string_view<Char>();
}

/// Position or size of a standard string as the public signatures have it; its npos becomes ours.
inline unsigned int narrowed(std::size_t position) {
    return static_cast<unsigned int>(position);
}

template<class Char>
int compare(std::basic_string_view<Char> a, std::basic_string_view<Char> b) {
    const int order =
        std::char_traits<Char>::compare(a.data(), b.data(), std::min(a.size(), b.size()));
    if (order != 0)
        return order;
    const auto difference = static_cast<long>(a.size()) - static_cast<long>(b.size());
    return static_cast<int>(std::clamp<long>(difference, INT_MIN, INT_MAX));
}

// Searching. Nothing is found in an empty text, and an empty pattern or set is never found.

template<class Text>
unsigned int find(const Text& text, ViewOf<Text> pattern, unsigned int start) {
    return pattern.empty() ? String::npos : narrowed(text.find(pattern, start));
}

template<class Text>
unsigned int rfind(const Text& text, ViewOf<Text> pattern, unsigned int start) {
    if (text.empty() || pattern.empty())
        return String::npos;
    return narrowed(text.rfind(pattern, start));
}

template<class Text>
unsigned int findIf(const Text& text, bool (*predicate)(typename Text::value_type),
                    unsigned int start) {
    for (std::size_t i = start; i < text.size(); ++i)
        if (predicate(text[i]))
            return narrowed(i);
    return String::npos;
}

/// A start that is negative as a signed number finds nothing. A start at the length examines the
/// terminator first; a start beyond it is taken as the length.
template<class Text>
unsigned int rfindIf(const Text& text, bool (*predicate)(typename Text::value_type),
                     unsigned int start) {
    if (text.empty())
        return String::npos;
    std::size_t i = text.size() - 1;
    if (start != String::npos) {
        if (start > INT_MAX)
            return String::npos;
        i = std::min<std::size_t>(start, text.size());
    }
    for (;; --i) {
        if (predicate(text[i]))
            return narrowed(i);
        if (i == 0)
            return String::npos;
    }
}

// Editing.

inline void requirePosition(bool valid, const char* text) {
    if (!valid)
        throw std::out_of_range(text);
}

template<class Text>
void insert(Text& text, unsigned int pos, ViewOf<Text> added) {
    requirePosition(pos <= text.size(), "basic_string::insert");
    text.insert(pos, added);
}

/// Returns whether there was anything to erase from: an empty string takes any position.
template<class Text>
bool erase(Text& text, unsigned int pos, unsigned int n) {
    if (text.empty())
        return false;
    requirePosition(pos <= text.size(), "basic_string::erase");
    text.erase(pos, n);
    return true;
}

template<class Text>
void replace(Text& text, unsigned int pos, unsigned int n, ViewOf<Text> by) {
    requirePosition(pos <= text.size(), "basic_string::replace");
    text.replace(pos, n, by);
}

template<class Text>
ViewOf<Text> substr(const Text& text, unsigned int pos, unsigned int n) {
    requirePosition(pos <= text.size(), "basic_string::substr");
    return ViewOf<Text>(text).substr(pos, n);
}

/// The number of characters at the front for which `drop` holds.
template<class Text, class Drop>
unsigned int frontCount(const Text& text, Drop drop) {
    return narrowed(
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), drop) - text.begin()));
}

/// The length that remains without the characters at the back for which `drop` holds.
template<class Text, class Drop>
unsigned int lengthWithoutBack(const Text& text, Drop drop) {
    return narrowed(
        static_cast<std::size_t>(text.rend() - std::find_if_not(text.rbegin(), text.rend(), drop)));
}

template<class Char>
auto equals(Char c) {
    return [c](Char other) { return other == c; };
}

template<class Char>
bool isSpaceCharacter(Char c) {
    return isSpace(c);
}

template<class Text>
void toLowerCase(Text& text) {
    for (auto& c : text)
        c = toLower(c);
}

template<class Text>
void toUpperCase(Text& text) {
    for (auto& c : text)
        c = toUpper(c);
}

template<class Text>
bool isAsciiOnly(const Text& text) {
    return std::all_of(text.begin(), text.end(), [](auto c) { return isAscii(c); });
}

/// The text and its terminator in a block from `malloc`, for the caller to free.
template<class Text>
auto copyToMalloc(const Text& text) {
    using Char = typename Text::value_type;
    const std::size_t bytes = (text.size() + 1) * sizeof(Char);
    void* block = std::malloc(bytes);
    if (!block)
        throw std::bad_alloc();
    return static_cast<Char*>(std::memcpy(block, text.c_str(), bytes));
}

/// What a format is first tried in, in characters: most texts fit, and are formatted once.
constexpr std::size_t formatStackSize = 256;

} // namespace zeString::detail
