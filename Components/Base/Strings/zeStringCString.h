// SPDX-License-Identifier: MIT

/// @file
/// The byte string: zeString::CString.
///
/// See the class for its contract.

#pragma once

#include <compare>
#include <cstdarg>
#include <typeindex> // std::hash

#include "Base/Strings/zeStringPrintf.h"
#include "Base/Strings/zeStringStandard.h"
#include "Base/Strings/zeStringString.h"
#include "Base/zeBaseExport.h"

namespace zeString {

class CStringImpl;

/// A byte string: any bytes, in no particular encoding, terminators included.
///
/// A value: copies are independent, and a moved-from string is empty. A null `const char*` counts
/// as an empty text everywhere. Pointers from asChar() and asMultibyte() stay valid until the next
/// change of the string.
///
/// Positions beyond the length throw `std::out_of_range` in insert(), erase(), replace() and
/// substr(); its text is "basic_string::" and the name of the operation. Element access does not
/// check.
///
/// **With the standard library** it works as a `std::string` does: `+`, `+=`, `<<`, `std::hash`,
/// algorithms, and `std::string_view` both ways. A standard string or view is taken whole,
/// terminators included, and becomes a CString only where that is said.
///
/// Threads: distinct objects may be used by different threads at once; const operations on one
/// object may overlap.
///
/// @code
/// #include <string_view>
/// zeString::CString name("mesh.obj");
/// name.replace(name.find('.'), zeString::String::npos, ".ze").prepend("new-");
/// assert(name == "new-mesh.ze");
/// assert(name.format("%s-%d", "frame", 7) == 7);
/// assert(name + ".ze" == "frame-7.ze");
/// const std::string_view view = name;
/// assert(zeString::CString(view.substr(6)) == "7");
/// @endcode
class ZEBASE_API CString : public String {
public:
    /// An empty string.
    CString();
    /// The text up to its terminator.
    CString(const char* text);
    /// `n` bytes, terminators included; a negative `n` counts as 0.
    CString(const char* bytes, int n);
    /// The string of one byte.
    explicit CString(char c);
    /// `n` copies of `c`.
    CString(unsigned int n, char c);
    /// A copy of a standard string or view.
    template<StandardText<char> Text>
    explicit CString(const Text& text) : CString() {
        append(text);
    }

    /// A copy, terminators included.
    CString(const CString& other);
    /// Takes the content over and leaves `other` empty. Allocates nothing.
    CString(CString&& other) noexcept;
    ~CString() override;

    /// @{
    /// Replaces the content.
    CString& operator=(const CString& other);
    CString& operator=(const char* text);
    CString& assign(const CString& other);
    CString& assign(const char* text);
    /// @}
    /// @{
    /// Replaces the content by that of a standard string or view, which may view this string.
    template<StandardText<char> Text>
    CString& operator=(const Text& text) {
        return assign(text);
    }
    template<StandardText<char> Text>
    CString& assign(const Text& text) {
        return replaceText(0, npos, text.data(), text.size());
    }
    /// @}
    /// Takes the content over and leaves `other` empty. Allocates nothing.
    CString& operator=(CString&& other) noexcept;

    unsigned int length() const override;
    unsigned int capacity() const override;
    unsigned int reserve(unsigned int n) override;
    /// 0xFFFFFFF9.
    unsigned int maxSize() const override;

    /// @{
    /// Adds a text at the end.
    virtual CString& append(const CString& other);
    CString& append(const char* text);
    CString& append(char c);
    template<StandardText<char> Text>
    CString& append(const Text& text) {
        return replaceText(length(), 0, text.data(), text.size());
    }
    /// @}
    /// append() of a text or a byte.
    template<AddedText<CString, char> Text>
    CString& operator+=(const Text& text) {
        return append(text);
    }
    /// plus(): `a` with a text or a byte behind it.
    template<AddedText<CString, char> Text>
    friend CString operator+(CString a, const Text& b) {
        a.append(b);
        return a;
    }

    /// @{
    /// Adds a text at the front.
    CString& prepend(const CString& other);
    CString& prepend(const char* text);
    CString& prepend(char c);
    /// @}

