// SPDX-License-Identifier: MIT

// What programs that were written before the additions in the style of the standard library say to
// errors, references, trees and signals: each expression compiles, has the type that it had and
// means the same. Below, what must not compile.

#include <concepts>
#include <ostream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Utility/zeRBTree.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilError.h"

namespace {

using ze::Reference;
using zeUtil::Error;

struct Base : ze::ReferenceCount {
    int value = 1;
};
struct Derived : Base {};

using Map = ze::RBTreeMap<std::string, int>;

/// The type of the expression is that one, as decltype gives it.
#define EXPECT_TYPE(type, ...) static_assert(std::same_as<type, decltype((__VA_ARGS__))>)

Error returned(int code) {
    return code == 0 ? Error() : Error(code, "code %d", code);
}

} // namespace

TEST(Expressions, OfErrorsMeanWhatTheyMeant) {
    Error error = returned(2);
    const Error& constant = error;
    EXPECT_TYPE(bool, constant == error);
    EXPECT_TYPE(bool, constant != error);
    EXPECT_TYPE(Error&, error = returned(0));
    EXPECT_TRUE(constant.code() && !returned(0).code() && Error(2, "code 2") == constant);
    EXPECT_STREQ((error = {3, "%s", "braces"}).message(), "braces");
    error = {};
    EXPECT_EQ(error, Error());
    if (Error again = returned(5); again.code() != 0)
        std::swap(error, again);
    EXPECT_EQ((error.code() ? error : Error()).code(), 5);
}

TEST(Expressions, OfReferencesMeanWhatTheyMeant) {
    Derived* const object = new Derived;
    Reference<Derived> derived = object, null;
    Reference<Base> base = derived;
    Reference<const Base> constant = base;
    EXPECT_TYPE(Derived*, derived.get());
    EXPECT_TYPE(const int&, constant->value);
    EXPECT_TYPE(bool, base == derived);
    EXPECT_TRUE(derived && !null && derived != null);
    EXPECT_TRUE(null == nullptr && nullptr == null && derived != nullptr && null == 0);
    EXPECT_TRUE(derived == object && object == derived && base == object && constant == object);
    EXPECT_TRUE(base == derived && derived == base && constant == base && derived == derived);
    EXPECT_TRUE((derived ? object : nullptr) == object && base == Reference<Base>(object));
    EXPECT_EQ(object->refs(), 3);
    base = object;
    base = std::move(derived); // gives the derived class's reference a share, and leaves it
    EXPECT_EQ(derived.get(), object);
    base = nullptr;
    base = {};
    constant = new Base;
    std::swap(derived, null);
    const Reference<Base> copies[] = {null, object, nullptr, {}};
    EXPECT_EQ(object->refs(), 3);
    EXPECT_EQ(copies[3], copies[2]);
}

TEST(Expressions, OfTreesMeanWhatTheyMeant) {
    Map map;
    const Map& constant = map;
    EXPECT_TYPE(int, constant.size());
    EXPECT_TYPE(int, map.count("a") + map.erase("a"));
    EXPECT_TYPE(int&, map["a"]);
    EXPECT_TYPE(const int*, constant.getValuePtr("a"));
    EXPECT_TYPE(Map::Iterator, map.find("a"));
    EXPECT_TYPE(Map::ConstIterator, constant.lowerBound("a"));
    EXPECT_TYPE(Map::Entry, *map.begin());
    EXPECT_TYPE(const std::string&, map.begin()->key());
    EXPECT_TYPE(int&, (*map.begin()).value());
    EXPECT_TYPE(const int&, constant.begin()->value());
    using Inserted = std::pair<Map::Iterator, bool>;
    EXPECT_TYPE(Inserted, map.insert("a", 1));
    EXPECT_TYPE(Map::Iterator, map.erase(map.insertNonUnique("a", 1)));
    EXPECT_TYPE(Map&, map = {});

    EXPECT_TRUE(map.insert("b", 2).second && !map.insert({"b"}, 3).second);
    map["a"] = 1;
    map.insertNonUnique({}, {});
    EXPECT_TRUE(map.begin() == constant.begin() && constant.find("a") != map.end());
    Map::ConstIterator place = map.begin();
    EXPECT_EQ((place++)->value() + (*place--).value() + (--map.end())->value(), 3);
    const Map none;
    Map braces{}, copy{map}, moved{std::move(copy)}, equals = {};
    EXPECT_TRUE(none.empty() && braces.empty() && moved.size() == 3 && equals.empty());
    moved = {};
    EXPECT_TRUE(moved.empty() && map.erase({"b"}) == 1 && map.erase("b") == 0);

    ze::RBTreeMap<const char*, const char*> pointers; // two pointers are no range
    pointers.insert("key", "value");
    ze::RBTreeMap<int, double> numbers;
    numbers.insert({}, {});
    EXPECT_EQ(pointers.size() + numbers.size() + numbers.erase({}), 3);
}

