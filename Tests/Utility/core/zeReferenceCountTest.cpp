// SPDX-License-Identifier: MIT

#include "Base/Utility/zeReferenceCount.h"

#include <unordered_map>
#include <utility>

#include <gtest/gtest.h>

namespace {

struct Counted : ze::ReferenceCount {
    explicit Counted(int& alive) : alive_(alive) { ++alive_; }
    Counted(const Counted& other) : ReferenceCount(other), alive_(other.alive_) { ++alive_; }
    ~Counted() override { --alive_; }

    int& alive_;
};

} // namespace

TEST(Reference, HandsItsOwnershipOverWhereItIsMoved) {
    int alive = 0;
    ze::Reference<Counted> a(new Counted(alive));
    ze::Reference<Counted> b = std::move(a);
    EXPECT_FALSE(a); // NOLINT(bugprone-use-after-move): promised to be null
    EXPECT_EQ(b->refs(), 1);
    auto& same = b;
    b = same;
    b = std::move(same);
    EXPECT_EQ(b->refs(), 1);
    EXPECT_EQ(alive, 1);
    b = std::move(a);
    EXPECT_EQ(alive, 0);
}

TEST(Reference, KeepsAConstObjectAliveAndComparesWithoutOwning) {
    int alive = 0;
    {
        ze::Reference<Counted> a(new Counted(alive));
        ze::Reference<const Counted> b = a;
        ze::Reference<const ze::ReferenceCount> base = b;
        EXPECT_EQ(a == base && base == a && base == b ? a->refs() : 0, 3); // without a share
        Counted unowned(alive);
        EXPECT_TRUE(a != &unowned && unowned.refs() == 0);
        a = nullptr;
        EXPECT_TRUE(a != &unowned && base == b);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Reference, IsResetAndFoundByItsHash) {
    int alive = 0;
    ze::Reference<Counted> a(new Counted(alive)), null;
    std::unordered_map<ze::Reference<Counted>, char> names{{a, 'a'}, {null, '0'}};
    EXPECT_TRUE(names[a.get()] == 'a' && names[nullptr] == '0' && names.size() == 2);
    EXPECT_EQ(testing::PrintToString(a), testing::PrintToString(static_cast<void*>(a.get())));
    names.clear();
    a.reset(a.get()); // to itself
    EXPECT_EQ(a->refs(), 1);
    a.reset(new Counted(alive));
    EXPECT_EQ(alive, 1);
    a.reset();
    EXPECT_TRUE(!a && alive == 0);
}

TEST(ReferenceCount, CopyHasNoOwnersAndAssignmentKeepsThem) {
    int alive = 0;
    ze::Reference<Counted> a(new Counted(alive));
    ze::Reference<Counted> b(new Counted(*a));
    b->ref();
    static_cast<ze::ReferenceCount&>(*a) = *b;
    EXPECT_EQ(a->refs(), 1);
    EXPECT_EQ(b->refs(), 2);
    b->unref();
}
