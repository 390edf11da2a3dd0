// SPDX-License-Identifier: MIT

/// @file
/// An array that grows without moving its elements: zeVectorOfChunks.
///
/// Threads: an array belongs to one thread at a time; find() and nextTouched() may overlap.
///
/// @code
/// zeVectorOfChunks<int, 4000> numbers; // 1000 elements a chunk
/// numbers.grow(1000000);
/// int& last = numbers[999999];
/// numbers.grow(2000000);
/// last = 7; // still the element
/// assert(numbers[999999] == 7 && numbers.find(0) == nullptr);
/// @endcode

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

/// An array of `T` in chunks of `N` bytes, which takes memory only where it is touched. A chunk is
/// allocated (by malloc) when one of its elements is first accessed by operator[], with all
/// elements constructed by `T()`; an element that was never accessed counts as such. Chunks never
/// move, and are freed at destruction only. Access is a division by a constant and two indexings.
///
/// Throws std::bad_alloc when memory runs out, with the array unchanged.
template<class T, std::size_t N>
class zeVectorOfChunks {
public:
    /// The elements that one allocation holds.
    static constexpr std::size_t elementsPerChunk = N / sizeof(T);
    static_assert(elementsPerChunk > 0, "A chunk holds at least one element");
    static_assert(alignof(T) <= alignof(std::max_align_t), "Chunks are aligned as malloc does it");

    /// An empty array, which allocates nothing.
    zeVectorOfChunks() = default;
    zeVectorOfChunks(const zeVectorOfChunks&) = delete; ///< Addresses of elements are kept.
    zeVectorOfChunks& operator=(const zeVectorOfChunks&) = delete;
    ~zeVectorOfChunks() {
        for (T* chunk : chunks_)
            if (chunk)
                destroy(chunk, elementsPerChunk);
    }

    /// Valid indices are below it.
    std::size_t size() const { return size_; }

    /// The size that needs no further chunk.
    std::size_t capacity() const { return chunks_.size() * elementsPerChunk; }

    /// Raises the size; a lower one changes nothing. A size that no memory can hold throws
    /// std::bad_alloc.
    void grow(std::size_t size) {
        if (size <= size_)
            return;
        if (size > PTRDIFF_MAX / sizeof(T))
            throw std::bad_alloc();
        if (size > capacity())
            chunks_.resize((size + elementsPerChunk - 1) / elementsPerChunk);
        size_ = size;
    }

    /// The element at `index`, which is below size().
    T& operator[](std::size_t index) {
        T*& chunk = chunks_[index / elementsPerChunk];
        if (!chunk)
            chunk = newChunk();
        return chunk[index % elementsPerChunk];
    }

    /// The element at `index`, which is below size(), or null if its chunk does not exist yet.
    T* find(std::size_t index) const {
        T* const chunk = chunks_[index / elementsPerChunk];
        return chunk ? chunk + index % elementsPerChunk : nullptr;
    }

    /// The lowest index from `index` on whose chunk exists; at or beyond size() if there is none.
    std::size_t nextTouched(std::size_t index) const {
        while (index < size_ && !chunks_[index / elementsPerChunk])
            index += elementsPerChunk - index % elementsPerChunk;
        return index;
    }

private:
    static T* newChunk() {
        auto* chunk = static_cast<T*>(std::malloc(elementsPerChunk * sizeof(T)));
        if (!chunk)
            throw std::bad_alloc();
        std::size_t made = 0;
        try {
            for (; made < elementsPerChunk; ++made)
                ::new (static_cast<void*>(chunk + made)) T();
        } catch (...) {
            destroy(chunk, made);
            throw;
        }
        return chunk;
    }

    static void destroy(T* chunk, std::size_t made) {
        while (made > 0)
            chunk[--made].~T();
        std::free(chunk);
    }

    std::vector<T*> chunks_; ///< Null where nothing was touched yet.
    std::size_t size_ = 0;
};
