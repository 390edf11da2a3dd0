// SPDX-License-Identifier: MIT

#include "Base/Utility/zeRBTree.h"

#include <algorithm>
#include <concepts>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <ranges>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Support/AllocationCount.h"

namespace {

using ze::RBTreeImpl;
using Node = RBTreeImpl::Node;

/// A key that owns memory and counts the living, so that what is forgotten or freed twice shows.
struct Key {
    Key(int n) : text(std::to_string(n)), number(n) { ++alive; }
    Key(const Key& other) : text(other.text), number(other.number) { ++alive; }
    Key& operator=(const Key&) = delete;
    ~Key() { --alive; }
    bool operator<(const Key& other) const { return number < other.number; }

    std::string text;
    int number;
    static inline int alive = 0;
};

using Types = ze::RBTreeTypes<Key, std::string>;

/// The number of black nodes on every path down, or a failure if the rules do not hold.
int checkSubtree(const Node* node, const Node* parent) {
    if (!node)
        return 1;
    EXPECT_EQ(node->parent, parent);
    const int blacks = checkSubtree(node->child[RBTreeImpl::left], node);
    EXPECT_EQ(checkSubtree(node->child[RBTreeImpl::right], node), blacks);
    if (node->colour == RBTreeImpl::black)
        return blacks + 1;
    for (const Node* child : node->child)
        EXPECT_TRUE(!child || child->colour == RBTreeImpl::black) << "red under red";
    return blacks;
}

void checkRules(const RBTreeImpl& tree) {
    EXPECT_EQ(static_cast<const void*>(tree.end()), &tree) << "the tree is its own end";
    checkSubtree(tree.root(), tree.end());
    EXPECT_TRUE(!tree.root() || tree.root()->colour == RBTreeImpl::black);
    Node* first = tree.end();
    Node* last = tree.end();
    for (Node* node = tree.root(); node; node = node->child[RBTreeImpl::left])
        first = node;
    for (Node* node = tree.root(); node; node = node->child[RBTreeImpl::right])
        last = node;
    EXPECT_EQ(tree.begin(), first);
    EXPECT_EQ(tree.end()->prev(), last);
}

using Contents = std::vector<std::pair<int, std::string>>;

Contents contents(const RBTreeImpl& tree) {
    Contents result;
    for (Node* node = tree.begin(); node != tree.end(); node = node->next())
        result.emplace_back(Types::keyOf(node).number, Types::valueOf(node));
    Contents backwards;
    for (Node* node = tree.end()->prev(); node != tree.end(); node = node->prev())
        backwards.emplace_back(Types::keyOf(node).number, Types::valueOf(node));
    EXPECT_EQ(Contents(backwards.rbegin(), backwards.rend()), result);
    return result;
}

struct Tree : RBTreeImpl {
    Tree() : RBTreeImpl(Types::nodeSize) { initialize(&Types::typeUtil); }
    explicit Tree(std::initializer_list<int> keys) : Tree() {
        for (int number : keys)
            add(number, std::to_string(number));
    }
    Node* add(int number, const std::string& value) {
        const Key key(number);
        return insertNodeNonUnique(&key, &value);
    }
    Node* find(int number) {
        const Key key(number);
        return findNode(&key);
    }
};

template<class Tree>
constexpr bool fitsTheStandardLibrary =
    std::ranges::bidirectional_range<const Tree>&& std::ranges::common_range<Tree>&&
        std::same_as<std::ranges::range_value_t<Tree>, typename Tree::value_type>&&
            std::is_nothrow_move_constructible_v<Tree>&& std::is_nothrow_move_assignable_v<Tree>&&
                std::is_nothrow_swappable_v<Tree>&& std::equality_comparable<Tree>;
static_assert(fitsTheStandardLibrary<ze::RBTreeMap<std::string, int>>);
static_assert(fitsTheStandardLibrary<ze::RBTreeSet<std::string>>);
static_assert(!std::equality_comparable<ze::RBTreeSet<Key>>);
static_assert(sizeof(ze::RBTreeMap<int, int>) == sizeof(RBTreeImpl));
static_assert(!std::is_convertible_v<ze::RBTreeMap<int, int>::ConstIterator,
                                     ze::RBTreeMap<int, int>::Iterator>);

} // namespace

