// SPDX-License-Identifier: MIT

#include "Base/Utility/zeRTBSignal.h"

#include <concepts>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Utility/zeRTBAsyncSignal.h"
#include "Support/AllocationCount.h"

namespace {

using zeRTB::ScopedConnection;
using zeRTB::SignalBase;
using zeRTB::SignalClient;
using zeRTB::SignalVoid;

/// A scene of callbacks that write their letter to a log and then do what the case asks for. Counts
/// the function objects alive, so that each case can say when one goes.
class SignalScene : public testing::Test {
protected:
    class Callback : public zeRTB::FunctionVoid {
    public:
        Callback(SignalScene& scene, char letter, std::function<void()> body)
            : scene_(scene), letter_(letter), body_(std::move(body)) {
            ++scene_.alive;
        }
        ~Callback() override {
            --scene_.alive;
            if (onDestroy)
                onDestroy();
        }
        void call() override {
            scene_.log += letter_;
            if (body_)
                body_();
            scene_.log += '.'; // reads a field: a function deleted while it runs is caught here
        }
        bool isInstance(void* instance) override { return instance == &scene_.who[letter_ - 'A']; }
        bool isGlobalFunction(void* function) override { return isInstance(function); }

        std::function<void()> onDestroy;

    private:
        SignalScene& scene_;
        char letter_;
        std::function<void()> body_;
    };

    Callback* make(char letter, std::function<void()> body = nullptr) {
        return new Callback(*this, letter, std::move(body));
    }
    SignalBase::Connection* add(char letter, std::function<void()> body = nullptr) {
        return signal->addCallback(make(letter, std::move(body)));
    }

    /// What one firing calls: the letters, each followed by a point when its call has returned.
    std::string fired() {
        log.clear();
        signal->send();
        return log;
    }

    char who[26] = {}; // addresses to be found by
    int alive = 0;
    std::string log;
    SignalVoid* signal = new SignalVoid;
    SignalClient* client = new SignalClient;
    SignalBase::Connection* self = nullptr;

    void TearDown() override {
        delete signal;
        delete client;
        EXPECT_EQ(alive, 0);
    }
};

/// A listener whose functions return something, are const, overloaded or take references.
struct Shapes {
    virtual ~Shapes() = default;
    virtual void nothing() { note("base"); }
    int returning(std::string s) { return note('r' + s); }
    int constant(const std::string& s) const { return note('c' + s); }
    void byReference(const std::string& s) { note('&' + s); }
    void overloaded(std::string s) noexcept { note('o' + s); }
    void overloaded(int) {}
    std::size_t voidless() const { return static_cast<std::size_t>(note("v")); }
    double three(std::string_view a, const void*, long c) const {
        return note(a.data()), double(c);
    }

    static int note(const std::string& s) {
        log += s + ' ';
        return 1;
    }
    static inline std::string log;
};
struct Derived : Shapes {
    void nothing() override { note("derived"); }
};
int globalReturning(const std::string& s) {
    return Shapes::note('g' + s);
}
void globalOverloaded(std::string s) noexcept {
    Shapes::note('G' + s);
}
[[maybe_unused]] void globalOverloaded(int) {}
void global() {
    Shapes::note("global");
}

static_assert(sizeof(SignalVoid) == sizeof(void*), "a class can embed many signals");
static_assert(!std::is_copy_constructible_v<SignalVoid>);
static_assert(sizeof(ScopedConnection) == sizeof(void*) && !std::copyable<ScopedConnection>);

} // namespace

TEST_F(SignalScene, RunningConnectionThatEndsStaysUntilTheFiringLeavesIt) {
    add('A');
    self = add('B', [&] {
        signal->disconnect(self);
        signal->disconnect(self); // asking twice is harmless
        EXPECT_EQ(signal->numConnections(), 2);
        EXPECT_EQ(signal->findInstance(&who['B' - 'A']), nullptr);
        EXPECT_EQ(signal->findGlobalCallback(&who['B' - 'A']), self) << "unlike findInstance";
    });
    EXPECT_EQ(fired(), "B.A.");
    EXPECT_EQ(signal->numConnections(), 1);
    EXPECT_EQ(alive, 1);
}

TEST_F(SignalScene, ConnectionsAheadAndBehindGoAtOnce) {
    auto* a = add('A');
    auto* b = add('B');
    SignalBase::Connection* d = nullptr;
    add('C', [&] {
        signal->disconnect(b); // the one that would be next
        signal->disconnect(d); // the one that has been called
        EXPECT_EQ(alive, 2);
        add('N'); // stands ahead: waits for the next firing
    });
    d = add('D');
    EXPECT_EQ(fired(), "D.C.A.");
    SignalVoid other;
    other.connectOwned([] {});
    other.disconnect(a); // not its own
    other.disconnect(nullptr);
    EXPECT_EQ(signal->numConnections(), 3);
    signal->disconnect(a);
    EXPECT_EQ(alive, 2);
}

