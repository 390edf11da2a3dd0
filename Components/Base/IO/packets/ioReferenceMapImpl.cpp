// SPDX-License-Identifier: MIT

#include "Base/IO/packets/ioReferenceMapImpl.h"

#include <algorithm>

#include "Base/IO/ioPacketType.h"

void ioReferenceArena::addSlab(std::size_t bytes) {
    // Fourfold from 1 KiB up to 1 MiB.
    const std::size_t usual = std::size_t{1024} << 2 * std::min<std::size_t>(slabs_.size(), 5);
    const std::size_t size = std::max(bytes, usual);
    free_ = slabs_.emplace_back(std::make_unique_for_overwrite<char[]>(size)).get();
    left_ = size;
}

void ioReferenceDefinition::define(ioPacketType* type, ioReferenceUsagePool& pool) {
    ioReferenceUsage* const first = std::exchange(defined_, true) ? nullptr : pending_;
    type_ = type;
    ioReferenceUsage* last = nullptr;
    for (ioReferenceUsage* record = first; record; record = record->next) {
        resolveUsage(record->location);
        last = record;
    }
    if (last)
        pool.giveBack(first, last);
}

void ioReferenceDefinition::usage(void** location, ioPacketType* type, int offset,
                                  ioReferenceUsagePool& pool) {
    used_ = true;
    if (location)
        *location = nullptr;
    if (defined_) {
        resolveUsage(location);
        return;
    }
    ioReferenceUsage* const record = pool.take();
    *record = {pending_, location, type, offset};
    pending_ = record;
}

ioReferenceMap::~ioReferenceMap() = default;

int ioReferenceMapImpl::newReference(void* pointer) {
    ++lastReference_;
    associatePtrWithReference(lastReference_, pointer, false);
    return lastReference_;
}

void ioReferenceMapImpl::associatePtrWithReference(int reference, void* pointer, bool alias) {
    if (reference < 1 || !pointer)
        return;
    if (!holds(reference))
        growRefList(reference);
    ioReferenceDefinition& definition = access(reference);
    byPointer_[pointer] = reference; // the last that may run out of memory
    definition.setPointer(pointer);
    definition.alias_ = alias;
}

int ioReferenceMapImpl::findReference(const void* pointer) const {
    if (!pointer)
        return 0;
    const int* const reference = byPointer_.find(pointer);
    if (!reference)
        return -1;
    // The definition costs a cache miss of its own: look only where something was undefined.
    const ioReferenceDefinition* const definition = anyInvalid_ ? find(*reference) : nullptr;
    return definition && definition->invalid_ ? -1 : *reference;
}

bool ioReferenceMapImpl::isReferenceDefined(int reference) const {
    const ioReferenceDefinition* const definition = find(reference);
    return definition && !definition->invalid_ && definition->defined_;
}

void* ioReferenceMapImpl::getReferenceDefinition(int reference) const {
    const ioReferenceDefinition* const definition = find(reference);
    return definition ? definition->pointer_ : nullptr;
}

void ioReferenceMapImpl::defineReference(int reference, ioPacketType* type) {
    if (reference != 0 && holds(reference))
        access(reference).define(type, pool_);
}

void ioReferenceMapImpl::useReference(int reference, ioPacketType* type, int offset) {
    if (reference != 0 && holds(reference))
        access(reference).usage(nullptr, type, offset, pool_);
}

// A pointer that is not held stands for reference 0 from now on, whose definition is invalid.
void ioReferenceMapImpl::undefineReference(void* pointer) {
    undefineReference(pointer ? byPointer_[pointer] : 0);
}

void ioReferenceMapImpl::undefineReference(int reference) {
    if (reference == 0 && !holds(0))
        growRefList(0);
    if (!holds(reference))
        return;
    access(reference).invalidate();
    anyInvalid_ = true;
}

void ioReferenceMapImpl::resolveReferenceUsage(int reference, void** location, ioPacketType* type,
                                               int offset) {
    if (location)
        *location = nullptr;
    if (reference < 1)
        return;
    if (!holds(reference))
        growRefList(reference);
    access(reference).usage(location, type, offset, pool_);
}

void ioReferenceMapImpl::verifyReferenceMap(ioClientReadContext& client) {
    forEachValid([&client](const ioReferenceDefinition& definition) {
        definition.forEachPending([&](const ioReferenceUsage& usage) {
            if (usage.type)
                usage.type->handleUnresolvedPtr(client, definition.pointer_, usage.offset);
        });
        ioPacketType* const type = definition.type();
        if (type && !definition.used_)
            type->handleUnreferencedMemory(client, definition.pointer_);
    });
}

void ioReferenceMapImpl::reportUnresolvedPtrs(ioPacketType* type, void (*callback)(void*, int)) {
    forEachValid([type, callback](const ioReferenceDefinition& definition) {
        definition.forEachPending([&](const ioReferenceUsage& usage) {
            if (usage.type == type)
                callback(usage.location, usage.offset);
        });
    });
}

bool ioReferenceMapImpl::takeText(int reference) {
    if (!holds(reference))
        growRefList(reference);
    return std::exchange(definitions_[static_cast<std::size_t>(reference)].textFile_, file_) !=
           file_;
}

bool ioReferenceMapImpl::holds(int reference) const {
    return reference >= 0 && static_cast<std::size_t>(reference) < definitions_.size();
}

/// The definition of `reference`, or null if it is not held or was never touched.
const ioReferenceDefinition* ioReferenceMapImpl::find(int reference) const {
    return holds(reference) ? definitions_.find(static_cast<std::size_t>(reference)) : nullptr;
}

/// The definition of `reference`, which is held, for a change.
ioReferenceDefinition& ioReferenceMapImpl::access(int reference) {
    maxAccessed_ = std::max(maxAccessed_, reference);
    return definitions_[static_cast<std::size_t>(reference)];
}

/// Makes room for `reference` and, since references mostly rise, for many after it.
void ioReferenceMapImpl::growRefList(int reference) {
    const auto needed = static_cast<std::size_t>(reference);
    if (needed < 10)
        definitions_.grow(10);
    else if (needed < 100)
        definitions_.grow(100);
    else if (needed < 1000)
        definitions_.grow(1000);
    else
        definitions_.grow(needed + 20000);
}

/// Calls `action` with each valid definition up to the highest that was touched, in rising order.
/// The action may change the map: definitions stay where they are.
template<class Action>
void ioReferenceMapImpl::forEachValid(Action action) {
    const auto last = static_cast<std::size_t>(maxAccessed_);
    for (std::size_t i = definitions_.nextTouched(1); i < definitions_.size() && i <= last;
         i = definitions_.nextTouched(i + 1)) {
        const ioReferenceDefinition& definition = definitions_[i];
        if (!definition.invalid_)
            action(definition);
    }
}

ioReferenceMap* ioPacketFileNewReferenceMap() {
    return new ioReferenceMapImpl;
}
