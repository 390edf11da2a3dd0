// SPDX-License-Identifier: MIT

/// @file
/// The strings that the writer of a compressed section has collected.

#pragma once

#include <emmintrin.h>

#include <bit>
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
/// full, longer strings. A string is known by its place there, and the place where the search for a
/// longer one begins follows from that place and a byte, not from what the table holds: a search
/// need not wait for the memory that the one before it reads.
///
/// Fallback: when the two zero bytes are added after another string took slot 0, the true table is
/// worked out from the order in which the strings came, and is used until the next clear(). The
/// same happens where too many longer strings fall together.
class ioCompressTableImpl {
public:
    ioCompressTableImpl() { clear(); }

    /// Forgets all strings.
    void clear();

    /// A string: its place in the quicker tables, if these are in use, and its code.
    struct Match {
        std::uint32_t place;
        std::uint32_t code;

        static Match ofByte(unsigned byte) { return {oneByte, byte}; }
    };

    /// What was matched so far, kept here from one block to the next.
    Match matched = {};

    /// Whether `match` with `byte` behind it is in the table; if so, `match` becomes that string.
    bool extend(Match& match, unsigned byte) {
        if (slotsInUse_) [[unlikely]]
            return extendInSlots(match, byte);
        if (match.place == oneByte) {
            const std::uint32_t pair = match.code << 8 | byte;
            if (pairs_[pair] == 0)
                return false;
            match = {twoBytes + pair, pairs_[pair]};
            return true;
        }
        const std::uint32_t tag = tagOf(match, byte);
        const std::uint32_t first = firstPlace(match, byte);
        // What is left of an entry with this tag is its code; of another, or of a free place, none.
        if (const std::uint32_t code = longer_[first] ^ tag << 16; isCode(code)) {
            match = {first, code};
            return true;
        }
        return extendBehind(match, first, tag);
    }

    /// Adds `match` with `byte` behind it, which extend() has just not found, with the next code.
    void add(Match match, unsigned byte, unsigned newCode) {
        keys_[newCode] = keyOf(match.code, byte);
        const auto stored = static_cast<std::uint16_t>(newCode);
        if (slotsInUse_) [[unlikely]]
            slots_[freePlace_] = stored;
        else if (needsSlots(match, byte)) [[unlikely]]
            useSlots(newCode);
        else if (match.place == oneByte)
            pairs_[match.code << 8 | byte] = stored;
        else
            longer_[freePlace_] = tagOf(match, byte) << 16 | stored;
        if (firstSlot(match.code, byte) == 0) [[unlikely]]
            slotZeroTaken_ = true;
    }

private:
    static constexpr unsigned slotCount = 69001;
    static constexpr std::uint32_t longerSize = 1 << 17; ///< Of the first places.
    static constexpr std::uint32_t nearby = 128; ///< Entries are less behind their first place.

    /// Places of longer strings are those in their table; those of strings of two bytes follow.
    static constexpr std::uint32_t twoBytes = longerSize + nearby;
    static constexpr std::uint32_t oneByte = 1 << 18; ///< Of every string of one byte.

    static std::uint32_t keyOf(unsigned code, unsigned byte) { return byte << 16 | code; }
    static unsigned firstSlot(unsigned code, unsigned byte) { return byte << 8 ^ code; }

    /// Its lowest 18 bits are different for all places below oneByte. The tag holds 8 of them and
    /// the byte; with the byte, the first place holds the others.
    static std::uint32_t mixed(Match match) { return match.place * 0x9E3B; }
    static std::uint32_t tagOf(Match match, unsigned byte) {
        return byte << 8 | (mixed(match) >> 10 & nearby) | (mixed(match) & (nearby - 1));
    }
    static std::uint32_t firstPlace(Match match, unsigned byte) {
        return (mixed(match) ^ byte * 0x9E3779B1 >> 15) % longerSize;
    }

    /// The rest of a search for a longer string. The first places of two strings with the same tag
    /// differ, and by a multiple of `nearby`. Every entry is less than that behind its first place.
    /// So one with the right tag, no farther behind the first place of the string, is the string's.
    bool extendBehind(Match& match, std::uint32_t first, std::uint32_t tag) {
        for (freePlace_ = first; isNear(freePlace_, first); freePlace_ += 4) {
            const unsigned ends = taggedOrFree(longer_ + freePlace_, tag);
            if (ends == 0)
                continue;
            freePlace_ += static_cast<std::uint32_t>(std::countr_zero(ends));
            const std::uint32_t entry = longer_[freePlace_];
            if (entry == 0)
                return false;
            match = {freePlace_, entry & 0xFFFF};
            return true;
        }
        return false;
    }

    /// Of four entries, a bit for each that has this tag or is free.
    static unsigned taggedOrFree(const std::uint32_t* entries, std::uint32_t tag) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries));
        const __m128i tags = _mm_set1_epi32(static_cast<int>(tag));
        const __m128i tagged = _mm_cmpeq_epi32(_mm_srli_epi32(four, 16), tags);
        const __m128i free = _mm_cmpeq_epi32(four, _mm_setzero_si128());
        return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_or_si128(tagged, free))));
    }

    static bool isCode(std::uint32_t number) { return number - 1 < 0xFFFF; }
    static bool isNear(std::uint32_t place, std::uint32_t first) { return place - first < nearby; }

    /// Whether the quicker tables cannot hold the string that is to be added: see the claim above.
    bool needsSlots(Match match, unsigned byte) const {
        return (keyOf(match.code, byte) == 0 && slotZeroTaken_) ||
               (match.place != oneByte && !isNear(freePlace_, firstPlace(match, byte)));
    }

    void useSlots(unsigned lastCode);
    bool extendInSlots(Match& match, unsigned byte);
    unsigned findInSlots(unsigned code, unsigned byte);

    std::uint32_t freePlace_ = 0; ///< Where the last search ended.
    bool slotsInUse_ = false;
    bool slotZeroTaken_ = false;  ///< In the true table.
    std::uint32_t keys_[1 << 16]; ///< Of each code.
    std::uint16_t pairs_[1 << 16];
    std::uint32_t longer_[longerSize + nearby]; ///< Tag and code.
    std::uint16_t slots_[slotCount];            ///< Codes.
};
