// SPDX-License-Identifier: MIT

/// @file
/// An array that grows without moving its elements, and takes memory only where it is touched.
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
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

/// An array of `T` in chunks of `N` bytes. A chunk is allocated (by malloc) when one of its
/// elements is first asked for by operator[], with all elements constructed by `T()`; an element
/// that was never asked for counts as such. Chunks never move, and are freed at destruction only.
/// Access is a division by a constant and two indexings.
///
/// Throws std::bad_alloc when memory runs out. Cannot be copied, since addresses are the point.
template<class T, std::size_t N>
class zeVectorOfChunks {
public:
    /// The elements that one allocation holds.
    static constexpr std::size_t elementsPerChunk = N / sizeof(T);
    static_assert(elementsPerChunk > 0, "A chunk holds at least one element");
    static_assert(alignof(T) <= alignof(std::max_align_t), "Chunks are aligned as malloc does it");

    zeVectorOfChunks() = default;
    zeVectorOfChunks(const zeVectorOfChunks&) = delete;
    zeVectorOfChunks& operator=(const zeVectorOfChunks&) = delete;
    ~zeVectorOfChunks() {
        for (T* chunk : chunks_) {
            if (chunk)
                std::destroy_n(chunk, elementsPerChunk);
            std::free(chunk);
        }
    }

    /// Valid indices are below it.
    std::size_t size() const { return size_; }

    /// The size that needs no further chunk.
    std::size_t capacity() const { return chunks_.size() * elementsPerChunk; }

    /// Raises the size; a lower one changes nothing.
    void grow(std::size_t size) {
        if (size <= size_)
            return;
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
    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };

    static T* newChunk() {
        std::unique_ptr<void, Free> memory(std::malloc(elementsPerChunk * sizeof(T)));
        if (!memory)
            throw std::bad_alloc();
        std::uninitialized_value_construct_n(static_cast<T*>(memory.get()), elementsPerChunk);
        return static_cast<T*>(memory.release());
    }

    std::vector<T*> chunks_; ///< Null where nothing was touched yet.
    std::size_t size_ = 0;
};
