// SPDX-License-Identifier: MIT

/// @file
/// The strings that the writer of a compressed section knows.

#pragma once

#include <cstdint>

/// Codes of strings, each found by the code of the string without its last byte and by that byte.
///
/// The format comes from one particular table: open addressing with 69001 slots, whose search has a
/// quirk (see findInSlots()). But as long as that quirk cannot show, which is nearly always, any
/// table gives the same codes, and a quicker one stands in: strings of two bytes are found
/// directly, longer ones in a table that is at most half full. Where the quirk may show, or too
/// many strings fall together, the slots of the true table are worked out from the order in which
/// the strings came, and serve until the next clear().
class ioCompressTableImpl {
public:
    ioCompressTableImpl() { clear(); }

    /// Forgets all strings.
    void clear();

    /// The code of string `code` with `byte` behind it, or 0.
    unsigned find(unsigned code, unsigned byte) {
        if (slotsInUse_) [[unlikely]]
            return findInSlots(code, byte);
        if (code < 256) {
            place_ = code << 8 | byte;
            return pairs_[place_];
        }
        const std::uint32_t tag = tagOf(code, byte);
        const std::uint32_t first = firstPlace(code, byte);
        place_ = first;
        while (const std::uint32_t entry = longer_[place_]) {
            if (entry >> 16 == tag && isNear(first))
                return entry & 0xFFFF;
            place_ = (place_ + 1) % longerSize;
        }
        return 0;
    }

    /// Adds the string that find() has just not found, with the next code.
    void add(unsigned code, unsigned byte, unsigned newCode) {
        keys_[newCode] = keyOf(code, byte);
        const auto stored = static_cast<std::uint16_t>(newCode);
        if (slotsInUse_) [[unlikely]]
            slots_[place_] = stored;
        else if (needsSlots(code, byte)) [[unlikely]]
            useSlots(newCode);
        else if (code < 256)
            pairs_[place_] = stored;
        else
            longer_[place_] = tagOf(code, byte) << 16 | stored;
    }

private:
    static constexpr unsigned slotCount = 69001;
    static constexpr std::uint32_t longerSize = 1 << 17;

    static std::uint32_t keyOf(unsigned code, unsigned byte) { return byte << 16 | code; }
    static unsigned firstSlot(unsigned code, unsigned byte) { return byte << 8 ^ code; }

    static std::uint32_t mixed(unsigned code) { return code * 0x9E3B; }
    static std::uint32_t tagOf(unsigned code, unsigned byte) {
        return byte << 8 | (mixed(code) & 0xFF);
    }
    static std::uint32_t firstPlace(unsigned code, unsigned byte) {
        return (mixed(code) ^ byte * 0x9E3779B1 >> 15) % longerSize;
    }

    /// Two strings with the same tag have first places that differ by a multiple of 256. So an
    /// entry with the right tag is the right one if every entry is less than 256 places from its
    /// first.
    bool isNear(std::uint32_t first) const { return (place_ - first) % longerSize < 256; }

    bool needsSlots(unsigned code, unsigned byte) {
        return (firstSlot(code, byte) == 0 && quirkMayShow(code)) ||
               (code > 255 && !isNear(firstPlace(code, byte)));
    }

    bool quirkMayShow(unsigned code);
    void useSlots(unsigned lastCode);
    unsigned findInSlots(unsigned code, unsigned byte);

    unsigned place_ = 0; ///< Where find() ended.
    bool slotsInUse_ = false;
    bool slotZeroTaken_ = false;
    std::uint32_t keys_[1 << 16]; ///< Of each code.
    std::uint16_t pairs_[1 << 16];
    std::uint32_t longer_[longerSize]; ///< Tag and code.
    std::uint16_t slots_[slotCount];   ///< Codes.
};
