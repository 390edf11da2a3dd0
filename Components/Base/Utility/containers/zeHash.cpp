// SPDX-License-Identifier: MIT

#include "Base/Utility/zeHash.h"

#include <cstddef>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/containers/zeHashTablesImpl.h"

namespace ze {

namespace {

constexpr auto& s0 = hashTables[0];
constexpr auto& s1 = hashTables[1];
constexpr auto& s2 = hashTables[2];
constexpr auto& s3 = hashTables[3];

/// Each step of the hash takes the next unit and looks it up in one of four tables.
struct ByteUnits {
    static constexpr unsigned int stepsInCycle = 15;

    std::uint32_t u0() { return s0[*next++]; }
    std::uint32_t u1() { return s1[*next++]; }
    std::uint32_t u2() { return s2[*next++]; }
    std::uint32_t u3() { return s3[*next++]; }

    const unsigned char* next;
};

/// Words are not looked up themselves, but mixed with the tables by their index.
template<class Word>
struct WordUnits {
    static_assert(sizeof(Word) == 4);
    static constexpr unsigned int stepsInCycle = 16;

    std::uint32_t u0() { return mix(s0); }
    std::uint32_t u1() { return mix(s1); }
    std::uint32_t u2() { return mix(s2); }
    std::uint32_t u3() { return mix(s3); }

    std::uint32_t mix(const std::uint32_t (&table)[256]) {
        return static_cast<std::uint32_t>(*next++) ^ table[index++ & 255];
    }

    const Word* next;
    unsigned int index = 0;
};

/// The last `steps` steps of a cycle, from the hash so far to the new one. Entered in the middle of
/// a group, that group's `t` is 0.
template<class Units>
[[gnu::always_inline]] inline std::uint32_t lastSteps(Units& x, std::size_t steps,
                                                      std::uint32_t hash) {
    constexpr bool words = Units::stepsInCycle == 16; // the first group has a step more
    std::uint32_t t = 0;
    switch (steps) {
    case 16:
        t = x.u0();
        [[fallthrough]];
    case 15:
        t ^= x.u1();
        [[fallthrough]];
    case 14:
        t = words ? t - x.u2() : t ^ x.u2();
        [[fallthrough]];
    case 13:
        hash ^= t + x.u3();
        [[fallthrough]];
    case 12:
        t = x.u1();
        [[fallthrough]];
    case 11:
        t -= x.u2();
        [[fallthrough]];
    case 10:
        t += x.u3();
        [[fallthrough]];
    case 9:
        hash ^= t ^ x.u0();
        [[fallthrough]];
    case 8:
        t = x.u2();
        [[fallthrough]];
    case 7:
        t += x.u3();
        [[fallthrough]];
    case 6:
        t ^= x.u0();
        [[fallthrough]];
    case 5:
        hash ^= t - x.u1();
        [[fallthrough]];
    case 4:
        t = x.u3();
        [[fallthrough]];
    case 3:
        t ^= x.u0();
        [[fallthrough]];
    case 2:
        t -= x.u1();
        [[fallthrough]];
    case 1:
        hash ^= t + x.u2();
    }
    return hash;
}

/// Whole cycles, which the compiler unrolls, and then one that begins late enough to end with the
/// last unit.
template<class Units>
std::uint32_t hashUnits(Units units, std::ptrdiff_t length, std::uint32_t hash = 0) {
    if (length < 1)
        return hash;
    std::size_t rest = static_cast<std::size_t>(length);
    for (; rest >= Units::stepsInCycle; rest -= Units::stepsInCycle)
        hash = lastSteps(units, Units::stepsInCycle, hash);
    return lastSteps(units, rest, hash);
}

ByteUnits bytesAt(const void* bytes) {
    return {static_cast<const unsigned char*>(bytes)};
}

} // namespace

std::uint32_t hashfunction(const char* text) {
    std::uint32_t hash = 0;
    for (const char* next = text;; next += 4) {
        const auto byte = [next](int i) { return static_cast<unsigned char>(next[i]); };
        if (byte(0) == 0)
            return hash;
        std::uint32_t t = s0[byte(0)];
        if (byte(1) == 0)
            return hash ^ t;
        t += s1[byte(1)];
        if (byte(2) == 0)
            return hash ^ t;
        t -= s2[byte(2)];
        if (byte(3) == 0)
            return hash ^ t;
        hash ^= t ^ s3[byte(3)];
    }
}

std::uint32_t hashfunction(const unsigned char* bytes, int length) {
    return hashUnits(bytesAt(bytes), length);
}

std::uint32_t hashfunction(const char* first, const char* last) {
    return hashUnits(bytesAt(first), last - first);
}

std::uint32_t hashfunction(const unsigned int* words, int length) {
    return hashUnits(WordUnits<unsigned int>{words}, length);
}

std::uint32_t hashfunction(const wchar_t* words, int length) {
    return hashUnits(WordUnits<wchar_t>{words}, length);
}

void Hasher::flushBuffer() {
    hash_ = hashUnits(bytesAt(buffer_), std::ptrdiff_t{8} * count_, hash_);
    count_ = 0;
}

} // namespace ze

namespace zeString {

std::uint32_t hashfunction(const CString& text) {
    return ze::hashfunction(text.asChar(), text.asChar() + text.length());
}

std::uint32_t hashfunction(const IString& text) {
    return ze::hashfunction(text.asWChar(), static_cast<int>(text.length()));
}

} // namespace zeString
