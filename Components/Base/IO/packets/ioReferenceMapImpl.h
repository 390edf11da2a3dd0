// SPDX-License-Identifier: MIT

/// @file
/// The one implementation of ioReferenceMap.

#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "Base/IO/ioReferenceMap.h"
#include "Base/IO/packets/ioPointerTableImpl.h"
#include "Base/Utility/zeVectorOfChunks.h"

/// A location that waits for a definition.
struct ioReferenceUsage {
    ioReferenceUsage* next;
    void** location; ///< May be null.
    ioPacketType* type;
    int offset; ///< The client's.
};

/// Memory for millions of small objects, which goes with the arena only.
class ioReferenceArena {
public:
    /// `count` objects by `T()`.
    template<class T>
    T* make(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T>);
        static_assert(alignof(T) <= alignment && sizeof(T) % alignment == 0);
        void* const memory = take(count * sizeof(T));
        return std::uninitialized_value_construct_n(static_cast<T*>(memory), count) - count;
    }

private:
    static constexpr std::size_t alignment = 8;

    void* take(std::size_t bytes) {
        if (bytes > left_)
            addSlab(bytes);
        left_ -= bytes;
        return std::exchange(free_, free_ + bytes);
    }
    void addSlab(std::size_t bytes);

    char* free_ = nullptr; ///< The rest of the last slab,
    std::size_t left_ = 0; ///< and its bytes.
    std::vector<std::unique_ptr<char[]>> slabs_;
};

/// Where usage records come from and go back to.
class ioReferenceUsagePool {
public:
    ioReferenceUsage* take() {
        return free_ ? std::exchange(free_, free_->next) : arena_.make<ioReferenceUsage>(1);
    }

    /// Takes back the list from `first` to `last`.
    void giveBack(ioReferenceUsage* first, ioReferenceUsage* last) {
        last->next = free_;
        free_ = first;
    }

private:
    ioReferenceUsage* free_ = nullptr;
    ioReferenceArena arena_;
};

/// The state of one reference.
class ioReferenceDefinition {
public:
    void setPointer(void* pointer) { pointer_ = pointer; }

    /// Stores the object in `location`, which may be null.
    void resolveUsage(void** location) const {
        if (location)
            *location = pointer_;
    }

    /// The object has been read: fills the locations that wait for it.
    void define(ioPacketType* type, ioReferenceUsagePool& pool);

    /// Notes a use and fills `location`, now or later.
    void usage(void** location, ioPacketType* type, int offset, ioReferenceUsagePool& pool);

    /// The object has gone. It cannot be undone.
    void invalidate() {
        invalid_ = true;
        pointer_ = nullptr;
    }

    /// Of the packet that defined it; null before.
    ioPacketType* type() const { return defined_ ? type_ : nullptr; }

    /// Calls `action` with each waiting use, newest first. The action may change the map: a
    /// definition that comes meanwhile takes all records away and gets no new ones.
    template<class Action>
    void forEachPending(Action action) const {
        for (const ioReferenceUsage* record = defined_ ? nullptr : pending_; record && !defined_;) {
            const ioReferenceUsage* const next = record->next;
            action(*record);
            record = next;
        }
    }

    void* pointer_ = nullptr;
    union {                                   // nothing waits for what is defined
        ioReferenceUsage* pending_ = nullptr; ///< Newest first; until then.
        ioPacketType* type_;                  ///< Of the packet that defined it; from then on.
    };
    unsigned int textFile_ = 0; ///< The file whose string packet defined it last.
    bool defined_ = false;      ///< The object has been read.
    bool invalid_ = false;      ///< After invalidate().
    bool used_ = false;         ///< Before or after it was defined.
    bool alias_ = false;        ///< As last associated; nothing reads it.
};

/// The definitions by number, in blocks that are made when one of their numbers is first touched,
/// so that numbers far apart, as damaged files have them, take little memory. They never move.
class ioReferenceTable {
public:
    /// Valid numbers are below it.
    std::size_t size() const { return size_; }

    /// Raises the size; a lower one changes nothing.
    void grow(std::size_t size) {
        blocks_.grow((size + blockSize - 1) / blockSize); // first, since memory may run out
        size_ = std::max(size_, size);
    }

    ioReferenceDefinition& operator[](std::size_t number) {
        ioReferenceDefinition*& first = blocks_[number / blockSize].first;
        if (!first) [[unlikely]]
            first = arena_.make<ioReferenceDefinition>(blockSize);
        return first[number % blockSize];
    }

    /// Null if nothing near `number` was touched.
    const ioReferenceDefinition* find(std::size_t number) const {
        const Block* const block = blocks_.find(number / blockSize);
        return block && block->first ? block->first + number % blockSize : nullptr;
    }

    /// The lowest number from `number` on whose block exists; at or beyond size() if there is none.
    std::size_t nextTouched(std::size_t number) const {
        while (number < size_ && !find(number)) {
            const std::size_t block = number / blockSize;
            number = std::max(block + 1, blocks_.nextTouched(block)) * blockSize;
        }
        return number;
    }

private:
    static constexpr std::size_t blockSize = 32;
    struct Block {
        ioReferenceDefinition* first = nullptr; ///< Null while none was touched.
    };

    zeVectorOfChunks<Block, 4096> blocks_;
    ioReferenceArena arena_; ///< Of the definitions.
    std::size_t size_ = 0;
};

class ioReferenceMapImpl : public ioReferenceMap {
public:
    int newReference(void* pointer) override;
    void associatePtrWithReference(int reference, void* pointer, bool alias) override;
    int findReference(const void* pointer) const override;
    bool isReferenceDefined(int reference) const override;
    void* getReferenceDefinition(int reference) const override;
    void defineReference(int reference, ioPacketType* type) override;
    void useReference(int reference, ioPacketType* type, int offset) override;
    void undefineReference(void* pointer) override;
    void undefineReference(int reference) override;
    void resolveReferenceUsage(int reference, void** location, ioPacketType* type,
                               int offset) override;
    void verifyReferenceMap(ioClientReadContext& client) override;
    void reportUnresolvedPtrs(ioPacketType* type, void (*callback)(void*, int)) override;

    /// Another file begins, however the one before it ended.
    void startFile() { ++file_; }

    /// Notes that a string packet defines `reference`. False if one of the same file has done so.
    bool takeText(int reference);

private:
    bool holds(int reference) const;
    const ioReferenceDefinition* find(int reference) const;
    ioReferenceDefinition& access(int reference);
    void growRefList(int reference);
    template<class Action>
    void forEachValid(Action action);

    ioPointerTable byPointer_;
    ioReferenceTable definitions_;
    unsigned int file_ = 1;     ///< Counts the files read.
    int lastReference_ = 0;     ///< Handed out last.
    int maxAccessed_ = 0;       ///< The highest reference touched so far.
    bool anyInvalid_ = false;   ///< Some definition was invalidated.
    ioReferenceUsagePool pool_; ///< Of the records on the definitions.
};