/// Random operations against a std::multimap, which keeps equal keys in the order of insertion too.
TEST(RBTree, DoesWhatAMultimapDoes) {
    std::mt19937 random(7);
    for (int keys : {10, 100, 3000}) { // many equal keys, some, and few
        Tree tree;
        tree.setNumElementsInBlock(5);
        checkRules(tree);
        std::multimap<int, std::string> twin;
        for (int step = 0; step < 4000; ++step) {
            const int number = static_cast<int>(random()) % keys;
            const Key key(number);
            const std::string value = "value of step " + std::to_string(step);
            Node* hint = random() % 2 ? tree.upperBound(&key) : tree.lowerBound(&key);
            const bool growing = step % 1000 < 600;
            switch (random() % (growing ? 8 : 16)) {
            case 0:
                tree.insertNodeNonUnique(&key, &value);
                twin.emplace(number, value);
                break;
            case 1:
                tree.insertNodeNonUnique(hint, &key, &value);
                twin.emplace(number, value);
                break;
            case 2:
                tree.insertNodeNonUnique(random() % 2 ? tree.end() : tree.begin(), &key);
                twin.emplace(number, "");
                break;
            case 3:
            case 4: {
                Node* node = random() % 2 ? tree.insertNodeUnique(&key, &value)
                                          : tree.insertNodeUnique(hint, &key, &value);
                if (!twin.contains(number))
                    twin.emplace(number, value);
                EXPECT_EQ(Types::keyOf(node).number, number);
                break;
            }
            case 5:
                if (twin.contains(number)) {
                    tree.eraseNode(tree.findNode(&key));
                    twin.erase(twin.find(number));
                } else {
                    EXPECT_EQ(tree.findNode(&key), tree.end());
                    EXPECT_EQ(tree.getValuePtr(&key), nullptr);
                }
                break;
            case 6: {
                const auto [first, last] = tree.equalRange(&key);
                EXPECT_EQ(tree.count(&key), static_cast<int>(twin.count(number)));
                EXPECT_TRUE(last == tree.end() || Types::keyOf(last).number > number);
                EXPECT_TRUE(first == tree.end() || Types::keyOf(first).number >= number);
                EXPECT_TRUE(first == tree.begin() || Types::keyOf(first->prev()).number < number);
                break;
            }
            case 7:
                EXPECT_EQ(tree.eraseNodesMatching(&key), static_cast<int>(twin.erase(number)));
                break;
            default: { // shrinks the tree
                const Key from(number + keys / 50);
                tree.eraseNodesRange(tree.lowerBound(&key), tree.upperBound(&from));
                twin.erase(twin.lower_bound(number), twin.upper_bound(number + keys / 50));
                break;
            }
            }
            ASSERT_EQ(tree.size(), static_cast<int>(twin.size()));
            if (step % 20 == 0) {
                Tree other{3, 1};
                other.setNumElementsInBlock(7);
                Node* const first = tree.begin();
                other.swap(tree);
                checkRules(tree);
                EXPECT_TRUE(twin.empty() || other.begin() == first) << "nodes keep their addresses";
                tree.clear();
                checkRules(tree);
                tree.swap(other);
                checkRules(tree);
                ASSERT_EQ(contents(tree), Contents(twin.begin(), twin.end()));
            }
        }
    }
    EXPECT_EQ(Key::alive, 0);
}

TEST(RBTree, CopyAddsAndInitializeReplaces) {
    Tree source{2, 2, 4}, target{1, 2, 3};
    target.copy(source);
    EXPECT_EQ(contents(target),
              (Contents{{1, "1"}, {2, "2"}, {2, "2"}, {2, "2"}, {3, "3"}, {4, "4"}}));
    checkRules(target);
    target.initialize(source);
    EXPECT_EQ(contents(target), contents(source));
    target.copy(target);
    target.initialize(target);
    EXPECT_EQ(target.size(), 3);
}

TEST(RBTree, SwapHeadersExchangesPlaces) {
    for (int a = 1; a <= 7; ++a) {
        for (int b = 1; b <= 7; ++b) { // neighbours, siblings, the root, the ends, itself
            SCOPED_TRACE(std::to_string(a) + " and " + std::to_string(b));
            Tree tree{4, 2, 6, 1, 3, 5, 7};
            Contents expected = contents(tree);
            std::swap(expected[std::size_t(a) - 1], expected[std::size_t(b) - 1]);
            tree.find(a)->swapHeaders(*tree.find(b));
            checkRules(tree);
            EXPECT_EQ(contents(tree), expected);
        }
    }
}

TEST(RBTree, FailedCopyLeavesTheTreeAsItWas) {
    const std::string longText(100, 'x');
    ze::RBTreeMap<Key, std::string> map;
    map.insert(1, longText);
    failAllocation(1); // that of the value's copy
    EXPECT_THROW(map.insert(2, longText), std::bad_alloc);
    failAllocation(0);
    EXPECT_EQ(map.size(), 1);
    EXPECT_EQ(Key::alive, 1);
}

