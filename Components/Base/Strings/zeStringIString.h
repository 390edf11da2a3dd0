// SPDX-License-Identifier: MIT

/// @file
/// The wide string: zeString::IString.
///
/// See the class for its contract.

#pragma once

#include <compare>
#include <concepts>
#include <cstdarg>
#include <typeindex> // std::hash

#include "Base/Strings/zeStringEncoding.h"
#include "Base/Strings/zeStringPrintf.h"
#include "Base/Strings/zeStringStandard.h"
#include "Base/Strings/zeStringString.h"
#include "Base/zeBaseExport.h"

namespace zeString {

class CString;
class IStringImpl;

/// A wide string, for whatever a user could see: one 32-bit `wchar_t` for each code point.
///
/// A value: copies are independent. Copying ends at the first embedded terminator, and so does
/// everything built on a copy: substr(), plus(), compareNoCase(), and the receiving side of
/// swap(); assign() and append() of an IString keep terminators. There is no move constructor: it
/// would keep what a copy drops. A null pointer counts as an empty text everywhere.
///
/// **Narrow text** is converted by an Encoding; a byte order mark at its start is dropped. Bad text
/// never throws: `ok`, which may be null, says whether everything converted, and "?" replaces what
/// did not. A wide character without a UTF-8 form makes the UTF-8 form empty.
///
/// **The "C" locale**, which every program starts in, is ASCII only: there EncodingMultibyte, the
/// default, turns each byte and each character above 0x7F into "?", so that `Schön.txt` and
/// `Schän.txt` become the same text. Call `setlocale(LC_ALL, "")` at the start of the program, or
/// pass EncodingUTF8 for text that is UTF-8.
///
/// **The narrow form is cached** inside the object, so that repeated calls convert once. Writing
/// through a non-const at() or operator[], and format(), do not renew the cache: a narrow form that
/// was requested before keeps its value until another change. Pointers to text stay valid until
/// the next change of the string; narrow ones also only until the next conversion to another
/// encoding.
///
/// Positions beyond the length throw `std::out_of_range` in insert(), erase(), replace() and
/// substr(); its text is "basic_string::" and the name of the operation. Element access does not
/// check.
///
/// **With the standard library** it works as a `std::wstring` does: `+`, `+=`, `std::hash`,
/// algorithms, and `std::wstring_view` both ways; `<<` writes UTF-8. A standard string or view is
/// taken whole, terminators included, and becomes an IString only where that is said, from `char`
/// with its encoding.
///
/// Threads: distinct objects may be used by different threads at once; on one object calls must not
/// overlap if one of them gives narrow text (asMultibyte(), asUTF8(), their StoreSize forms,
/// copyAsMultibyte(), convertToCString(), `<<`), const though it is, or changes the string.
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
class ZEBASE_API IString : public String {
public:
    /// An empty string.
    IString();
    /// The text up to its terminator.
    IString(const wchar_t* text);
    /// `n` characters, terminators included; a negative `n` counts as 0.
    IString(const wchar_t* text, int n);
    /// The string of one character.
    explicit IString(wchar_t c);
    /// `n` copies of `c`.
    IString(unsigned int n, wchar_t c);
    /// Ends at the first embedded terminator.
    IString(const IString& other);
    /// Implicit, so that text in the locale's encoding can be passed where an IString is expected.
    /// A literal `nullptr` is ambiguous between the two widths: write IString().
    IString(const char* text, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    /// A text of one byte, converted.
    explicit IString(char c, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    /// `n` copies of `c`, converted together.
    IString(unsigned int n, char c, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    /// The text up to its first terminator, converted.
    explicit IString(const CString& text, Encoding encoding = EncodingMultibyte,
                     bool* ok = nullptr);
    /// A copy of a standard string or view.
    template<StandardText<wchar_t> Text>
    explicit IString(const Text& text) : IString() {
        append(text);
    }
    /// A standard string or view of bytes up to its first terminator, converted.
    template<StandardText<char> Text>
    IString(const Text& text, Encoding encoding, bool* ok = nullptr) : IString() {
        convertFromBytes(text.data(), text.size(), encoding, ok);
    }
    ~IString() override;

    /// @{
    /// Replaces the content, embedded terminators included.
    IString& operator=(const IString& other);
    IString& assign(const IString& other);
    /// @}
    /// Takes the content over, embedded terminators included, and leaves `other` empty. Allocates
    /// nothing.
    IString& operator=(IString&& other) noexcept;
    /// @{
    /// Replaces the content by the text up to its terminator.
    IString& operator=(const wchar_t* text);
    IString& assign(const wchar_t* text);
    /// @}
    /// Replaces the content. A text of which nothing remains (a byte order mark alone) empties the
    /// string, with `ok` false.
    IString& assign(const char* text, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    /// Replaces the content. A text of which nothing remains leaves the string as it was, with `ok`
    /// false.
    IString& assign(const CString& text, Encoding encoding = EncodingMultibyte, bool* ok = nullptr);
    /// @{
    /// Replaces the content by that of a standard string or view, which may view this string.
    template<StandardText<wchar_t> Text>
    IString& operator=(const Text& text) {
        return assign(text);
    }
    template<StandardText<wchar_t> Text>
    IString& assign(const Text& text) {
        return replaceText(0, npos, text.data(), text.size());
    }
    /// @}
    /// Replaces the content by a standard string or view of bytes up to its first terminator,
    /// converted.
    template<StandardText<char> Text>
    IString& assign(const Text& text, Encoding encoding, bool* ok = nullptr) {
        return *this = IString(text, encoding, ok);
    }

    unsigned int length() const override;
    unsigned int capacity() const override;
    unsigned int reserve(unsigned int n) override;
    /// 0xFFFFFFFE.
    unsigned int maxSize() const override;

    /// @name Editing
    /// A `char` is converted as IString(char) does it, in the locale's encoding, but that 0 stays a
    /// terminator. Any other number is taken for a `wchar_t`.
    /// @{

    /// Adds a text at the end.
    virtual IString& append(const IString& other);
    /// @copydoc append(const IString&)
    IString& append(const wchar_t* text);
    /// @copydoc append(const IString&)
    IString& append(wchar_t c);
    /// @copydoc append(const IString&)
    template<std::same_as<char> Char = char>
    IString& append(Char c) {
        return append(widened(c));
    }
    /// Adds a standard string or view at the end.
    template<StandardText<wchar_t> Text>
    IString& append(const Text& text) {
        return replaceText(length(), 0, text.data(), text.size());
    }
    /// append() of a text or a character.
    template<AddedText<IString, char, wchar_t> Text>
    IString& operator+=(const Text& text) {
        return append(text);
    }
    /// plus(): a copy of `a` with a text or a character behind it.
    template<AddedText<IString, char, wchar_t> Text>
    friend IString operator+(const IString& a, const Text& b) {
        IString result(a);
        result.append(b);
        return result;
    }

    /// Adds a text at the front.
    IString& prepend(const IString& other);
    /// @copydoc prepend(const IString&)
    IString& prepend(const wchar_t* text);
    /// @copydoc prepend(const IString&)
    IString& prepend(wchar_t c);
    /// @copydoc prepend(const IString&)
    template<std::same_as<char> Char = char>
    IString& prepend(Char c) {
        return prepend(widened(c));
    }

    /// Adds a text before the character at `pos`.
    IString& insert(unsigned int pos, const IString& other);
    /// @copydoc insert(unsigned int, const IString&)
    IString& insert(unsigned int pos, const wchar_t* text);
    /// @copydoc insert(unsigned int, const IString&)
    IString& insert(unsigned int pos, wchar_t c);
    /// @copydoc insert(unsigned int, const IString&)
    template<std::same_as<char> Char = char>
    IString& insert(unsigned int pos, Char c) {
        return insert(pos, widened(c));
    }

    /// Removes up to `n` characters. On an empty string any position is accepted, and nothing
    /// happens.
    IString& erase(unsigned int pos = 0, unsigned int n = npos);
    /// The same as erase().
    IString& remove(unsigned int pos = 0, unsigned int n = npos);
    /// Makes the string empty.
    // NOLINTNEXTLINE(bugprone-exception-escape): only a position behind the end throws
    void clear() noexcept {
        if (!isEmpty())
            erase();
    }

    /// Replaces up to `n` characters by the text.
    IString& replace(unsigned int pos, unsigned int n, const IString& other);
    /// @copydoc replace(unsigned int, unsigned int, const IString&)
    IString& replace(unsigned int pos, unsigned int n, const wchar_t* text);
    /// @copydoc replace(unsigned int, unsigned int, const IString&)
    IString& replace(unsigned int pos, unsigned int n, wchar_t c);
    /// @copydoc replace(unsigned int, unsigned int, const IString&)
    template<std::same_as<char> Char = char>
    IString& replace(unsigned int pos, unsigned int n, Char c) {
        return replace(pos, n, widened(c));
    }
    /// Replaces every occurrence of `from`, in one pass; what was put in is not searched again. An
    /// empty `from` is never found.
    IString& replace(const IString& from, const IString& to);
    /// Replaces the first occurrence of `from`, if there is one.
    IString& replaceFirst(const IString& from, const IString& to);
    /// @}

    /// The text, terminated, valid until the next change.
    const wchar_t* asWChar() const;
    /// The number of bytes (not characters) behind asWChar(), with the terminator.
    unsigned int asWCharStoreSize() const;
    /// The text in the given encoding. Passing an `ok` converts again unless the outcome of the
    /// last conversion is known.
    const char* asMultibyte(Encoding encoding = EncodingMultibyte, bool* ok = nullptr) const;
    /// The number of bytes behind asMultibyte(), with the terminator.
    unsigned int asMultibyteStoreSize(Encoding encoding = EncodingMultibyte) const;
    /// asMultibyte() in UTF-8.
    const char* asUTF8(bool* ok = nullptr) const;
    /// The number of bytes behind asUTF8(), with the terminator.
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

    /// @{
    /// The character at `pos`. No bounds check; the position of the terminator may be read. Writing
    /// does not renew a narrow form that was requested before.
    wchar_t at(unsigned int pos) const;
    wchar_t& at(unsigned int pos);
    wchar_t operator[](unsigned int pos) const;
    wchar_t& operator[](unsigned int pos);
    /// @}
    /// @{
    /// The characters as a contiguous range. Iterators are pointers, valid until the next change;
    /// writing through them does not renew a narrow form that was requested before.
    wchar_t* begin() { return &at(0); }
    wchar_t* end() { return begin() + length(); }
    const wchar_t* begin() const { return asWChar(); }
    const wchar_t* end() const { return asWChar() + length(); }
    /// @}
    /// The characters as a `std::wstring_view`, valid until the next change.
    template<StandardView<wchar_t> View>
    operator View() const {
        return View(asWChar(), length());
    }

    /// Order by code points, a shorter string before its continuation: negative, 0 or positive.
    int compare(const IString& other) const;
    /// Order in the locale (`wcscoll`), up to the first terminator.
    int collate(const IString& other) const;
    /// compare() of copies in lower case.
    int compareNoCase(const IString& other) const;
    /// collate() of copies in lower case.
    int collateNoCase(const IString& other) const;

    /// @name Searching
    /// A `char` is converted as in append().
    /// @{

    /// The first occurrence at or after `start`, or npos. An empty text is never found.
    unsigned int find(const IString& other, unsigned int start = 0) const;
    /// @copydoc find(const IString&, unsigned int) const
    unsigned int find(const wchar_t* text, unsigned int start = 0) const;
    /// @copydoc find(const IString&, unsigned int) const
    unsigned int find(wchar_t c, unsigned int start = 0) const;
    /// @copydoc find(const IString&, unsigned int) const
    template<std::same_as<char> Char = char>
    unsigned int find(Char c, unsigned int start = 0) const {
        return find(widened(c), start);
    }
    /// The first character at or after `start` for which `predicate` holds, or npos.
    unsigned int find(bool (*predicate)(wchar_t), unsigned int start = 0) const;

    /// The last occurrence that begins at or before `start`, or npos.
    unsigned int rfind(const IString& other, unsigned int start = npos) const;
    /// @copydoc rfind(const IString&, unsigned int) const
    unsigned int rfind(const wchar_t* text, unsigned int start = npos) const;
    /// @copydoc rfind(const IString&, unsigned int) const
    unsigned int rfind(wchar_t c, unsigned int start = npos) const;
    /// @copydoc rfind(const IString&, unsigned int) const
    template<std::same_as<char> Char = char>
    unsigned int rfind(Char c, unsigned int start = npos) const {
        return rfind(widened(c), start);
    }
    /// The last character at or before `start` for which `predicate` holds, or npos. A `start` of
    /// length() examines the terminator too, and one above 0x7FFFFFFF other than npos finds
    /// nothing.
    unsigned int rfind(bool (*predicate)(wchar_t), unsigned int start = npos) const;

    /// The first character at or after `start` that is one of `set`, or npos.
    unsigned int findAny(const IString& set, unsigned int start = 0) const;
    /// The last character at or before `start` that is one of `set`, or npos.
    unsigned int rfindAny(const IString& set, unsigned int start = npos) const;
    /// @}

    /// @name Trimming
    /// A `char` is converted as in append().
    /// @{

    /// Removes every `c` from the front.
    IString& strip(wchar_t c);
    /// @copydoc strip(wchar_t)
    template<std::same_as<char> Char = char>
    IString& strip(Char c) {
        return strip(widened(c));
    }
    /// Removes what isSpace() holds for from the front.
    IString& stripSpaces();
    /// Removes every `c` from the back.
    IString& rstrip(wchar_t c);
    /// @copydoc rstrip(wchar_t)
    template<std::same_as<char> Char = char>
    IString& rstrip(Char c) {
        return rstrip(widened(c));
    }
    /// Removes what isSpace() holds for from the back.
    IString& rstripSpaces();
    /// @}

    /// @{
    /// Changes the case character by character, as the locale has it.
    IString& toLowerCase();
    IString& toUpperCase();
    /// @}

    /// @{
    /// Replaces the content by a formatted text and returns its length. A format that fails (a
    /// `%s` argument or a `%c` byte that the locale cannot convert), or that produces no text at
    /// all, gives npos and keeps the content. `%s` takes a `const char*` in the locale's encoding
    /// (asMultibyte(), not asUTF8()), `%S` a `const wchar_t*`, in narrow and wide formats alike.
    /// The arguments may point into this string. `initialSize`, in characters, is a hint at the
    /// size of the result. A narrow form that was requested before is not renewed. Compilers check
    /// the arguments of literal narrow formats if ZEBASE_CHECK_FORMATS is defined.
    unsigned int format(const wchar_t* fmt, ...);
    unsigned int vformat(const wchar_t* fmt, va_list arguments);
    unsigned int format(const IString* fmt, ...);
    unsigned int format(unsigned int initialSize, const wchar_t* fmt, ...);
    unsigned int format(unsigned int initialSize, const IString* fmt, ...);
    unsigned int format(const char* fmt, ...) ZEBASE_FORMAT(2, 3);
    unsigned int vformat(const char* fmt, va_list arguments) ZEBASE_FORMAT(2, 0);
    unsigned int format(unsigned int initialSize, const char* fmt, ...) ZEBASE_FORMAT(3, 4);
    /// @}

    /// A copy of up to `n` characters. It ends at the first embedded terminator.
    IString substr(unsigned int pos, unsigned int n = npos) const;
    /// The same into `out`, which may be this string. Returns `out`.
    IString& substr(IString& out, unsigned int pos, unsigned int n = npos) const;
    /// Exchanges the contents; what this string receives ends at its first embedded terminator.
    void swap(IString& other);
    /// Whether every character is ASCII.
    bool isAscii() const;

    /// Equality by compare().
    friend bool operator==(const IString& a, const IString& b) { return a.compare(b) == 0; }
    /// Order by compare().
    friend std::strong_ordering operator<=>(const IString& a, const IString& b) {
        return a.compare(b) <=> 0;
    }
    /// @{
    /// The same with a standard string or view, or a pointer. Allocates nothing.
    template<ComparedText<wchar_t> Text>
    friend bool operator==(const IString& a, const Text& b) {
        return a.order(b) == 0;
    }
    template<ComparedText<wchar_t> Text>
    friend std::strong_ordering operator<=>(const IString& a, const Text& b) {
        return a.order(b) <=> 0;
    }
    /// @}

    /// Writes asUTF8() to a `std::ostream`.
    template<class Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                                        const IString& text) {
        const unsigned int size = text.asUTF8StoreSize();
        return writeText(stream, text.asUTF8(), size - 1);
    }

private:
    friend struct std::hash<IString>;

    IString& replaceText(unsigned int pos, unsigned int n, const wchar_t* text, size_t length);
    void convertFromBytes(const char* bytes, size_t length, Encoding encoding, bool* ok);
    size_t hash() const noexcept;
    int compareText(const wchar_t* text, size_t length) const;
    int order(const wchar_t* text) const;
    template<StandardText<wchar_t> Text>
    int order(const Text& text) const {
        return compareText(text.data(), text.size());
    }
    static wchar_t widened(char c); ///< What IString(c) holds; 0 for 0.
    ZEBASE_HIDDEN void convertFromMultibyte(const char* src, Encoding encoding, bool* ok);
    ZEBASE_HIDDEN void convertToMultibyte(Encoding encoding, bool* ok) const;

    IStringImpl* impl_; ///< Owned, never null.
};

/// A copy of `a` with `b` appended.
ZEBASE_API IString plus(const IString& a, const IString& b);
/// Appends `b` to `a`.
ZEBASE_API IString& plusEqual(IString& a, const IString& b);

/// @{
/// The comparison of that name by compare().
ZEBASE_API bool equal(const IString& a, const IString& b);
ZEBASE_API bool notEqual(const IString& a, const IString& b);
ZEBASE_API bool less(const IString& a, const IString& b);
ZEBASE_API bool greater(const IString& a, const IString& b);
ZEBASE_API bool lessEqual(const IString& a, const IString& b);
ZEBASE_API bool greaterEqual(const IString& a, const IString& b);
/// @}

/// a.swap(b).
ZEBASE_API void swap(IString& a, IString& b);

} // namespace zeString

namespace std {

/// That of a `std::wstring_view` of the same characters.
template<>
struct hash<zeString::IString> {
    /// The hash.
    size_t operator()(const zeString::IString& text) const noexcept { return text.hash(); }
};

} // namespace std