TEST_F(SignalScene, NestedFiringSkipsWhatEndedAndTheOuterOneGoesOn) {
    add('A');
    self = add('B', [&] {
        if (self->lockCount == 1) {
            signal->send();
            EXPECT_EQ(self->lockCount, 1);
            EXPECT_TRUE(self->pendingDestroy);
            signal->send(); // no longer calls B
        } else {
            EXPECT_EQ(self->lockCount, 2);
            signal->disconnect(self);
        }
    });
    EXPECT_EQ(fired(), "BB.A.A..A.");
    EXPECT_EQ(alive, 1);
}

TEST_F(SignalScene, SignalMayBeDestroyedInsideANestedFiring) {
    add('Z');
    add('A', [&] {
        delete signal;
        signal = nullptr;
        EXPECT_EQ(alive, 2) << "the running ones survive until they return";
    });
    self = add('B', [&] {
        if (self->lockCount == 1)
            signal->send();
    });
    EXPECT_EQ(fired(), "BB.A..");
    EXPECT_EQ(alive, 0);
}

TEST_F(SignalScene, ClientMayDieInsideTheCallbackItIsTiedTo) {
    add('A');
    signal->addCallback(make('B',
                             [&] {
                                 delete client;
                                 client = nullptr;
                                 EXPECT_EQ(signal->numConnections(), 2);
                                 EXPECT_EQ(alive, 2);
                             }),
                        *client);
    EXPECT_EQ(fired(), "B.A.");
    EXPECT_EQ(alive, 1);
}

TEST_F(SignalScene, TiedConnectionEndsWithWhicheverSideGoesFirst) {
    const std::function<void()> ends[] = {
        [&] { client = (delete client, new SignalClient); },
        [&] { signal = (delete signal, new SignalVoid); },
        [&] { signal->disconnect(self); },
        [&] { signal->disconnectInstance(&who[0]); },
    };
    for (const auto& end : ends) {
        self = signal->addCallback(make('A'), *client);
        EXPECT_EQ(client->numConnections(), 1);
        EXPECT_EQ(client->findInstance(&who[0]), nullptr) << "the client's half has no function";
        client->disconnectInstance(&who[0]);
        EXPECT_EQ(fired(), "A.");
        end();
        EXPECT_FALSE(client->isConnected());
        EXPECT_FALSE(signal->isConnected());
        EXPECT_EQ(alive, 0);
    }
}

TEST_F(SignalScene, DisconnectInstanceEndsAllAndSparesTheRunningOneUntilItReturns) {
    add('A');
    add('B');
    self = add('A', [&] {
        signal->disconnectInstance(&who[0]);
        EXPECT_EQ(alive, 2);
    });
    EXPECT_EQ(signal->findInstance(&who[0]), self) << "the newest";
    EXPECT_EQ(fired(), "A.B.");
    EXPECT_EQ(signal->numConnections(), 1);
}

TEST_F(SignalScene, DyingSignalSurvivesFunctionsThatEndTheirSiblings) {
    auto* other = new SignalClient;
    signal->addCallback(make('A'), *other);
    signal->addCallback(make('B'), *client);
    auto* last = make('C');
    last->onDestroy = [&] {
        delete other;
        EXPECT_FALSE(signal->isConnected());
        EXPECT_EQ(alive, 1);
    };
    signal->addCallback(last, *client);
    signal->~SignalVoid();
    EXPECT_EQ(alive, 0);
    EXPECT_FALSE(client->isConnected());
    new (signal) SignalVoid;
}

TEST(Signal, PassesReferencesThrough) {
    zeRTB::SignalArg<int&> signal;
    signal.connect(+[](int& n) { n *= 2; });
    signal.connectOwned([](int& n) { n *= 2; });
    int n = 1;
    signal.send(n);
    EXPECT_EQ(n, 4);
}

TEST(Signal, ConnectsFunctionsOfEveryShape) {
    const Shapes constant;
    Derived listener;
    SignalClient client;
    zeRTB::SignalArg<std::string> text;
    text.connect(&listener, &Shapes::returning);
    text.connect(&listener, &Shapes::constant);
    text.connect(&constant, &Shapes::constant);
    text.connect(&listener, &Shapes::byReference);
    text.connect(client, &listener, &Shapes::byReference);
    text.connect(&listener, &Shapes::overloaded);
    text.connect(&globalReturning);
    auto* connection = text.connect(client, globalOverloaded);
    text.connect(client, &globalReturning);
    EXPECT_EQ(text.findGlobalCallback(reinterpret_cast<void*>(
                  static_cast<void (*)(std::string) noexcept>(&globalOverloaded))),
              connection);
    void* const instance = const_cast<Shapes*>(&constant);
    EXPECT_NE(text.findInstance(instance), nullptr);
    EXPECT_EQ(text.findGlobalCallback(instance), nullptr);
    EXPECT_EQ(text.findInstance(reinterpret_cast<void*>(&globalReturning)), nullptr);
    text.send("x"); // each callback gets a value of its own
    EXPECT_EQ(std::exchange(Shapes::log, ""), "gx Gx gx ox &x &x cx cx rx ");
    EXPECT_EQ(client.numConnections(), 3);

    SignalVoid none;
    none.connect(&constant, &Shapes::voidless);
    none.connect(client, &constant, &Shapes::voidless);
    none.connect([] { Shapes::note("lambda"); });
    auto* plain = none.connect(global);
    EXPECT_EQ(none.findGlobalCallback(reinterpret_cast<void*>(&global)), plain);
    none.connect(&listener, &Shapes::nothing); // a base's member, called virtually
    zeRTB::Signal3Args<const char*, void*, int> three;
    three.connect(&constant, &Shapes::three);
    none.send();
    three.send("3", nullptr, 0);
    EXPECT_EQ(std::exchange(Shapes::log, ""), "derived global lambda v v 3 ");
}

