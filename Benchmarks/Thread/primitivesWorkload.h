// SPDX-License-Identifier: MIT

/// @file
/// The workloads of primitives.cpp and its peers. All have had a second thread before they are
/// timed.
///
/// lock, semaphore: one pair of calls, uncontended. count, count_contended: one increment, alone
/// and while a second thread increments the same integer. fork_join: a second thread that waits at
/// a barrier is released, and meets the first one at the barrier again: two cycles of two parties.
/// fork_join_busy: the same while every processor has work of other threads. pingpong: one
/// semaphore post and wait, there and back between two threads.

#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Support/Workload.h"

namespace bench {

template<class F>
void regReal(const std::string& name, F f) {
    reg(name, f)->UseRealTime();
}

/// Keeps every processor busy while it lives.
class Load {
public:
    Load() {
        for (unsigned int i = 0; i < std::thread::hardware_concurrency(); ++i)
            threads_.emplace_back([this] {
                while (!stop_)
                    benchmark::ClobberMemory();
            });
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;
    ~Load() {
        stop_ = true;
        for (std::thread& thread : threads_)
            thread.join();
    }

private:
    std::atomic<bool> stop_ = false;
    std::vector<std::thread> threads_;
};

/// One worker that is parked at a barrier of two.
template<class Barrier>
class Parked {
public:
    Parked()
        : worker_([this] {
              for (barrier_.wait(); !stop_; barrier_.wait()) {
                  ++runs_;
                  barrier_.wait();
              }
          }) {}
    Parked(const Parked&) = delete;
    Parked& operator=(const Parked&) = delete;
    ~Parked() {
        stop_ = true;
        barrier_.wait();
        worker_.join();
    }

    /// Releases the worker and joins it.
    void run() {
        barrier_.wait();
        barrier_.wait();
    }

    long runs() const { return runs_; }

private:
    Barrier barrier_{2};
    bool stop_ = false;
    long runs_ = 0;
    std::thread worker_;
};

template<class Barrier>
void forkJoin(State& state) {
    Parked<Barrier> worker;
    for (auto _ : state)
        worker.run();
    require(worker.runs() == long(state.iterations()), "the worker ran each time");
}

template<class Barrier>
void regForkJoin(const std::string& peer) {
    regReal("fork_join/" + peer, forkJoin<Barrier>);
    regReal("fork_join_busy/" + peer, [](State& state) {
        const Load load;
        forkJoin<Barrier>(state);
    });
}

/// `increment` returns the new value.
template<class F>
void regCount(const std::string& peer, F increment) {
    reg("count/" + peer, [increment](State& state) {
        const int before = increment();
        for (auto _ : state)
            keep(increment());
        require(increment() == before + int(state.iterations()) + 1, "nothing was lost");
    });
    regReal("count_contended/" + peer, [increment](State& state) {
        const int before = increment();
        std::atomic<bool> stop = false;
        int others = 0;
        std::thread second([&] {
            for (; !stop; ++others)
                keep(increment());
        });
        for (auto _ : state)
            keep(increment());
        stop = true;
        second.join();
        require(increment() == before + int(state.iterations()) + others + 1, "nothing was lost");
    });
}

/// A semaphore has wait() and post().
template<class Semaphore>
void regSemaphore(const std::string& peer) {
    reg("semaphore/" + peer, [](State& state) {
        static Semaphore semaphore(0);
        for (auto _ : state) {
            semaphore.post();
            semaphore.wait();
        }
    });
    regReal("pingpong/" + peer, [](State& state) {
        static Semaphore there(0), back(0);
        std::atomic<bool> stop = false;
        std::thread second([&] {
            for (there.wait(); !stop; there.wait())
                back.post();
        });
        for (auto _ : state) {
            there.post();
            back.wait();
        }
        stop = true;
        there.post();
        second.join();
    });
}

} // namespace bench