namespace {

std::string fired;

void voidGlobal() {
    fired += 'v';
}

struct Listener {
    void plain() { fired += 'p'; }
};

} // namespace

TEST(Expressions, OfSignalsMeanWhatTheyMeant) {
    using Connection = zeRTB::SignalBase::Connection;
    zeRTB::SignalVoid signal;
    zeRTB::SignalClient client;
    Listener listener;
    EXPECT_TYPE(Connection*, signal.connect(voidGlobal));
    signal.connect(voidGlobal);
    Connection* const lambda = signal.connect([] { fired += 'l'; }); // as a global function
    signal.connect(
        client, +[] { fired += 'c'; });
    signal.connect(&listener, &Listener::plain);
    signal.connectOwned(client, [] { fired += 'o'; });
    signal.send();
    EXPECT_EQ(fired, "opclv");
    void (*const global)() = voidGlobal;
    EXPECT_NE(signal.findGlobalCallback(reinterpret_cast<void*>(global)), nullptr);
    signal.disconnect(lambda);
    signal.disconnect(nullptr);
    signal.disconnectInstance(&listener);
    EXPECT_EQ(signal.numConnections(), 3);
}

// What must not compile, as it did not before: conversions that lose something, and mistakes.

namespace {

// One template for each form, so that what does not compile is no error.
template<class T>
concept CountsAsNumber = requires(T t) {
    t + 1;
}
|| requires(T t) {
    t < t;
}
|| requires(T t) {
    t == 0L;
}
|| std::convertible_to<T, bool>;
static_assert(!CountsAsNumber<Error> && !std::convertible_to<Error, int>);
static_assert(!std::convertible_to<int, Error> && !std::constructible_from<Error, int>);
static_assert(!std::convertible_to<Reference<Base>, bool>);
static_assert(!std::convertible_to<Reference<Base>, Base*>);

template<class A, class B>
concept Equal = requires(A a, B b) {
    a == b;
};
static_assert(!Equal<Reference<Base>, Reference<Listener>> && !Equal<Reference<Base>, int>);
static_assert(!std::constructible_from<Reference<Derived>, Reference<Base>>);
static_assert(!std::constructible_from<Reference<Base>, Reference<const Base>>);
static_assert(!std::assignable_from<Reference<Base>&, Reference<const Base>>);

static_assert(!std::convertible_to<Map::ConstIterator, Map::Iterator>);
static_assert(!std::assignable_from<decltype(std::declval<Map::Entry>().key()), std::string>);
template<class M>
concept WritesThroughConst = requires(const M& m) {
    m.begin()->value() = 1;
}
|| requires(const M& m) {
    m["a"];
}
|| requires(M& m) {
    m.begin()->key() = "a";
};
static_assert(!WritesThroughConst<Map> && !std::constructible_from<Map, int>);

template<class Signal, class F>
concept Connects = requires(Signal signal, F f) {
    signal.connect(f);
};
template<class Signal, class F>
concept ConnectsOwned = requires(Signal signal, F f) {
    signal.connectOwned(f);
};
[[maybe_unused]] const auto capturing = [n = 0](std::string) { return n; };
using Text = zeRTB::SignalArg<std::string>;
static_assert(!Connects<Text, decltype(capturing)>,
              "say connectOwned: who owns it is not to be guessed");
static_assert(ConnectsOwned<Text, decltype(capturing)>);
static_assert(!Connects<Text, void (*)()> && !Connects<zeRTB::SignalVoid, void (*)(int)>);
static_assert(!ConnectsOwned<Text, void (*)(std::string&)>);
static_assert(!std::copyable<zeRTB::SignalVoid> && !std::movable<zeRTB::SignalClient>);

// Nor do the additions lead around what holds for the rest.
static_assert(!Connects<Text, zeRTB::ScopedConnection>);
static_assert(!std::convertible_to<zeRTB::ScopedConnection&, zeRTB::SignalBase&>);
static_assert(!std::assignable_from<decltype(*std::declval<ze::RBTreeSet<int>>().begin()), int>);
template<class M>
concept InsertsHalf = requires(M m) {
    m.insert("key");
}
|| requires(M m) {
    m.insert({"key"});
};
static_assert(!InsertsHalf<Map> && !std::constructible_from<Map, const char*, const char*>);
template<class T>
concept PrintsInto = requires(T& stream, const Error& error) {
    stream << error;
};
static_assert(!PrintsInto<zeRTB::SignalVoid> && !PrintsInto<std::wostream> && !PrintsInto<int>);

} // namespace
