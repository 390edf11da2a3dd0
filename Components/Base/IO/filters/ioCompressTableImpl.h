// SPDX-License-Identifier: MIT

/// @file
/// The strings that the writer of a compressed section has collected.

#pragma once

#include <cstdint>

/// Codes of strings, each found by the code of the string without its last byte and by that byte.
///
/// The format is defined by one particular table, which findInSlots() searches: open addressing
/// with 69001 slots, and a quirk. Every probe but the first takes the slot of the string of two
/// zero bytes, whose key is 0, for a free one. A new string then overwrites it (or, in a full
/// table, a string behind it is not found), and the stream that follows from that is the format.
///
/// Claim: while the string of two zero bytes is in slot 0, where its search begins, or is not in
/// the table, the quirk has no effect, and any table gives the same codes.
///
/// Proof: a search that begins in slot 0 meets it with its first probe only. One that begins in
/// slot i goes on to 2i, 3i, ... modulo 69001. Since that is a prime number, slot 0 comes after all
/// the others, of which at least 3,000 are free, and a free slot ends the search. So no later probe
/// meets slot 0, and the first string whose search begins there is the one that takes it.
///
/// Use: two quicker tables stand in. One finds strings of two bytes directly, and one, at most half
/// full, longer strings.
///
/// Fallback: when the two zero bytes are added after another string took slot 0, the true table is
/// worked out from the order in which the strings came, and is used until the next clear(). The
/// same happens where too many longer strings fall together.
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
        if (firstSlot(code, byte) == 0) [[unlikely]]
            slotZeroTaken_ = true;
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

    /// Whether the quicker tables cannot hold the string that is to be added: see the claim above.
    bool needsSlots(unsigned code, unsigned byte) const {
        return (keyOf(code, byte) == 0 && slotZeroTaken_) ||
               (code > 255 && !isNear(firstPlace(code, byte)));
    }

    void useSlots(unsigned lastCode);
    unsigned findInSlots(unsigned code, unsigned byte);

    unsigned place_ = 0; ///< Where find() ended.
    bool slotsInUse_ = false;
    bool slotZeroTaken_ = false;  ///< In the true table.
    std::uint32_t keys_[1 << 16]; ///< Of each code.
    std::uint16_t pairs_[1 << 16];
    std::uint32_t longer_[longerSize]; ///< Tag and code.
    std::uint16_t slots_[slotCount];   ///< Codes.
};
