// SPDX-License-Identifier: MIT

/// @file
/// A 128-bit identifier that is unique on a machine, made without any outside library.
///
/// It consists of thread, process, time in seconds and a counter. It is not random, so do not use
/// it as a secret, and it follows no published version of a universally unique identifier.
///
/// Threads: generate() may run on several threads at once; one object belongs to one thread at a
/// time.
///
/// @code
/// #include "Base/Strings/zeStringCString.h"
/// zeOS::Uuid id;
/// assert(!id.valid());
/// id.generate();
/// assert(zeOS::Uuid(id.asString()).compare(id) == 0);
/// assert(zeOS::Uuid("00000001-0002-0003-0004-000500000006").valid());
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeString {
class CString;
}

namespace zeOS {

/// Four words of 32 bits; not valid while all of them are 0.
class ZEBASE_API Uuid {
public:
    /// All words 0.
    Uuid() = default;

    /// Copies four words.
    explicit Uuid(const unsigned int* words);

    /// Reads sixteen bytes, the highest byte of each word first.
    explicit Uuid(const unsigned char* bytes);

    /// Reads the form that asString() writes, in digits of either case. All words are 0 if `text`
    /// has any other form.
    explicit Uuid(const zeString::CString& text);

    /// Sets an identifier that no other call on this machine has given in this second. Returns
    /// true.
    bool generate();

    /// Whether any word is not 0.
    bool valid() const;

    /// Copies the four words to `words`.
    void get(unsigned int* words) const;

    /// Writes sixteen bytes, the highest byte of each word first.
    void get(unsigned char* bytes) const;

    /// Orders identifiers: the result of `memcmp` on the words in memory, which is not their
    /// numerical order.
    int compare(const Uuid& other) const;

    /// Sets all words to 0.
    void reset();

    /// Copies four words, if this identifier is not valid() yet. Otherwise changes nothing and
    /// returns false.
    bool set(const unsigned int* words);

    /// 36 characters: groups of 8, 4, 4, 4 and 12 upper-case hexadecimal digits, joined by "-".
    zeString::CString asString() const;

private:
    unsigned int words_[4] = {};
};

} // namespace zeOS
