// SPDX-License-Identifier: MIT

/// @file
/// The wide string, for whatever a user could see: one 32-bit `wchar_t` for each code point.
///
/// A value: copies are independent. Copying ends at the first embedded terminator, and so does
/// everything built on a copy: substr(), plus(), compareNoCase(), and the receiving side of
/// swap(); assign() and append() of an IString keep terminators. There is no move: it would keep
/// what a copy drops.
///
/// Narrow text goes in and comes out by an Encoding; a byte order mark at its start is dropped. Bad
/// text never throws. `ok`, which may be null, says whether everything converted cleanly, and "?"
/// stands for what did not; a wide character without a UTF-8 form makes the UTF-8 form empty. In
/// the "C" locale EncodingMultibyte is ASCII only: use EncodingUTF8 for what is UTF-8. A null
/// pointer counts as an empty text everywhere.
///
/// The narrow form is cached inside the object, so that repeated calls convert once. Writing
/// through a non-const at() or operator[], and format(), leave the cache as it is: a narrow form
/// that was asked for before still reads as it was until another change. Pointers to text stay
/// valid until the next change of the string; narrow ones also only until the next conversion to
/// another encoding.
///
/// Two threads must not call asMultibyte(), asUTF8(), their StoreSize forms, copyAsMultibyte() or
/// convertToCString() on one object at once, const though they are. Distinct objects are
/// independent.
///
/// Positions beyond the length throw `std::out_of_range` in insert(), erase(), replace() and
/// substr(); its text is "basic_string::" and the name of the operation. Element access does not
/// check.
///
/// @code
/// bool ok = false;
/// zeString::IString name("Sch\xC3\xB6n", zeString::EncodingUTF8, &ok);
/// assert(ok && name.length() == 5);
/// zeString::IString message;
/// message.format(L"%S: %d", name.asWChar(), 3);
/// assert(message == L"Sch\u00F6n: 3");
/// assert(message.asUTF8StoreSize() == 10);
/// @endcode

#pragma once

#include <compare>
#include <cstdarg>

#include "Base/Strings/zeStringEncoding.h"
#include "Base/Strings/zeStringString.h"
#include "Base/zeBaseExport.h"

