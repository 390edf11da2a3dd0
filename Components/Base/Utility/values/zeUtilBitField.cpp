// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilBitField.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <functional>

namespace zeUtil {

namespace {

using Words = std::vector<unsigned int>;

/// A word, where those behind the last one are 0.
unsigned int wordAt(const Words& words, std::size_t i) {
    return i < words.size() ? words[i] : 0;
}

/// Combines each word of `words` with that of `other`.
template<class Operation>
void combineWords(Words& words, const Words& other, Operation operation) {
    for (std::size_t i = 0; i < words.size(); ++i)
        words[i] = operation(words[i], wordAt(other, i));
}

bool isZero(unsigned int word) {
    return word == 0;
}

/// The bits in use of the last word, which for a multiple of 32 is a word without any.
unsigned int lastMask(int numBits) {
    return BitPlace(numBits).mask - 1;
}

} // namespace

BitField::BitField(int n) {
    resizeAndReset(n);
}

void BitField::resizeAndReset(int n) {
    if (n < 0)
        return;
    const std::size_t needed = BitPlace(n).word + std::size_t{1};
    if (words_.size() < needed)
        words_.resize(needed);
    numBits_ = n;
    resetAll();
}

void BitField::resetAll() {
    std::fill(words_.begin(), words_.end(), 0);
    numSet_ = 0;
}

void BitField::setAll() {
    std::fill(words_.begin(), words_.end(), ~0u);
    numSet_ = numBits_;
}

void BitField::recountSetBits() {
    const std::size_t whole = BitPlace(numBits_).word;
    numSet_ = std::popcount(wordAt(words_, whole) & lastMask(numBits_));
    for (std::size_t i = 0; i < whole; ++i)
        numSet_ += std::popcount(words_[i]);
}

bool BitField::operator==(const BitField& other) const {
    if (numBits_ != other.numBits_)
        return false;
    const std::size_t whole = BitPlace(numBits_).word;
    const auto length = static_cast<std::ptrdiff_t>(whole);
    return std::equal(words_.begin(), words_.begin() + length, other.words_.begin()) &&
           isZero((wordAt(words_, whole) ^ wordAt(other.words_, whole)) & lastMask(numBits_));
}

template<class Operation>
BitField& BitField::combine(const BitField& other, Operation operation) {
    combineWords(words_, other.words_, operation);
    recountSetBits();
    return *this;
}

BitField& BitField::operator^=(const BitField& other) {
    return combine(other, std::bit_xor<>());
}

BitField& BitField::operator&=(const BitField& other) {
    return combine(other, std::bit_and<>());
}

BitField& BitField::operator|=(const BitField& other) {
    return combine(other, std::bit_or<>());
}

BitField BitField::operator~() const {
    BitField result(numBits_);
    combineWords(result.words_, words_, [](unsigned int, unsigned int word) { return ~word; });
    result.numSet_ = numBits_ - numSet_;
    return result;
}

void BitFieldAuto::setBit(int i, bool v) {
    if (v)
        reserveSize(i);
    const BitPlace bit(i);
    if (i < 0 || bit.word >= words_.size())
        return;
    if (v)
        words_[bit.word] |= bit.mask;
    else
        words_[bit.word] &= ~bit.mask;
}

void BitFieldAuto::reserveSize(int n) {
    const std::size_t last = BitPlace(n).word;
    if (n >= 0 && last >= words_.size())
        words_.resize(last + 1);
}

void BitFieldAuto::resetAll() {
    std::fill(words_.begin(), words_.end(), 0);
}

bool BitFieldAuto::anySet() const {
    return !std::all_of(words_.begin(), words_.end(), isZero);
}

bool BitFieldAuto::testBits(const BitFieldAuto& other) const {
    if (other.words_.size() > words_.size())
        return false;
    for (std::size_t i = 0; i < other.words_.size(); ++i) {
        if (other.words_[i] & ~words_[i])
            return false;
    }
    return true;
}

bool BitFieldAuto::operator==(const BitFieldAuto& other) const {
    const Words& longer = words_.size() < other.words_.size() ? other.words_ : words_;
    for (std::size_t i = 0; i < longer.size(); ++i) {
        if (wordAt(words_, i) != wordAt(other.words_, i))
            return false;
    }
    return true;
}

BitFieldAuto& BitFieldAuto::operator^=(const BitFieldAuto& other) {
    words_.resize(std::max(words_.size(), other.words_.size()));
    combineWords(words_, other.words_, std::bit_xor<>());
    return *this;
}

BitFieldAuto& BitFieldAuto::operator&=(const BitFieldAuto& other) {
    combineWords(words_, other.words_, std::bit_and<>());
    return *this;
}

BitFieldAuto& BitFieldAuto::operator|=(const BitFieldAuto& other) {
    words_.resize(std::max(words_.size(), other.words_.size()));
    combineWords(words_, other.words_, std::bit_or<>());
    return *this;
}

} // namespace zeUtil
