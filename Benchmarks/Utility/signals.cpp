// SPDX-License-Identifier: MIT

// fire: one firing of a signal with one int argument and 0, 1 or 10 connected member functions,
// each adding
//   to a counter. connect_disconnect: one member function to and from a signal that has 10.
// client_connect_die: the same through a listener's SignalClient, whose end severs the connection.

#include "Base/Utility/zeRTBSignal.h"
#include "Support/Workload.h"

namespace {

struct Listener {
    void on(int i) { sum += i; }
    long sum = 0;
};

using Signal = zeRTB::SignalArg<int>;

void connect(Signal& signal, Listener& listener, int n) {
    for (int i = 0; i < n; ++i)
        signal.connect(&listener, &Listener::on);
}

void fire(State& s, int n) {
    Signal signal;
    Listener listener;
    connect(signal, listener, n);
    bench::keep(&signal);
    bench::keep(&listener);
    for (auto _ : s) {
        signal.send(1);
        benchmark::ClobberMemory();
    }
    bench::require(listener.sum == long(s.iterations()) * n, "every connection was called");
}

const bool registered = [] {
    for (int n : {0, 1, 10})
        bench::reg("fire/ours/" + std::to_string(n), [n](State& s) { fire(s, n); });
    bench::reg("connect_disconnect/ours", [](State& s) {
        Signal signal;
        Listener listener;
        connect(signal, listener, 10);
        for (auto _ : s)
            signal.disconnect(signal.connect(&listener, &Listener::on));
    });
    bench::reg("client_connect_die/ours", [](State& s) {
        Signal signal;
        Listener listener;
        connect(signal, listener, 10);
        for (auto _ : s) {
            zeRTB::SignalClient client;
            signal.connect(client, &listener, &Listener::on);
        }
    });
    return true;
}();

} // namespace
