// SPDX-License-Identifier: MIT

/// @file
/// Sets of bits: zeUtil::BitField has a fixed number of bits and counts those that are set;
/// zeUtil::BitFieldAuto grows by itself.
///
/// Both are values that keep their bits in 32-bit words, bit `i` in word `i` / 32. Memory that ran
/// out is reported as std::bad_alloc, and leaves the set unchanged.
///
/// Threads: as for any plain value, different objects may be used by different threads at once.
///
/// @code
/// zeUtil::BitField seen(100);
/// seen.setBit(7, true);
/// assert(seen.testBit(7) && seen.numSet() == 1 && (~seen).numSet() == 99);
///
/// zeUtil::BitFieldAuto flags;
/// flags.setBit(40, true);
/// assert(flags.testBit(40) && !flags.testBit(1000) && flags.maxAvailableBits() == 64);
/// @endcode

#pragma once

#include <vector>

#include "Base/zeBaseExport.h"

namespace zeUtil {

/// Where a bit lies.
struct BitPlace {
    /// The place of bit `i`, which is not negative.
    explicit constexpr BitPlace(int i)
        : word(static_cast<unsigned int>(i) / 32),
          mask(1u << (static_cast<unsigned int>(i) % 32)) {}

    unsigned int word; ///< The index of its word.
    unsigned int mask; ///< The bit in this word.
};

/// A fixed number of bits. Spare bits of the last word take part in the operators, but neither in
/// comparison nor in a fresh count.
class ZEBASE_API BitField {
public:
    /// No bits.
    BitField() = default;

    /// As resizeAndReset().
    explicit BitField(int n);

    /// Makes it `n` bits, all 0. A negative `n` does nothing. The memory never shrinks.
    void resizeAndReset(int n);

    /// The number of bits.
    int numBits() const { return numBits_; }

    /// The number of bits that are set, kept up to date.
    int numSet() const { return numSet_; }

    /// Bit `i`, at least 0 and less than numBits(), which is not checked.
    bool testBit(int i) const {
        const BitPlace bit(i);
        return (words_[bit.word] & bit.mask) != 0;
    }

    /// Sets bit `i`, at least 0 and less than numBits(), which is not checked, to `v`.
    void setBit(int i, bool v) {
        if (testBit(i) == v)
            return;
        const BitPlace bit(i);
        words_[bit.word] ^= bit.mask;
        numSet_ += v ? 1 : -1;
    }

    /// Clears all bits.
    void resetAll();

    /// Sets all bits.
    void setAll();

    /// Counts the set bits anew.
    void recountSetBits();

    /// Whether both have the same number of bits, and the same bits.
    bool operator==(const BitField& other) const;

    /// @name Operators
    /// @{

    /// Word by word, over the words of the left side; words that the right side lacks count as 0.
    BitField& operator^=(const BitField& other);
    BitField& operator&=(const BitField& other);
    BitField& operator|=(const BitField& other);
    BitField operator^(const BitField& other) const { return BitField(*this) ^= other; }
    BitField operator&(const BitField& other) const { return BitField(*this) &= other; }
    BitField operator|(const BitField& other) const { return BitField(*this) |= other; }

    /// @}

    /// Every bit inverted.
    BitField operator~() const;

private:
    template<class Operation>
    ZEBASE_HIDDEN BitField& combine(const BitField& other, Operation operation);

    std::vector<unsigned int> words_; ///< At least numBits() / 32 + 1, none before the first size.
    int numBits_ = 0;
    int numSet_ = 0;
};

/// Any number of bits, those beyond the words that there are being 0.
class ZEBASE_API BitFieldAuto {
public:
    /// Bit `i`; 0 where there is no such bit.
    bool testBit(int i) const {
        const BitPlace bit(i);
        return i >= 0 && bit.word < words_.size() && (words_[bit.word] & bit.mask) != 0;
    }

    /// Sets bit `i` to `v`. A negative `i` does nothing. Only setting a bit to 1 makes room for it.
    void setBit(int i, bool v);

    /// Makes room for the bits from 0 to `n`. A negative `n` does nothing.
    void reserveSize(int n);

    /// Clears all bits, and keeps the room.
    void resetAll();

    /// Whether any bit is set.
    bool anySet() const;

    /// Whether every bit of `other` is set here. False if `other` has room for more bits, even if
    /// none of these is set.
    bool testBits(const BitFieldAuto& other) const;

    /// The number of bits that there is room for.
    int maxAvailableBits() const { return static_cast<int>(words_.size() * 32); }

    /// Whether the same bits are set, whatever the room.
    bool operator==(const BitFieldAuto& other) const;

    /// @name Operators
    /// @{

    /// Bit by bit. The left side gets at least the room of the right side, except by `&`.
    BitFieldAuto& operator^=(const BitFieldAuto& other);
    BitFieldAuto& operator&=(const BitFieldAuto& other);
    BitFieldAuto& operator|=(const BitFieldAuto& other);
    BitFieldAuto operator^(const BitFieldAuto& other) const { return BitFieldAuto(*this) ^= other; }
    BitFieldAuto operator&(const BitFieldAuto& other) const { return BitFieldAuto(*this) &= other; }
    BitFieldAuto operator|(const BitFieldAuto& other) const { return BitFieldAuto(*this) |= other; }

    /// @}

private:
    std::vector<unsigned int> words_;
};

} // namespace zeUtil
