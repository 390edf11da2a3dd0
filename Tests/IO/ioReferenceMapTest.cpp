// SPDX-License-Identifier: MIT

#include "Base/IO/ioReferenceMap.h"

#include <climits>
#include <deque>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/IO/ioClientContext.h"
#include "Base/IO/ioPacketType.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
            if (use.location)
                *use.location = definition.pointer;
        definition.pending.clear();
    }
    void use(int reference, void** location, ioPacketType* type, int offset) {
        if (location)
            *location = nullptr;
        if (reference < 1 || reference >= size)
            return;
        Definition& definition = accessed[reference];
        ++definition.usages;
        if (!definition.defined)
            definition.pending.push_front({location, type, offset});
        else if (location)
            *location = definition.pointer;
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
    long size = 0;
    int last = 0;
};

TEST(ReferenceMap, BehavesAsItsSlowTwin) {
    std::minstd_rand random(1);
    TellingType types[2];
    char objects[40];
    for (int round = 0; round < 300; ++round) {
        const auto map = newMap();
        SlowMap twin;
        std::vector<void*> locations(300, &random);
        std::vector<void*> twinLocations = locations;
        const int limits[] = {8, 50, 1500, 30000};
        const int limit = limits[round % 4];
        for (int step = 0; step < 200; ++step) {
            const int reference = int(random() % unsigned(limit)) - 2;
            void* const pointer = random() % 16 ? &objects[random() % sizeof objects] : nullptr;
            ioPacketType* const type = &types[random() % 2];
            const std::size_t place = random() % locations.size();
            void** const location = random() % 8 ? &locations[place] : nullptr;
            void** const twinLocation = location ? &twinLocations[place] : nullptr;
            switch (random() % 8) {
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
            case 4:
            case 5:
                map->resolveReferenceUsage(reference, location, type, step);
                if (reference > 0)
                    twin.grow(reference);
                twin.use(reference, twinLocation, type, step);
                break;
            case 6:
                if (random() % 4 == 0) {
                    map->undefineReference(reference);
                    twin.undefine(reference);
                }
                break;
            case 7:
                if (random() % 4 == 0) {
                    map->undefineReference(pointer);
                    twin.undefine(pointer ? twin.byPointer[pointer] : 0);
                }
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
        for (std::size_t i = 0; i < locations.size(); ++i)
            ASSERT_EQ(locations[i], twinLocations[i]);
        ASSERT_EQ(verify(*map), twin.verify());
        std::vector<Event> told = report(*map, &types[0]);
        for (Event& event : told) // the same place in the twin's locations
            if (auto*& at = std::get<void*>(event))
                at = static_cast<void**>(at) - locations.data() + twinLocations.data();
        ASSERT_EQ(told, twin.report(&types[0]));
    }
}

TEST(ReferenceMap, FillsLocationsWhenTheDefinitionComesAndAtOnceAfterIt) {
    const auto map = newMap();
    TellingType type;
    int object = 0;
    void* locations[3] = {&type, &type, &type};
    map->resolveReferenceUsage(5, &locations[0], &type, 1);
    map->resolveReferenceUsage(5, &locations[1], &type, 2);
    EXPECT_EQ(locations[0], nullptr);
    EXPECT_THAT(report(*map, &type),
                ElementsAre(Event(nullptr, &locations[1], 2), Event(nullptr, &locations[0], 1)));
    map->associatePtrWithReference(5, &object, false);
    map->defineReference(5, &type);
    map->resolveReferenceUsage(5, &locations[2], &type, 3);
    EXPECT_THAT(locations, testing::Each(&object));
    EXPECT_THAT(verify(*map), IsEmpty());
    // Null is reference 0, and leaves no trace.
    map->resolveReferenceUsage(0, &locations[0], &type, 4);
    EXPECT_EQ(locations[0], nullptr);
    EXPECT_THAT(verify(*map), IsEmpty());
}

TEST(ReferenceMap, NumbersAnUndefinedObjectAnew) {
    const auto map = newMap();
    int object = 0;
    EXPECT_EQ(map->newReference(&object), 1);
    map->undefineReference(&object);
    EXPECT_EQ(map->findReference(&object), -1);
    EXPECT_EQ(map->newReference(&object), 2);
    EXPECT_EQ(map->findReference(&object), 2);
    // The number itself stays undefined, even if it is given to an object again.
    map->associatePtrWithReference(1, &object, false);
    EXPECT_EQ(map->findReference(&object), -1);
}

// Reading does not raise the count that writing goes on from.
TEST(ReferenceMap, CountsOnFromItsOwnNumbersOnly) {
    const auto map = newMap();
    int object = 0;
    map->associatePtrWithReference(7, &object, false);
    EXPECT_EQ(map->newReference(&object), 1);
}

TEST(ReferenceMap, GrowsWellAheadButIgnoresUsesBeyond) {
    const auto map = newMap();
    TellingType type;
    map->resolveReferenceUsage(2000, nullptr, nullptr, 0);
    map->useReference(21999, &type, 1);
    map->useReference(22000, &type, 2);
    EXPECT_THAT(report(*map, &type), ElementsAre(Event(nullptr, nullptr, 1)));
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

TEST(ReferenceMap, FindsManyPointersWhateverTheirPattern) {
    const std::size_t strides[] = {
        1, 16, 64, 4096, std::size_t{1} << 20, (std::size_t{1} << 32) - 8};
    for (const std::size_t stride : strides) {
        const auto map = newMap();
        const auto pointer = [stride](int i) {
            return reinterpret_cast<void*>(stride * static_cast<std::size_t>(i) * (i % 3 ? 1 : 7));
        };
        std::set<void*> seen;
        for (int i = 1; i <= 20000; ++i) {
            EXPECT_EQ(map->findReference(pointer(i)) >= 0, !seen.insert(pointer(i)).second);
            map->associatePtrWithReference(i, pointer(i), false);
        }
        for (int i = 20000; i >= 1; --i)
            ASSERT_EQ(map->findReference(pointer(i)) == i, seen.erase(pointer(i)) == 1) << stride;
    }
}

} // namespace
