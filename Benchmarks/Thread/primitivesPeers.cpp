// SPDX-License-Identifier: MIT

// What the system and others take for the work of primitives.cpp, and the plain forms of our own
// rules.

#include <omp.h>
#include <pthread.h>
#include <semaphore.h>

#include <mutex>

#include "Thread/primitivesWorkload.h"

namespace {

/// A system's semaphore behind calls that are not inlined, as ours is.
class SystemSemaphore {
public:
    explicit SystemSemaphore(unsigned int value) { sem_init(&semaphore_, 0, value); }
    [[gnu::noinline]] void wait() { sem_wait(&semaphore_); }
    [[gnu::noinline]] void post() { sem_post(&semaphore_); }

private:
    sem_t semaphore_;
};

/// The rule of our barrier in its plain form: two phases, one mutex, one condition variable.
class PlainBarrier {
public:
    explicit PlainBarrier(int parties) : count_(parties) {}

    void wait() {
        pthread_mutex_lock(&mutex_);
        while (!accepting_)
            pthread_cond_wait(&condition_, &mutex_);
        if (++arrived_ == count_) {
            accepting_ = false;
            pthread_cond_broadcast(&condition_);
        } else {
            while (accepting_ && arrived_ != count_)
                pthread_cond_wait(&condition_, &mutex_);
        }
        if (--arrived_ == 0) {
            accepting_ = true;
            pthread_cond_broadcast(&condition_);
        }
        pthread_mutex_unlock(&mutex_);
    }

private:
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t condition_ = PTHREAD_COND_INITIALIZER;
    int count_;
    int arrived_ = 0;
    bool accepting_ = true;
};

class SystemBarrier {
public:
    explicit SystemBarrier(unsigned int parties) {
        pthread_barrier_init(&barrier_, nullptr, parties);
    }
    void wait() { pthread_barrier_wait(&barrier_); }

private:
    pthread_barrier_t barrier_;
};

class SpinBarrier {
public:
    explicit SpinBarrier(int parties) : count_(parties) {}

    void wait() {
        const int cycle = cycle_;
        if (++arrived_ == count_) {
            arrived_ = 0;
            ++cycle_;
            return;
        }
        for (int i = 0; cycle_ == cycle; ++i)
            if (i > 4000)
                std::this_thread::yield();
    }

private:
    int count_;
    std::atomic<int> arrived_ = 0;
    std::atomic<int> cycle_ = 0;
};

pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
std::mutex standardMutex;

/// The rule of our counting in its plain form.
[[gnu::noinline]] int stripedIncrement(int& value) {
    static pthread_mutex_t table[17]{};
    pthread_mutex_t* const stripe = &table[reinterpret_cast<uint64_t>(&value) % 17];
    pthread_mutex_lock(stripe);
    const int result = ++value;
    pthread_mutex_unlock(stripe);
    return result;
}

int stripedCount = 0;
std::atomic<int> atomicCount = 0;

void parallelRegion(State& state) {
    omp_set_num_threads(2);
    for (auto _ : state) {
#pragma omp parallel
        benchmark::ClobberMemory();
    }
}

const bool registered = [] {
    bench::reg("lock/pthread", [](State& s) {
        for (auto _ : s) {
            pthread_mutex_lock(&mutex);
            pthread_mutex_unlock(&mutex);
        }
    });
    bench::reg("lock/std", [](State& s) {
        for (auto _ : s)
            const std::lock_guard<std::mutex> guard(standardMutex);
    });
    bench::regCount("limit_plain", [] { return stripedIncrement(stripedCount); });
    bench::regCount("std_atomic", [] { return ++atomicCount; });
    bench::regSemaphore<SystemSemaphore>("sem");
    bench::regForkJoin<PlainBarrier>("limit_plain");
    bench::regForkJoin<SystemBarrier>("pthread_barrier");
    bench::regForkJoin<SpinBarrier>("limit_spin");
    bench::regReal("fork_join/openmp", parallelRegion);
    bench::regReal("fork_join_busy/openmp", [](State& s) {
        const bench::Load load;
        parallelRegion(s);
    });
    return true;
}();

} // namespace
