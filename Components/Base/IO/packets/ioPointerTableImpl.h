// SPDX-License-Identifier: MIT

/// @file
/// From pointers to references: an open-addressing hash table from which nothing is ever taken.

#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

/// A table of pointers, none of them null, and their numbers.
///
/// A line of the processor's cache holds five entries, filled from the front. An entry lies in the
/// line that its hash names or, where that is full, in the next one with room. A search thus costs
/// one cache miss, seldom more, and its comparisons within a line need no branch. Objects made in a
/// row are mostly met in a row, so neighbours in memory are neighbours in the table.
class ioPointerTable {
public:
    /// The number of `key`, or null.
    const int* find(const void* key) const {
        if (lines_.empty())
            return nullptr;
        for (std::size_t at = home(key);; at = after(at)) {
            const Line& line = lines_[at];
            const int entry = line.indexOf(key);
            if (entry >= 0)
                return &line.numbers[entry];
            if (!line.full())
                return nullptr;
        }
    }

    /// The number of `key`, which is 0 if the key is new.
    int& operator[](const void* key) {
        if (count_ >= lines_.size() * averageEntries)
            grow();
        for (std::size_t at = home(key);; at = after(at)) {
            Line& line = lines_[at];
            const int entry = line.indexOf(key);
            if (entry >= 0)
                return line.numbers[entry];
            if (!line.full()) {
                ++count_;
                return line.append(key);
            }
        }
    }

private:
    /// Lines are this full on average when the table doubles.
    static constexpr std::size_t averageEntries = 4;

    struct alignas(64) Line {
        static constexpr int capacity = 5;

        int indexOf(const void* key) const {
            int found = -1;
            for (int i = 0; i < capacity; ++i)
                found = keys[i] == key ? i : found;
            return found;
        }

        bool full() const { return keys[capacity - 1] != nullptr; }

        int& append(const void* key) {
            int used = 0;
            for (const void* taken : keys)
                used += taken ? 1 : 0;
            keys[used] = key;
            return numbers[used];
        }

        const void* keys[capacity] = {};
        int numbers[capacity] = {};
    };
    static_assert(sizeof(Line) == 64);

    /// Regions of 2 KiB are scattered, by a multiplication that carries the bits in which they
    /// differ to the top; each covers 64 lines, in the order of its addresses.
    std::size_t home(const void* key) const {
        const auto address = reinterpret_cast<std::uintptr_t>(key);
        const std::size_t region = ((address >> 11) * 0x9E3779B97F4A7C15u) >> shift_;
        return (region + ((address >> 5) & 63)) & (lines_.size() - 1);
    }

    std::size_t after(std::size_t at) const { return (at + 1) & (lines_.size() - 1); }

    void grow() {
        const std::vector<Line> old = std::exchange(lines_, {});
        shift_ = old.empty() ? 61 : shift_ - 1;
        lines_.resize(std::size_t{1} << (64 - shift_));
        count_ = 0;
        for (const Line& line : old)
            for (int i = 0; i < Line::capacity && line.keys[i]; ++i)
                (*this)[line.keys[i]] = line.numbers[i];
    }

    std::vector<Line> lines_; ///< None, or a power of two.
    std::size_t count_ = 0;
    int shift_ = 64; ///< Leaves the hash's leading bits, as many as number the lines.
};
