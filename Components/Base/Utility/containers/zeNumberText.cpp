// SPDX-License-Identifier: MIT

#include "Base/Utility/zeNumberText.h"

#include <cassert>
#include <charconv>
#include <cstdlib>

namespace ze {

namespace {

constexpr int slotBytes = 28; // sign, 20 digits and the terminator fit

template<class Integer>
const char* toAscii(Integer value, int slot) {
    static char slots[3][slotBytes];
    assert(slot >= 0 && slot < 3);
    char* text = slots[slot];
    *std::to_chars(text, text + slotBytes - 1, value).ptr = 0;
    return text;
}

} // namespace

const char* int64ToAscii(std::int64_t value, int slot) {
    return toAscii(value, slot);
}

const char* uint64ToAscii(std::uint64_t value, int slot) {
    return toAscii(value, slot);
}

std::int64_t asciiToInt64(const char* text) {
    return std::strtol(text, nullptr, 10);
}

std::uint64_t asciiToUInt64(const char* text) {
    return std::strtoul(text, nullptr, 10);
}

} // namespace ze