TEST(RBTree, TableAdaptsToTheTypes) {
    struct alignas(16) Wide { // without a default
        explicit Wide(int n) : x(n) {}
        int x;
    };
    using Table = ze::RBTreeTypes<char, Wide, std::greater<char>>;
    RBTreeImpl tree(Table::nodeSize);
    tree.initialize(&Table::typeUtil);
    for (char key : {'a', 'b'}) {
        const Wide value(key);
        tree.insertNodeUnique(&key, &value);
    }
    EXPECT_EQ(Table::valueOf(tree.begin()).x, 'b');
}

/// What it has of `std::map`, against that.
TEST(RBTreeMap, DoesWhatAMapDoes) {
    std::mt19937 random(11);
    ze::RBTreeMap<int, int> map;
    std::map<int, int> twin;
    const auto sameOutcome = [&](const auto& outcome, const auto& expected) {
        EXPECT_EQ(outcome.second, expected.second);
        EXPECT_EQ(outcome.first->value(), expected.first->second);
    };
    for (int step = 0; step < 3000; ++step) {
        const int key = static_cast<int>(random() % 200),
                  last = key + static_cast<int>(random() % 5);
        const auto [begin, end] = std::as_const(map).equalRange(key);
        EXPECT_EQ(std::distance(begin, end), std::ptrdiff_t(twin.count(key)));
        EXPECT_EQ(map.contains(key), twin.contains(key));
        const auto choice = random() % 6;
        if (choice == 0) {
            sameOutcome(map.insertOrAssign(key, step), twin.insert_or_assign(key, step));
        } else if (choice == 1) {
            sameOutcome(map.tryEmplace(key, step), twin.try_emplace(key, step));
        } else if (choice == 2) {
            sameOutcome(map.insert({key, step}), twin.insert({key, step}));
        } else if (choice == 3) { // a hint never misleads
            map.insert(random() % 2 ? map.cend() : map.lowerBound(key), key, step);
            twin.emplace(key, step);
        } else if (choice == 4) {
            EXPECT_EQ(map.erase(map.lowerBound(key), map.upperBound(last)), map.upperBound(last));
            twin.erase(twin.lower_bound(key), twin.upper_bound(last));
        } else if (begin != end) {
            EXPECT_EQ(map.erase(begin), end);
            twin.erase(key);
        }
        ASSERT_EQ(map, (ze::RBTreeMap<int, int>(twin.begin(), twin.end())));
    }
    EXPECT_TRUE(std::equal(map.crbegin(), map.crend(), twin.rbegin(), twin.rend(),
                           [](auto a, auto b) { return a.value() == b.second; }));
    map.clear();
    EXPECT_TRUE(map.empty());
}

TEST(RBTreeMap, IsTakenApartAndComparedAndPrinted) {
    ze::RBTreeMap<std::string, int> map{{"b", 2}, {"a", 1}, {"a", 3}};
    for (auto [key, value] : map) // the map's own value
        value += static_cast<int>(key.size());
    for (const auto& [key, value] : std::as_const(map))
        static_assert(std::same_as<decltype(value), const int> &&
                      std::same_as<decltype(key), const std::string>);
    EXPECT_EQ(testing::PrintToString(map), "{ (a, 2), (b, 3) }");
    EXPECT_FALSE(map == (decltype(map){{"a", 2}, {"b", 4}}) || map == (decltype(map){{"a", 2}}));
    map.insertNonUnique("a", 5);
    int* const address = map.getValuePtr("a");
    EXPECT_EQ(&map.insertOrAssign("a", 7).first->value(), address) << "the first of two";
    const auto moved = std::move(map);
    EXPECT_EQ(moved.getValuePtr("a"), address);
    EXPECT_TRUE(map.empty()); // NOLINT(bugprone-use-after-move): promised to be empty
}

TEST(RBTreeSet, DoesWhatAMultisetDoes) {
    std::mt19937 random(13);
    ze::RBTreeSet<Key, std::less<>> set;
    std::multiset<int> twin;
    for (int step = 0; step < 2000; ++step) {
        const int number = static_cast<int>(random() % 50);
        const bool fresh = !twin.contains(number);
        const auto choice = random() % 4;
        if (choice == 0)
            EXPECT_EQ(set.erase(number), static_cast<int>(twin.erase(number)));
        else if (choice == 1)
            EXPECT_EQ(set.insert(number).second, fresh);
        else if (choice == 2)
            EXPECT_EQ(set.insert(set.lowerBound(number), number)->number, number);
        else
            EXPECT_EQ(set.insertNonUnique(number)->number, number);
        if (choice == 3 || (choice > 0 && fresh))
            twin.insert(number);
        ASSERT_TRUE(std::ranges::equal(set, twin, {}, &Key::number));
    }
    EXPECT_EQ(testing::PrintToString(ze::RBTreeSet<int>{2, 1, 2}), "{ 1, 2 }");
}
