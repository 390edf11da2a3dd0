// SPDX-License-Identifier: MIT

#include "Base/IO/packets/ioReferenceMapImpl.h"

#include <algorithm>

#include "Base/IO/ioPacketType.h"

void ioReferenceUsagePool::addBlock() {
    // Doubling from 1 KiB up to 512 KiB.
    const std::size_t count = std::size_t{32} << std::min<std::size_t>(blocks_.size(), 9);
    blocks_.push_back(std::make_unique_for_overwrite<ioReferenceUsage[]>(count));
    ioReferenceUsage* const records = blocks_.back().get();
    for (std::size_t i = count; i-- > 0;)
        giveBack(&records[i], &records[i]);
}

void ioReferenceDefinition::define(ioPacketType* type, ioReferenceUsagePool& pool) {
    defined_ = true;
    type_ = type;
    ioReferenceUsage* last = nullptr;
    for (ioReferenceUsage* record = pending_; record; record = record->next) {
        resolveUsage(record->location);
        last = record;
    }
    if (last)
        pool.giveBack(std::exchange(pending_, nullptr), last);
}

void ioReferenceDefinition::usage(void** location, ioPacketType* type, int offset,
                                  ioReferenceUsagePool& pool) {
    ++usages_;
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
    byPointer_[pointer] = reference;
    ioReferenceDefinition& definition = access(reference);
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
    forEachAccessed([&client](const ioReferenceDefinition& definition) {
        definition.forEachPending([&](const ioReferenceUsage& usage) {
            if (usage.type)
                usage.type->handleUnresolvedPtr(client, definition.pointer_, usage.offset);
        });
        if (definition.defined_ && definition.usages_ == 0 && definition.type_)
            definition.type_->handleUnreferencedMemory(client, definition.pointer_);
    });
}

void ioReferenceMapImpl::reportUnresolvedPtrs(ioPacketType* type, void (*callback)(void*, int)) {
    forEachAccessed([type, callback](const ioReferenceDefinition& definition) {
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
    ioReferenceDefinition& definition = definitions_[static_cast<std::size_t>(reference)];
    definition.accessed_ = true;
    maxAccessed_ = std::max(maxAccessed_, reference);
    return definition;
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

/// Calls `action` with each valid definition that was touched, in rising order. The action may
/// change the map: definitions stay where they are.
template<class Action>
void ioReferenceMapImpl::forEachAccessed(Action action) {
    const auto last = static_cast<std::size_t>(maxAccessed_);
    for (std::size_t i = definitions_.nextTouched(1); i < definitions_.size() && i <= last;
         i = definitions_.nextTouched(i + 1)) {
        const ioReferenceDefinition& definition = definitions_[i];
        if (definition.accessed_ && !definition.invalid_)
            action(definition);
    }
}

ioReferenceMap* ioPacketFileNewReferenceMap() {
    return new ioReferenceMapImpl;
}
