// SPDX-License-Identifier: MIT

/// @file
/// The one implementation of ioReferenceMap.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
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

/// Where usage records come from and go back to: a free list over blocks, since a file may hold
/// millions of forward references. Memory is given back when the map goes.
class ioReferenceUsagePool {
public:
    ioReferenceUsage* take() {
        if (!free_)
            addBlock();
        return std::exchange(free_, free_->next);
    }

    /// Takes back the list from `first` to `last`.
    void giveBack(ioReferenceUsage* first, ioReferenceUsage* last) {
        last->next = free_;
        free_ = first;
    }

private:
    void addBlock();

    ioReferenceUsage* free_ = nullptr;
    std::vector<std::unique_ptr<ioReferenceUsage[]>> blocks_;
};

/// The state of one reference. A new one is all zeros.
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

    /// Counts a use and fills `location`, now or later.
    void usage(void** location, ioPacketType* type, int offset, ioReferenceUsagePool& pool);

    /// The object has gone. It cannot be undone.
    void invalidate() {
        invalid_ = true;
        pointer_ = nullptr;
    }

    /// Calls `action` with each waiting use, newest first. The action may change the map: a
    /// definition that comes meanwhile takes all records away and gets no new ones.
    template<class Action>
    void forEachPending(Action action) const {
        for (const ioReferenceUsage* record = pending_; record && pending_;) {
            const ioReferenceUsage* const next = record->next;
            action(*record);
            record = next;
        }
    }

    bool accessed_ = false;     ///< The reference has been touched at all.
    bool defined_ = false;      ///< The object has been read.
    bool invalid_ = false;      ///< After invalidate().
    bool alias_ = false;        ///< As last associated; nothing reads it.
    unsigned int textFile_ = 0; ///< The file whose string packet defined it last.
    std::uint64_t usages_ = 0;
    void* pointer_ = nullptr;
    ioPacketType* type_ = nullptr;        ///< Of the packet that defined it.
    ioReferenceUsage* pending_ = nullptr; ///< Newest first.
};

/// The definitions by number, in blocks that are made when one of their numbers is first touched,
/// so that numbers far apart, as damaged files have them, take little memory. They never move.
class ioReferenceTable {
public:
    /// Valid numbers are below it.
    std::size_t size() const { return size_; }

    /// Raises the size; a lower one changes nothing.
    void grow(std::size_t size) {
        size_ = std::max(size_, size);
        blocks_.grow((size_ + blockSize - 1) / blockSize);
    }

    ioReferenceDefinition& operator[](std::size_t number) {
        Block& block = blocks_[number / blockSize];
        if (!block) [[unlikely]]
            block = std::make_unique<ioReferenceDefinition[]>(blockSize);
        return block[number % blockSize];
    }

    /// Null if nothing near `number` was touched.
    const ioReferenceDefinition* find(std::size_t number) const {
        const Block* const block = blocks_.find(number / blockSize);
        return block && *block ? &(*block)[number % blockSize] : nullptr;
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
    using Block = std::unique_ptr<ioReferenceDefinition[]>;

    zeVectorOfChunks<Block, 4096> blocks_;
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
    void forEachAccessed(Action action);

    ioPointerTable byPointer_;
    ioReferenceTable definitions_;
    unsigned int file_ = 1;     ///< Counts the files read.
    int lastReference_ = 0;     ///< Handed out last.
    int maxAccessed_ = 0;       ///< The highest reference touched so far.
    bool anyInvalid_ = false;   ///< Some definition was invalidated.
    ioReferenceUsagePool pool_; ///< Of the records on the definitions.
};
