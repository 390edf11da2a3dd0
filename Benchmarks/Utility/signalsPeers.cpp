// SPDX-License-Identifier: MIT

// What others need for the work of signals.cpp, and the limits below which nothing can go.

#include <functional>
#include <list>

#include "Support/Workload.h"

#include <boost/signals2.hpp>
namespace {
struct L {
    long n = 0;
    void on(int i) { n += i; }
};
struct Fn {
    Fn* next = nullptr;
    uint16_t lock = 0;
    bool dead = false;
    virtual void call(int) = 0;
    virtual ~Fn() {}
};
struct Mf : Fn {
    L* l;
    void (L::*f)(int);
    Mf(L* a, void (L::*b)(int)) : l(a), f(b) {}
    void call(int i) override { (l->*f)(i); }
};
using S2 = boost::signals2::signal<void(int)>;
using S1 = boost::signals2::signal_type<
    void(int), boost::signals2::keywords::mutex_type<boost::signals2::dummy_mutex>>::type;
template<class S>
void b2(const std::string& name, int n) {
    bench::reg("fire/" + name + "/" + std::to_string(n), [n](State& s) {
        S g;
        L l;
        for (int i = 0; i < n; ++i)
            g.connect([&l](int k) { l.on(k); });
        bench::keep(&l);
        for (auto _ : s) {
            g(1);
            benchmark::ClobberMemory();
        }
        bench::keep(l.n);
    });
}
const bool registered = [] {
    for (int n : {0, 1, 10}) {
        auto t = "/" + std::to_string(n);
        b2<S2>("boost_signals2", n);
        b2<S1>("boost_signals2_no_mutex", n);
        bench::reg("fire/vector_std_function" + t, [n](State& s) {
            std::vector<std::function<void(int)>> g;
            L l;
            for (int i = 0; i < n; ++i)
                g.push_back([&l](int k) { l.on(k); });
            bench::keep(g);
            for (auto _ : s) {
                for (auto& f : g)
                    f(1);
                benchmark::ClobberMemory();
            }
            bench::keep(l.n);
        });
        bench::reg("fire/limit_virtual_list" + t, [n](State& s) {
            Fn* g = nullptr;
            L l;
            void (L::*f)(int) = &L::on;
            bench::keep(f);
            for (int i = 0; i < n; ++i) {
                auto x = new Mf(&l, f);
                x->next = g;
                g = x;
            }
            bench::keep(g);
            benchmark::ClobberMemory();
            for (auto _ : s) {
                for (Fn* x = g; x;) {
                    ++x->lock;
                    if (!x->dead)
                        x->call(1);
                    Fn* y = x->next;
                    if (!--x->lock && x->dead)
                        delete x;
                    x = y;
                }
                benchmark::ClobberMemory();
            }
            bench::keep(l.n);
            while (g) {
                Fn* x = g->next;
                delete g;
                g = x;
            }
        });
    }
    bench::reg("connect_disconnect/boost_signals2", [](State& s) {
        S2 g;
        L l;
        for (int i = 0; i < 10; ++i)
            g.connect([&l](int k) { l.on(k); });
        for (auto _ : s) {
            auto k = g.connect([&l](int j) { l.on(j); });
            k.disconnect();
        }
    });
    bench::reg("connect_disconnect/boost_signals2_no_mutex", [](State& s) {
        S1 g;
        L l;
        for (int i = 0; i < 10; ++i)
            g.connect([&l](int k) { l.on(k); });
        for (auto _ : s) {
            auto k = g.connect([&l](int j) { l.on(j); });
            k.disconnect();
        }
    });
    bench::reg("connect_disconnect/list_std_function", [](State& s) {
        std::list<std::function<void(int)>> g;
        L l;
        for (int i = 0; i < 10; ++i)
            g.push_back([&l](int k) { l.on(k); });
        for (auto _ : s) {
            auto i = g.insert(g.begin(), [&l](int k) { l.on(k); });
            bench::keep(g);
            g.erase(i);
        }
    });
    bench::reg("connect_disconnect/limit_two_new_delete", [](State& s) {
        L l;
        for (auto _ : s) {
            auto a = new Mf(&l, &L::on);
            bench::keep(a);
            auto b = operator new(48);
            bench::keep(b);
            delete a;
            operator delete(b);
        }
    });
    bench::reg("client_connect_die/boost_signals2_scoped", [](State& s) {
        S2 g;
        L l;
        for (int i = 0; i < 10; ++i)
            g.connect([&l](int k) { l.on(k); });
        for (auto _ : s) {
            boost::signals2::scoped_connection k = g.connect([&l](int j) { l.on(j); });
        }
    });
    bench::reg("client_connect_die/limit_three_new_delete", [](State& s) {
        L l;
        for (auto _ : s) {
            auto a = new Mf(&l, &L::on);
            bench::keep(a);
            auto b = operator new(48), d = operator new(48);
            bench::keep(b);
            bench::keep(d);
            delete a;
            operator delete(b);
            operator delete(d);
        }
    });
    return true;
}();
} // namespace