namespace zeString {

class CString;
class IStringImpl;

/// The wide string.
class ZEBASE_API IString : public String {
public:
    IString();
    IString(const wchar_t* text);
    /// `n` characters, terminators included; a negative `n` counts as 0.
    IString(const wchar_t* text, int n);
    explicit IString(wchar_t c);
    /// `n` copies of `c`.
    IString(unsigned int n, wchar_t c);
    /// Ends at the first embedded terminator.
    IString(const IString& other);
    /// Implicit, so that text in the locale's encoding goes where an IString is wanted. A literal
    /// `nullptr` does not say which width it is: write IString().
    IString(const char* text, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    explicit IString(char c, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    /// `n` copies of `c`, converted together.
    IString(unsigned int n, char c, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    explicit IString(const CString& text, Encoding encoding = EncodingMultibyte,
                     bool* ok = nullptr);
    ~IString() override;

    IString& operator=(const IString& other);
    IString& operator=(const wchar_t* text);
    /// Keeps embedded terminators.
    IString& assign(const IString& other);
    IString& assign(const wchar_t* text);
    /// A text of which nothing remains (a byte order mark alone) empties the string, with `ok`
    /// false.
    IString& assign(const char* text, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    /// A text of which nothing remains leaves the string as it was, with `ok` false.
    IString& assign(const CString& text, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);

    unsigned int length() const override;
    unsigned int capacity() const override;
    unsigned int reserve(unsigned int n) override;
    /// 0xFFFFFFFE.
    unsigned int maxSize() const override;

    /// Adds a text behind, before, or within this one.
    virtual IString& append(const IString& other);
    IString& append(const wchar_t* text);
    IString& append(wchar_t c);
    IString& prepend(const IString& other);
    IString& prepend(const wchar_t* text);
    IString& prepend(wchar_t c);
    IString& insert(unsigned int pos, const IString& other);
    IString& insert(unsigned int pos, const wchar_t* text);
    IString& insert(unsigned int pos, wchar_t c);
    /// Removes up to `n` characters. An empty string takes any position.
    IString& erase(unsigned int pos = 0, unsigned int n = npos);
    /// The same as erase().
    IString& remove(unsigned int pos = 0, unsigned int n = npos);
    /// Puts the text in the place of up to `n` characters.
    IString& replace(unsigned int pos, unsigned int n, const IString& other);
    IString& replace(unsigned int pos, unsigned int n, const wchar_t* text);
    IString& replace(unsigned int pos, unsigned int n, wchar_t c);
    /// Replaces every occurrence of `from`, in one pass; what was put in is not searched again. An
    /// empty `from` is never found.
    IString& replace(const IString& from, const IString& to);
    IString& replaceFirst(const IString& from, const IString& to);

    /// The text, terminated, valid until the next change.
    const wchar_t* asWChar() const;
    /// The bytes (not characters) behind asWChar(), with the terminator.
    unsigned int asWCharStoreSize() const;
    /// The text in the locale's encoding or in UTF-8. Passing an `ok` converts again unless the
    /// outcome of the last conversion is known.
    const char* asMultibyte(Encoding encoding = EncodingMultibyte, bool* ok = nullptr) const;
    /// The bytes behind asMultibyte(), with the terminator.
    unsigned int asMultibyteStoreSize(Encoding encoding = EncodingMultibyte) const;
    const char* asUTF8(bool* ok = nullptr) const;
    unsigned int asUTF8StoreSize() const;
    /// Always null: there is no 16-bit form.
    const unsigned short* asUnicode() const;
    /// Always 0.
    unsigned int asUnicodeStoreSize() const;
    /// A block of asWCharStoreSize() bytes from `malloc`, for the caller to free.
    wchar_t* copyAsWChar() const;
    /// A block of asMultibyteStoreSize() bytes from `malloc`, for the caller to free.
    char* copyAsMultibyte(Encoding encoding = EncodingMultibyte, bool* ok = nullptr) const;
    /// The text in the locale's encoding.
    CString convertToCString() const;

    /// No bounds check; the position of the terminator may be read. Writing leaves a narrow form
    /// that was asked for before as it is.
    wchar_t at(unsigned int pos) const;
    wchar_t& at(unsigned int pos);
    wchar_t operator[](unsigned int pos) const;
    wchar_t& operator[](unsigned int pos);

    /// Order by code points, a shorter string before its continuation: negative, 0 or positive.
    int compare(const IString& other) const;
    /// Order in the locale (`wcscoll`), up to the first terminator.
    int collate(const IString& other) const;
    /// compare() of copies in lower case.
    int compareNoCase(const IString& other) const;
    /// collate() of copies in lower case.
    int collateNoCase(const IString& other) const;

    /// The first occurrence at or after `start`, or npos. An empty text is never found.
    unsigned int find(const IString& other, unsigned int start = 0) const;
    unsigned int find(const wchar_t* text, unsigned int start = 0) const;
    unsigned int find(wchar_t c, unsigned int start = 0) const;
    unsigned int find(bool (*predicate)(wchar_t), unsigned int start = 0) const;
    /// The last occurrence that begins at or before `start`, or npos. With a predicate, a `start`
    /// of length() examines the terminator too, and one above 0x7FFFFFFF other than npos finds
    /// nothing.
    unsigned int rfind(const IString& other, unsigned int start = npos) const;
    unsigned int rfind(const wchar_t* text, unsigned int start = npos) const;
    unsigned int rfind(wchar_t c, unsigned int start = npos) const;
    unsigned int rfind(bool (*predicate)(wchar_t), unsigned int start = npos) const;
    /// The first, or last, character that is one of `set`.
    unsigned int findAny(const IString& set, unsigned int start = 0) const;
    unsigned int rfindAny(const IString& set, unsigned int start = npos) const;

    /// Removes `c`, or spaces as isSpace() has them, from the front.
    IString& strip(wchar_t c);
    IString& stripSpaces();
    /// Removes them from the back.
    IString& rstrip(wchar_t c);
    IString& rstripSpaces();

    /// Character by character, as the locale has it.
    IString& toLowerCase();
    IString& toUpperCase();

    /// Replaces the content by a formatted text and returns its length. A format that fails (a
    /// `%s` argument or a `%c` byte that the locale cannot convert), or that produces no text at
    /// all, gives npos and keeps the content. `%s` takes a `const char*` in the locale's encoding
    /// (asMultibyte(), not asUTF8()), `%S` a `const wchar_t*`, in narrow and wide formats alike.
    /// The arguments may point into this string. `initialSize`, in characters, is a hint at the
    /// size of the result. A narrow form that was asked for before still reads as it was.
    unsigned int format(const wchar_t* fmt, ...);
    unsigned int vformat(const wchar_t* fmt, va_list arguments);
    unsigned int format(const IString* fmt, ...);
    unsigned int format(unsigned int initialSize, const wchar_t* fmt, ...);
    unsigned int format(unsigned int initialSize, const IString* fmt, ...);
    unsigned int format(const char* fmt, ...);
    unsigned int vformat(const char* fmt, va_list arguments);
    unsigned int format(unsigned int initialSize, const char* fmt, ...);

    /// Ends at the first embedded terminator.
    IString substr(unsigned int pos, unsigned int n = npos) const;
    /// The same into `out`, which may be this string. Returns `out`.
    IString& substr(IString& out, unsigned int pos, unsigned int n = npos) const;
    /// Exchanges the contents; what this string receives ends at its first embedded terminator.
    void swap(IString& other);
    /// Whether every character is ASCII.
    bool isAscii() const;

    friend bool operator==(const IString& a, const IString& b) { return a.compare(b) == 0; }
    friend std::strong_ordering operator<=>(const IString& a, const IString& b) {
        return a.compare(b) <=> 0;
    }

private:
    void convertFromMultibyte(const char* src, Encoding encoding, bool* ok);
    void convertToMultibyte(Encoding encoding, bool* ok) const;

    IStringImpl* impl_; ///< owned, never null
};

/// A copy of `a` with `b` appended.
ZEBASE_API IString plus(const IString& a, const IString& b);
/// Appends `b` to `a`.
ZEBASE_API IString& plusEqual(IString& a, const IString& b);

/// The comparisons by compare(), as functions.
ZEBASE_API bool equal(const IString& a, const IString& b);
ZEBASE_API bool notEqual(const IString& a, const IString& b);
ZEBASE_API bool less(const IString& a, const IString& b);
ZEBASE_API bool greater(const IString& a, const IString& b);
ZEBASE_API bool lessEqual(const IString& a, const IString& b);
ZEBASE_API bool greaterEqual(const IString& a, const IString& b);

/// a.swap(b).
ZEBASE_API void swap(IString& a, IString& b);

} // namespace zeString