TEST(Signal, OwnsACallable) {
    const auto shared = std::make_shared<int>(0);
    zeRTB::SignalArg<int> signal;
    auto client = std::make_unique<SignalClient>();
    const auto add = [shared](int n) { return *shared += n; };
    signal.connectOwned(*client,
                        [kept = std::make_unique<int>(10), add](int n) { add(*kept * n); });
    signal.connectOwned(std::ref(add));
    signal.send(1);
    EXPECT_EQ(*shared, 11);
    client.reset();
    EXPECT_EQ(shared.use_count(), 2); // this one and `add`'s
    EXPECT_EQ(signal.numConnections(), 1);
}

TEST_F(SignalScene, ScopedConnectionEndsWhenItIsDropped) {
    const auto counted = std::make_shared<int>(0);
    std::vector<ScopedConnection> kept;
    for (const char letter : {'A', 'B', 'C'}) // growing moves the others
        kept.push_back(signal->connectScoped([this, letter, counted] { log += letter; }));
    kept[1] = std::move(kept[0]); // ends B
    auto& same = kept[1];
    kept[1] = std::move(same);
    EXPECT_TRUE(kept[1].connected() && !kept[0].connected());
    EXPECT_EQ(fired(), "CA");
    kept[2].disconnect();
    EXPECT_EQ(fired() + std::to_string(counted.use_count()), "A2");
    signal = (delete signal, new SignalVoid); // the signal goes first
    EXPECT_TRUE(!kept[1].connected() && counted.use_count() == 1);

    const Shapes constant;
    Derived listener;
    const ScopedConnection members[] = {signal->connectScoped(&constant, &Shapes::voidless),
                                        signal->connectScoped(&listener, &Shapes::nothing),
                                        signal->connectScoped(global)};
    signal->send();
    EXPECT_EQ(std::exchange(Shapes::log, ""), "global derived v ");
}

TEST_F(SignalScene, ScopedConnectionMayBeDroppedInsideAFiring) {
    ScopedConnection before, own, after;
    const auto note = std::make_shared<char>('O');
    before = signal->connectScoped([this] { log += 'B'; });
    own = signal->connectScoped([&, note] {
        own.disconnect();
        before.disconnect();
        after = {};
        EXPECT_FALSE(own.connected());
        EXPECT_EQ(note.use_count(), 2) << "stays until the firing has left it";
        log += *note;
    });
    after = signal->connectScoped([this] { log += 'A'; });
    EXPECT_EQ(fired(), "AO");
    EXPECT_TRUE(note.use_count() == 1 && !signal->isConnected());
    auto owned = std::make_shared<ScopedConnection>(); // by its own callable
    *owned = signal->connectScoped([this, owned] { (log += 'S', owned->disconnect()); });
    owned.reset();
    EXPECT_EQ(fired() + fired(), "S");
    own = signal->connectScoped([&] { signal = (delete signal, new SignalVoid); });
    signal->send();
    EXPECT_FALSE(own.connected());
    const auto anew = [&](void*) { own = signal->connectScoped([this] { log += 'N'; }); };
    own = signal->connectScoped([last = std::shared_ptr<void>(nullptr, anew)] {});
    own = {}; // what ends may connect anew
    EXPECT_EQ(fired(), "N");
}

TEST(Signal, LeavesNothingBehindWhereMemoryRunsOut) {
    Derived listener;
    SignalVoid signal;
    SignalClient client;
    for (std::size_t n : {1u, 2u, 3u}) { // the function, the client's half, the signal's half
        failAllocation(n);
        EXPECT_THROW(signal.connect(client, &listener, &Shapes::nothing), std::bad_alloc);
        failAllocation(0);
        EXPECT_EQ(client.numConnections() + signal.numConnections(), 0) << n;
    }
}

TEST(AsyncSignal, FiresLaterWithACopyOfTheArgument) {
    zeRTB::SignalArg<std::string> signal;
    signal.connect(&globalReturning);
    std::string argument = "now";
    zeRTB::AsyncSignalArg<zeRTB::SignalArg<std::string>> later(&signal, argument);
    argument = "changed";
    static_cast<zeRTB::AsyncSignal&>(later).send();
    later.send();
    EXPECT_EQ(std::exchange(Shapes::log, ""), "gnow gnow ");
}
