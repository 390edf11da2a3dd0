// SPDX-License-Identifier: MIT

#include "Base/IO/ioReferenceMap.h"

#include <malloc.h>

#include <climits>
#include <deque>
#include <functional>
#include <map>
#include <new>
#include <random>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/IO/ioClientContext.h"
#include "Base/IO/ioPacketType.h"
#include "Support/AllocationCount.h"

namespace {

using testing::ElementsAre;

/// What a map told: the packet type, null pointers and locations included, and the offset; -1
/// stands for an object that was never used.
using Event = std::tuple<const ioPacketType*, void*, int>;
std::vector<Event> events;

struct TellingType : ioPacketType {
    TellingType() : ioPacketType("Telling") {}
    void hasUnresolvedPointer(ioClientReadContext&, void* pointer, int offset) override {
        events.emplace_back(this, pointer, offset);
        if (hook)
            hook();
    }
    void memoryNotReferenced(ioClientReadContext&, void* memory) override {
        events.emplace_back(this, memory, -1);
    }

    std::function<void()> hook;
};

void noteLocation(void* location, int offset) {
    events.emplace_back(nullptr, location, offset);
}

ze::Reference<ioReferenceMap> newMap() {
    return {ioPacketFileNewReferenceMap()};
}

std::vector<Event> verify(ioReferenceMap& map) {
    events.clear();
    ioClientReadContext client(nullptr);
    map.verifyReferenceMap(client);
    return events;
}

std::vector<Event> report(ioReferenceMap& map, ioPacketType* type) {
    events.clear();
    map.reportUnresolvedPtrs(type, noteLocation);
    return events;
}

/// The map as it is told to a newcomer, with everything in ordered maps and nothing done lazily.
struct SlowMap {
    struct Use {
        void** location;
        ioPacketType* type;
        int offset;
    };
    struct Definition {
        bool defined = false;
        bool valid = true;
        int usages = 0;
        void* pointer = nullptr;
        ioPacketType* type = nullptr;
        std::deque<Use> pending; ///< Newest first.
    };

    void associate(int reference, void* pointer) {
        if (reference < 1 || !pointer)
            return;
        grow(reference);
        byPointer[pointer] = reference;
        accessed[reference].pointer = pointer;
    }
    int newReference(void* pointer) {
        associate(++last, pointer);
        return last;
    }
    int find(void* pointer) {
        if (!pointer)
            return 0;
        const auto found = byPointer.find(pointer);
        return found != byPointer.end() && accessed[found->second].valid ? found->second : -1;
    }
    void define(int reference, ioPacketType* type) {
        if (reference < 1 || reference >= size)
            return;
        Definition& definition = accessed[reference];
        definition.defined = true;
        definition.type = type;
        for (const Use& use : definition.pending)
            stored[use.location] = definition.pointer;
        definition.pending.clear();
    }
    void use(int reference, void** location, ioPacketType* type, int offset) {
        stored[location] = nullptr;
        if (reference < 1 || reference >= size)
            return;
        Definition& definition = accessed[reference];
        ++definition.usages;
        if (definition.defined)
            stored[location] = definition.pointer;
        else
            definition.pending.push_front({location, type, offset});
    }
    void undefine(int reference) {
        if (reference == 0)
            grow(0);
        if (reference < 0 || reference >= size)
            return;
        accessed[reference].valid = false;
        accessed[reference].pointer = nullptr;
    }
    void grow(int reference) {
        if (reference >= size)
            size = reference < 10     ? 10
                   : reference < 100  ? 100
                   : reference < 1000 ? 1000
                                      : reference + 20000L;
    }
    std::vector<Event> verify() const {
        std::vector<Event> told;
        for (const auto& [reference, definition] : accessed) {
            if (reference == 0 || !definition.valid)
                continue;
            for (const Use& use : definition.pending)
                told.emplace_back(use.type, definition.pointer, use.offset);
            if (definition.defined && definition.usages == 0)
                told.emplace_back(definition.type, definition.pointer, -1);
        }
        return told;
    }
    std::vector<Event> report(const ioPacketType* type) const {
        std::vector<Event> told;
        for (const auto& [reference, definition] : accessed)
            for (const Use& use : definition.pending)
                if (reference != 0 && definition.valid && use.type == type)
                    told.emplace_back(nullptr, use.location, use.offset);
        return told;
    }

    std::map<void*, int> byPointer;
    std::map<int, Definition> accessed;
    std::map<void**, void*> stored; ///< What each location holds.
    long size = 0;
    int last = 0;
};

} // namespace

