// SPDX-License-Identifier: MIT

/// @file
/// What the byte string and the wide string have in common.
///
/// Lengths, positions and counts are `unsigned int` throughout; String::npos means "not found" as a
/// result, and "up to the end" as a count. A string longer than its maxSize() is not supported.
///
/// Threads: distinct objects may be used by different threads at once; one object belongs to one
/// thread at a time.
///
/// @code
/// #include "Base/Strings/zeStringCString.h"
/// zeString::CString name("scene");
/// const zeString::String& text = name;
/// assert(text.length() == 5 && text.last() == 4);
/// assert(text.doBoundsCheck(4) && !text.doBoundsCheck(5));
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeString {

/// The abstract base of CString and IString. It holds no data.
class ZEBASE_API String {
public:
    /// "Not found" as a position, "up to the end" as a count.
    static constexpr unsigned int npos = 0xFFFFFFFF;

    virtual ~String();

    /// Whether length() is 0.
    virtual bool isEmpty() const;
    /// The same as isEmpty(): there is no null string apart from the empty one.
    virtual bool isNull() const;
    /// The number of characters.
    virtual unsigned int length() const;
    /// The position of the first character: always 0.
    virtual unsigned int first() const;
    /// The position of the last character; 0 in an empty string.
    virtual unsigned int last() const;
    /// The length that fits into the memory allocated so far.
    virtual unsigned int capacity() const;
    /// Makes room for at least `n` characters and returns the capacity.
    virtual unsigned int reserve(unsigned int n);
    /// The longest supported length.
    virtual unsigned int maxSize() const;

    /// Whether `pos` is the position of a character.
    bool doBoundsCheck(unsigned int pos) const;

    /// Whether `pos` is the position of a character and `n` is npos or at most length(). `n` is
    /// compared with the whole length, not with what follows `pos`.
    bool doBoundsCheck(unsigned int pos, unsigned int n) const;

protected:
    /// @{
    /// For derived classes only: a String alone holds nothing.
    String() = default;
    String(const String&) = default;
    String& operator=(const String&) = default;
    /// @}
};

} // namespace zeString