    /// @{
    /// Adds a text before the byte at `pos`.
    CString& insert(unsigned int pos, const CString& other);
    CString& insert(unsigned int pos, const char* text);
    CString& insert(unsigned int pos, char c);
    /// @}

    /// @{
    /// Removes up to `n` bytes. On an empty string any position is accepted, and nothing happens.
    CString& erase(unsigned int pos = 0, unsigned int n = npos);
    CString& remove(unsigned int pos = 0, unsigned int n = npos);
    /// @}
    /// Makes the string empty.
    // NOLINTNEXTLINE(bugprone-exception-escape): only a position behind the end throws
    void clear() noexcept {
        if (!isEmpty())
            erase();
    }

    /// @{
    /// Replaces up to `n` bytes by the text.
    CString& replace(unsigned int pos, unsigned int n, const CString& other);
    CString& replace(unsigned int pos, unsigned int n, const char* text);
    CString& replace(unsigned int pos, unsigned int n, char c);
    /// @}

    /// @{
    /// The text, terminated, valid until the next change.
    const char* asChar() const;
    const char* asMultibyte() const;
    /// @}

    /// @{
    /// The number of bytes behind asChar(), with the terminator.
    unsigned int asCharStoreSize() const;
    unsigned int asMultibyteStoreSize() const;
    /// @}

    /// @{
    /// A block of asCharStoreSize() bytes from `malloc`, for the caller to free.
    char* copyAsChar() const;
    char* copyAsMultibyte() const;
    /// @}

    /// @{
    /// The byte at `pos`. No bounds check; the position of the terminator may be read.
    char at(unsigned int pos) const;
    char& at(unsigned int pos);
    char operator[](unsigned int pos) const;
    char& operator[](unsigned int pos);
    /// @}

    /// @{
    /// The bytes as a contiguous range. Iterators are pointers, valid until the next change.
    char* begin() { return &at(0); }
    char* end() { return begin() + length(); }
    const char* begin() const { return asChar(); }
    const char* end() const { return asChar() + length(); }
    /// @}
    /// The bytes as a `std::string_view`, valid until the next change.
    template<StandardView<char> View>
    operator View() const {
        return View(asChar(), length());
    }

    /// @{
    /// Order by bytes, a shorter string before its continuation: negative, 0 or positive.
    int compare(const CString& other) const;
    int compare(const char* text) const;
    /// @}
    /// Order in the locale (`strcoll`), up to the first terminator.
    int collate(const CString& other) const;
    /// compare() of the two texts in lower case.
    int compareNoCase(const CString& other) const;
    /// collate() of the two texts in lower case.
    int collateNoCase(const CString& other) const;

    /// @{
    /// The first occurrence at or after `start`, or npos. An empty text is never found.
    unsigned int find(const CString& other, unsigned int start = 0) const;
    unsigned int find(const char* text, unsigned int start = 0) const;
    unsigned int find(char c, unsigned int start = 0) const;
    unsigned int find(bool (*predicate)(char), unsigned int start = 0) const;
    /// @}

    /// @{
    /// The last occurrence that begins at or before `start`, or npos.
    unsigned int rfind(const CString& other, unsigned int start = npos) const;
    unsigned int rfind(const char* text, unsigned int start = npos) const;
    unsigned int rfind(char c, unsigned int start = npos) const;
    /// @}
    /// The last byte at or before `start` for which `predicate` holds, or npos. A `start` of
    /// length() examines the terminator too, and one above 0x7FFFFFFF other than npos finds
    /// nothing.
    unsigned int rfind(bool (*predicate)(char), unsigned int start = npos) const;

    /// Removes every `c` from the front.
    CString& strip(char c);
    /// Removes what isSpace() holds for from the front.
    CString& stripSpaces();
    /// Removes every `c` from the back.
    CString& rstrip(char c);
    /// Removes what isSpace() holds for from the back.
    CString& rstripSpaces();

    /// @{
    /// Changes the case byte by byte, as the locale's single-byte tables say: most multi-byte
    /// characters stay as they are.
    CString& toLowerCase();
    CString& toUpperCase();
    /// @}