TEST(ReferenceMap, BehavesAsItsSlowTwin) {
    std::minstd_rand random(1);
    TellingType types[2];
    char objects[40];
    for (int round = 0; round < 300; ++round) {
        const auto map = newMap();
        SlowMap twin;
        std::vector<void*> locations(300);
        const int limits[] = {8, 50, 1500, 30000};
        const int limit = limits[round % 4];
        for (int step = 0; step < 200; ++step) {
            const int reference = int(random() % unsigned(limit)) - 2;
            void* const pointer = random() % 16 ? &objects[random() % sizeof objects] : nullptr;
            ioPacketType* const type = &types[random() % 2];
            void** const location =
                random() % 8 ? &locations[random() % locations.size()] : nullptr;
            switch (const auto pick = random() % 32; pick < 24 ? pick % 6 : pick) {
            case 0:
                ASSERT_EQ(map->newReference(pointer), twin.newReference(pointer));
                break;
            case 1:
                map->associatePtrWithReference(reference, pointer, random() % 2);
                twin.associate(reference, pointer);
                [[fallthrough]]; // as readers do
            case 2:
                map->defineReference(reference, type);
                twin.define(reference, type);
                break;
            case 3:
                map->useReference(reference, type, step);
                twin.use(reference, nullptr, type, step);
                break;
            case 30:
                map->undefineReference(reference);
                twin.undefine(reference);
                break;
            case 31:
                map->undefineReference(pointer);
                twin.undefine(pointer ? twin.byPointer[pointer] : 0);
                break;
            default:
                map->resolveReferenceUsage(reference, location, type, step);
                if (reference > 0)
                    twin.grow(reference);
                twin.use(reference, location, type, step);
                break;
            }
            ASSERT_EQ(map->findReference(pointer), twin.find(pointer));
            const auto known = twin.accessed.find(reference);
            const bool exists = known != twin.accessed.end();
            ASSERT_EQ(map->isReferenceDefined(reference),
                      exists && known->second.defined && known->second.valid);
            ASSERT_EQ(map->getReferenceDefinition(reference),
                      exists ? known->second.pointer : nullptr);
        }
        for (const auto& [location, pointer] : twin.stored)
            ASSERT_TRUE(!location || *location == pointer);
        ASSERT_EQ(verify(*map), twin.verify());
        ASSERT_EQ(report(*map, &types[0]), twin.report(&types[0]));
    }
}

TEST(ReferenceMap, KeepsItsNumbersWhileItGrows) {
    constexpr int count = 200000;
    const auto map = newMap();
    std::vector<char> objects(count * 24);
    const auto object = [&](int i) { return &objects[std::size_t(i) * 24]; };
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(map->findReference(object(i)), -1);
        if (i % 3 == 0 && i > 0) // between the search in vain and the new number
            map->associatePtrWithReference(i, object(i - 1) + 8, false);
        ASSERT_EQ(map->newReference(object(i)), i + 1);
    }
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(map->findReference(object(i)), i + 1);
    EXPECT_EQ(map->getReferenceDefinition(count), object(count - 1));
}

TEST(ReferenceMap, TakesHostileNumbersWithinBoundedMemory) {
    TellingType type;
    for (const int reference : {INT_MAX, INT_MAX - 20000, INT_MIN, -1}) {
        const auto map = newMap();
        int object = 0;
        void* location = &object;
        map->defineReference(reference, &type);
        map->useReference(reference, &type, 0);
        map->undefineReference(reference);
        EXPECT_FALSE(map->isReferenceDefined(reference));
        EXPECT_EQ(map->getReferenceDefinition(reference), nullptr);
        map->resolveReferenceUsage(reference, &location, &type, 9);
        EXPECT_EQ(location, nullptr);
        const auto told = verify(*map);
        map->associatePtrWithReference(reference, &object, false);
        map->defineReference(reference, &type);
        EXPECT_EQ(told.size(), reference > 0 ? 1u : 0u);
        EXPECT_EQ(location, reference > 0 ? &object : nullptr);
        EXPECT_EQ(map->findReference(&object), reference > 0 ? reference : -1);
    }
}

TEST(ReferenceMap, IsAsItWasWhenMemoryRunsOut) {
    TellingType type;
    int object = 0;
    for (std::size_t n = 1; n <= 12; ++n) {
        const auto map = newMap();
        const auto fill = [&] {
            map->associatePtrWithReference(2000, &object, false);
            map->resolveReferenceUsage(40000, nullptr, &type, 7);
        };
        failAllocation(n);
        try {
            fill();
        } catch (const std::bad_alloc&) {
            failAllocation(0);
            const bool associated = map->findReference(&object) == 2000;
            EXPECT_EQ(map->getReferenceDefinition(2000), associated ? &object : nullptr);
            EXPECT_EQ(map->getReferenceDefinition(40000), nullptr);
            EXPECT_TRUE(verify(*map).empty());
            fill();
        }
        failAllocation(0);
        EXPECT_THAT(verify(*map), ElementsAre(Event(&type, nullptr, 7)));
    }
}

TEST(ReferenceMap, TakesNoMoreForNumbersFarApartThanForOthers) {
    const auto map = newMap();
    TellingType type;
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 1; i <= 10000; ++i)
        map->resolveReferenceUsage(1250 * i, nullptr, &type, 0);
    EXPECT_LT(mallinfo2().uordblks - before, std::size_t{80} << 20); // 8 KB each
    EXPECT_EQ(verify(*map).size(), 10000U);
}

TEST(ReferenceMap, LetsTheHooksOfVerificationChangeIt) {
    const auto map = newMap();
    TellingType type;
    int object = 0;
    void* location = nullptr;
    type.hook = [&] {
        map->resolveReferenceUsage(3, &location, &type, 9);
        map->associatePtrWithReference(3, &object, false);
        map->defineReference(3, &type); // takes all uses that were still to be told
    };
    map->resolveReferenceUsage(3, nullptr, &type, 1);
    map->resolveReferenceUsage(3, nullptr, &type, 2);
    EXPECT_THAT(verify(*map), ElementsAre(Event(&type, nullptr, 2)));
    EXPECT_EQ(location, &object);
}
