// SPDX-License-Identifier: MIT

// What programs that were written before the additions in the style of the standard library say to
// errors, references and trees: each expression compiles and means the same. Below, what must not
// compile.

#include <concepts>
#include <sstream>
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
struct Listener {
    void take(std::string) {}
    void change(std::string&) {}
};
[[maybe_unused]] void global() {}

using Map = ze::RBTreeMap<std::string, int>;
using Numbers = ze::RBTreeMap<int, double>;
using Text = zeRTB::SignalArg<std::string>;

/// Whether the expression in `t`, a `Type&`, compiles.
#define COMPILES(Type, ...)                                                                        \
    ([]<class T>(T*) {                                                                             \
        return requires(T & t) {                                                                   \
            __VA_ARGS__;                                                                           \
        };                                                                                         \
    }(static_cast<Type*>(nullptr)))

// A program's own ways to print.
std::ostream& operator<<(std::ostream& stream, const Error&) {
    return stream << "own";
}
std::ostream& operator<<(std::ostream& stream, const Reference<Base>&) {
    return stream << "own";
}
struct Log : std::ostringstream {};
template<class T>
Log& operator<<(Log& log, const T&) {
    static_cast<std::ostream&>(log) << "log";
    return log;
}

} // namespace

TEST(Expressions, OfErrorsMeanWhatTheyMeant) {
    Error error(2, "code %d", 2);
    EXPECT_TRUE(error.code() && !Error().code() && error == Error(2, "code 2"));
    EXPECT_STREQ((error = {3, "%s", "braces"}).message(), "braces");
    EXPECT_TRUE((error = {}) == Error() && error != Error(5, ""));
    EXPECT_EQ((error.code() ? error : Error(5, "")).code(), 5);
}

TEST(Expressions, OfReferencesMeanWhatTheyMeant) {
    Derived* const object = new Derived;
    Reference<Derived> derived = object, null;
    Reference<Base> base = derived;
    Reference<const Base> constant = base;
    EXPECT_TRUE(derived && !null && derived != null);
    EXPECT_TRUE(null == nullptr && nullptr == null && derived != nullptr && null == 0);
    EXPECT_TRUE(derived == object && object == derived && base == object && constant == object);
    EXPECT_TRUE(base == derived && derived == base && constant == base && derived == derived);
    EXPECT_TRUE((derived ? object : nullptr) == object && base == Reference<Base>(object));
    EXPECT_EQ(object->refs(), 3);
    EXPECT_EQ((base = std::move(derived)), derived) << "shares, and leaves the derived class's";
    base = nullptr;
    base = {};
    constant = new Base;
    const Reference<Base> copies[] = {null, object, nullptr, {}};
    EXPECT_TRUE(object->refs() == 2 && copies[3] == copies[2]);
}

TEST(Expressions, PrintAsTheProgramSays) {
    std::ostringstream stream;
    Log log;
    stream << Error();
    stream << Reference<Base>();
    log << Error();
    log << Reference<Base>();
    EXPECT_EQ(stream.str() + log.str(), "ownownloglog");
}

TEST(Expressions, OfTreesMeanWhatTheyMeant) {
    Map map;
    const Map& constant = map;
    EXPECT_TRUE(map.insert("b", 2).second && !map.insert({"b"}, 3).second);
    map["a"] = 1;
    map.insertNonUnique({}, {});
    EXPECT_TRUE(map.begin() == constant.begin() && constant.find("a") != map.end());
    EXPECT_EQ((map.begin()++)->value() + (*map.begin()).value() + (--map.end())->value(), 2);
    Map braces{}, copy{map}, moved{std::move(copy)}, equals = {};
    EXPECT_TRUE(braces.empty() && moved.size() == 3 && equals.empty());
    EXPECT_TRUE((moved = {}).empty() && map.erase({"b"}) == 1 && map.erase("b") == 0);

    ze::RBTreeMap<const char*, const char*> pointers; // two pointers are no range
    Numbers numbers;
    EXPECT_TRUE(pointers.insert("key", "value").second && numbers.insert({}, {}).second);
    EXPECT_EQ(numbers.erase({}), 1);
}

// What must not compile, as it did not before: conversions that lose something, and mistakes.

namespace {

static_assert(COMPILES(Error, t == t) && COMPILES(Map, t.insert("key", 1)));
static_assert(!COMPILES(Error, t + 1) && !COMPILES(Error, t < t) && !COMPILES(Error, t == 0L));
static_assert(!std::convertible_to<Error, bool> && !std::convertible_to<Error, int>);
static_assert(!COMPILES(zeRTB::SignalVoid, t << Error()) && !COMPILES(int, t << Error()));

static_assert(!std::convertible_to<Reference<Base>, bool>);
static_assert(!std::convertible_to<Reference<Base>, Base*>);
static_assert(!COMPILES(Reference<Base>, t + 1) && !COMPILES(Reference<Base>, t < t));
static_assert(!COMPILES(Reference<Base>, t == 1) && !COMPILES(Reference<Base>, t == true));
static_assert(!COMPILES(Reference<Base>, t == Reference<Listener>()));
static_assert(!std::constructible_from<Reference<Derived>, Reference<Base>>);
static_assert(!std::constructible_from<Reference<Base>, Reference<const Base>>);

static_assert(!COMPILES(Map, t.begin()->key() = "a") && !COMPILES(const Map, t["a"]));
static_assert(!COMPILES(const Map, t.begin()->value() = 1));
static_assert(!COMPILES(ze::RBTreeSet<int>, *t.begin() = 1));
static_assert(!COMPILES(Map, t.insert("key")) && !COMPILES(Map, t.insert({"key"})));
static_assert(!std::constructible_from<Map, const char*, const char*>);

[[maybe_unused]] const auto capturing = [n = 0](std::string) { return n; };
static_assert(!COMPILES(Text, t.connect(capturing)) && COMPILES(Text, t.connectOwned(capturing)),
              "say connectOwned: who owns it is not to be guessed");
static_assert(!COMPILES(Text, t.connect(global)) && !COMPILES(Text, t.connectOwned(global)));
static_assert(!COMPILES(Text, t.connectOwned([](std::string&) {})));
static_assert(COMPILES(Text, t.connect(new Listener, &Listener::take)));
static_assert(!COMPILES(Text, t.connect(new const Listener, &Listener::take)));
static_assert(!COMPILES(Text, t.connect(new Listener, &Listener::change)));
static_assert(!COMPILES(Text, t.connect(zeRTB::ScopedConnection())));
static_assert(!COMPILES(zeRTB::ScopedConnection, static_cast<zeRTB::SignalBase&>(t)));
static_assert(!std::movable<zeRTB::SignalClient>);

} // namespace