    /// @{
    /// Replaces the content by a formatted text and returns its length. A format that fails, or
    /// that produces no text at all, gives npos and keeps the content. The arguments may point into
    /// this string. `initialSize` is a hint at the size of the result. `%s` takes a `const char*`
    /// and `%S` a `const wchar_t*`, which fails where the locale cannot convert it. Compilers check
    /// the arguments of literal formats if ZEBASE_CHECK_FORMATS is defined.
    unsigned int format(const char* fmt, ...) ZEBASE_FORMAT(2, 3);
    unsigned int vformat(const char* fmt, va_list arguments) ZEBASE_FORMAT(2, 0);
    unsigned int format(const CString* fmt, ...);
    unsigned int format(unsigned int initialSize, const char* fmt, ...) ZEBASE_FORMAT(3, 4);
    unsigned int format(unsigned int initialSize, const CString* fmt, ...);
    /// @}

    /// A copy of up to `n` bytes.
    CString substr(unsigned int pos, unsigned int n = npos) const;

    /// Exchanges the contents.
    void swap(CString& other) noexcept;
    /// Whether every byte is ASCII.
    bool isAscii() const;

    /// Equality by compare().
    friend bool operator==(const CString& a, const CString& b) { return a.compare(b) == 0; }
    /// Order by compare().
    friend std::strong_ordering operator<=>(const CString& a, const CString& b) {
        return a.compare(b) <=> 0;
    }
    /// @{
    /// The same with a standard string or view, or a pointer. Allocates nothing.
    template<ComparedText<char> Text>
    friend bool operator==(const CString& a, const Text& b) {
        return a.order(b) == 0;
    }
    template<ComparedText<char> Text>
    friend std::strong_ordering operator<=>(const CString& a, const Text& b) {
        return a.order(b) <=> 0;
    }
    /// @}

    /// Writes the bytes to a `std::ostream`.
    template<class Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                                        const CString& text) {
        return writeText(stream, text.asChar(), text.length());
    }

private:
    friend struct std::hash<CString>;

    ZEBASE_HIDDEN const CStringImpl& impl() const;
    ZEBASE_HIDDEN CStringImpl& impl();
    CString& replaceText(unsigned int pos, unsigned int n, const char* text, size_t length);
    size_t hash() const noexcept;
    int compareText(const char* text, size_t length) const;
    int order(const char* text) const { return compare(text); }
    template<StandardText<char> Text>
    int order(const Text& text) const {
        return compareText(text.data(), text.size());
    }

    CStringImpl* impl_; ///< Owned; null in a moved-from string until something is put in.
};

/// A copy of `a` with `b` appended.
ZEBASE_API CString plus(const CString& a, const CString& b);
/// Appends `b` to `a`.
ZEBASE_API CString& plusEqual(CString& a, const CString& b);

/// @{
/// The comparison of that name by compare().
ZEBASE_API bool equal(const CString& a, const CString& b);
ZEBASE_API bool equal(const CString& a, const char* b);
ZEBASE_API bool notEqual(const CString& a, const CString& b);
ZEBASE_API bool less(const CString& a, const CString& b);
ZEBASE_API bool greater(const CString& a, const CString& b);
ZEBASE_API bool lessEqual(const CString& a, const CString& b);
ZEBASE_API bool greaterEqual(const CString& a, const CString& b);
/// @}

/// a.swap(b).
ZEBASE_API void swap(CString& a, CString& b) noexcept;

} // namespace zeString

namespace std {

/// That of a `std::string_view` of the same bytes.
template<>
struct hash<zeString::CString> {
    /// The hash.
    size_t operator()(const zeString::CString& text) const noexcept { return text.hash(); }
};

} // namespace std

extern "C" {

/// A new string for callers outside the class system; released by CString_delete().
ZEBASE_API zeString::CString* CString_create(const char* text);

/// Destroys a string from CString_create(); null is allowed.
ZEBASE_API void CString_delete(zeString::CString* string);

} // extern "C"
