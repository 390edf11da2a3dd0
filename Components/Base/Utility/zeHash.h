// SPDX-License-Identifier: MIT

/// @file
/// 32-bit hash functions over texts, bytes and words.
///
/// The values are the same in every version and on every machine, so that they may be stored. They
/// are no protection against attacks: anyone who knows the function can make texts collide. The
/// text form and the byte form give different values for the same characters.
///
/// Threads: any thread may call the functions; a ze::Hasher belongs to one thread at a time.
///
/// @code
/// assert(ze::hashfunction("") == 0);
/// assert(ze::hashfunction("scene") == ze::hashfunction("scene"));
/// ze::Hasher hasher;
/// hasher.add(17);
/// hasher.add(4);
/// const unsigned char bytes[] = {17, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0};
/// assert(hasher.getHash() == ze::hashfunction(bytes, 16));
/// @endcode

#pragma once

#include <cstdint>

#include "Base/zeBaseExport.h"

namespace zeString {

class CString;
class IString;

/// The byte form over the content. Found for a string without naming a namespace.
ZEBASE_API std::uint32_t hashfunction(const CString& text);

/// The word form over the wide content.
ZEBASE_API std::uint32_t hashfunction(const IString& text);

} // namespace zeString

namespace ze {

/// The text form, up to the terminating zero.
ZEBASE_API std::uint32_t hashfunction(const char* text);

/// The byte form; 0 for a length below 1.
ZEBASE_API std::uint32_t hashfunction(const unsigned char* bytes, int length);

/// The byte form over [first, last).
ZEBASE_API std::uint32_t hashfunction(const char* first, const char* last);

/// @{
/// The word form; 0 for a length below 1, which counts words.
ZEBASE_API std::uint32_t hashfunction(const unsigned int* words, int length);
ZEBASE_API std::uint32_t hashfunction(const wchar_t* words, int length);
/// @}

using zeString::hashfunction;

/// Collects numbers, and hashes their bytes 128 at a time: the byte form, begun afresh for each 128
/// with the hash so far as its start.
class ZEBASE_API Hasher {
public:
    /// Nothing added yet; the hash of that is 0.
    Hasher() = default;

    /// Appends the 8 bytes of `value`, lowest first.
    void add(std::uint64_t value) {
        if (count_ == capacity)
            flushBuffer();
        buffer_[count_++] = value;
    }

    /// The hash of what was added so far. Flushes first, so that asking in between gives another
    /// result in the end than not asking, unless a multiple of 128 bytes was added.
    std::uint32_t getHash() {
        if (count_ > 0)
            flushBuffer();
        return hash_;
    }

    /// Hashes what is in the buffer, and empties it.
    void flushBuffer();

private:
    static constexpr int capacity = 16;

    int count_ = 0; // in units of 8 bytes
    std::uint64_t buffer_[capacity];
    std::uint32_t hash_ = 0;
};

} // namespace ze
