// SPDX-License-Identifier: MIT

/// @file
/// From pointers to references: an open-addressing hash table from which nothing is ever taken.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

/// A table of pointers, none of them null, and their numbers.
///
/// A line of the processor's cache holds five entries, filled from the front. An entry lies in the
/// line that its hash names or, where that is full, in the next one with room. A search thus costs
/// one cache miss, seldom more, and its comparisons within a line need no branch. Objects made in a
/// row are mostly met in a row, so neighbours in memory are neighbours in the table. A new key is
/// mostly searched for before it is given a number: the search in vain notes where it belongs.
class ioPointerTable {
public:
    /// The number of `key`, or null.
    const int* find(const void* key) const {
        if (lineCount_ == 0)
            return nullptr;
        for (std::size_t at = home(key);; at = after(at)) {
            const Line& line = lines_[at];
            const int entry = line.indexOf(key);
            if (entry >= 0)
                return &line.numbers[entry];
            if (!line.full()) {
                missing_ = key;
                room_ = at;
                return nullptr;
            }
        }
    }

    /// The number of `key`, which is 0 if the key is new.
    int& operator[](const void* key) {
        if (key != missing_) {
            if (const int* const number = find(key))
                return const_cast<int&>(*number);
        }
        missing_ = nullptr; // its line may be filled now
        if (count_ >= lineCount_ * averageEntries) {
            grow();
            room_ = lineWithRoom(key);
        }
        ++count_;
        return lines_[room_].append(key);
    }

private:
    /// Lines are this full on average when the table grows.
    static constexpr std::size_t averageEntries = 4;

    struct alignas(64) Line {
        static constexpr int capacity = 5;

        int indexOf(const void* key) const {
            int found = -1;
            for (int i = 0; i < capacity; ++i)
                found = keys[i] == key ? i : found;
            return found;
        }

        bool full() const { return used == capacity; }

        int& append(const void* key) {
            keys[used] = key;
            return numbers[used++];
        }

        const void* keys[capacity];
        int numbers[capacity];
        int used;
    };
    static_assert(sizeof(Line) == 64);

    /// Regions of 2 KiB are scattered, by a multiplication that carries the bits in which they
    /// differ to the top; each covers 64 lines, in the order of its addresses.
    std::size_t home(const void* key) const {
        const auto address = reinterpret_cast<std::uintptr_t>(key);
        const std::size_t region = ((address >> 11) * 0x9E3779B97F4A7C15u) >> shift_;
        return (region + ((address >> 5) & 63)) & (lineCount_ - 1);
    }

    std::size_t after(std::size_t at) const { return (at + 1) & (lineCount_ - 1); }

    /// Fourfold up to 2 MiB, then twofold: fresh pages cost more than empty lines.
    void grow() {
        const std::size_t oldCount = lineCount_;
        const std::size_t newCount = oldCount == 0 ? 8 : oldCount * (oldCount < 32768 ? 4 : 2);
        // By calloc, for which fresh pages need not be cleared again; a line more, for alignment.
        std::size_t bytes = (newCount + 1) * sizeof(Line);
        std::unique_ptr<void, Free> memory(std::calloc(bytes, 1));
        if (!memory)
            throw std::bad_alloc();
        void* start = memory.get();
        std::align(alignof(Line), newCount * sizeof(Line), start, bytes);
        const Line* const oldLines = std::exchange(lines_, static_cast<Line*>(start));
        memory_.swap(memory); // the old lines stay until the end
        lineCount_ = newCount;
        shift_ = 64 - std::countr_zero(newCount);
        for (const Line* line = oldLines; line != oldLines + oldCount; ++line) {
            for (int i = 0; i < line->used; ++i)
                lines_[lineWithRoom(line->keys[i])].append(line->keys[i]) = line->numbers[i];
        }
    }

    /// Where a key belongs that is not there.
    std::size_t lineWithRoom(const void* key) const {
        std::size_t at = home(key);
        while (lines_[at].full())
            at = after(at);
        return at;
    }

    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };

    std::unique_ptr<void, Free> memory_;    ///< Of the lines.
    Line* lines_ = nullptr;                 ///< All zeros where there is no entry.
    std::size_t lineCount_ = 0;             ///< None, or a power of two.
    std::size_t count_ = 0;                 ///< Of the keys.
    int shift_ = 64;                        ///< Leaves the hash's bits that number the lines.
    mutable const void* missing_ = nullptr; ///< The key last searched for in vain, if any,
    mutable std::size_t room_ = 0;          ///< and the line where it belongs.
};
