// SPDX-License-Identifier: MIT

// What others need for the work of pool.cpp, with two threads: oneTBB, OpenMP, and the parallel
// mode of the standard library. limit_mandated_barrier is one mutex and one condition variable
// without any spinning, limit_spin_barrier never sleeps. TBB may run both halves of a fork on the
// caller.

#include <omp.h>
#include <pthread.h>

#include <atomic>
#include <memory>
#include <thread>

#include "poolWorkload.h"
#include <parallel/algorithm>
#include <tbb/tbb.h>

namespace {

/// Two phases: all arrive, then all leave.
struct MandatedBarrier {
    void wait() {
        pthread_mutex_lock(&mutex);
        while (!accepting)
            pthread_cond_wait(&condition, &mutex);
        if (++arrived == 2) {
            accepting = false;
            pthread_cond_broadcast(&condition);
        } else {
            while (accepting && arrived != 2)
                pthread_cond_wait(&condition, &mutex);
        }
        if (--arrived == 0) {
            accepting = true;
            pthread_cond_broadcast(&condition);
        }
        pthread_mutex_unlock(&mutex);
    }
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
    int arrived = 0;
    bool accepting = true;
};

struct SpinBarrier {
    void wait() {
        const int cycle = cycles;
        if (++arrived == 2) {
            arrived = 0;
            ++cycles;
        }
        for (int i = 0; cycles == cycle; ++i) {
            if (i > 4000)
                std::this_thread::yield();
        }
    }
    std::atomic<int> arrived = 0, cycles = 0;
};

/// Releases one worker, parked at a barrier, into nothing, and joins it.
template<class Barrier>
void forkJoin(State& s) {
    Barrier barrier;
    std::atomic<bool> stop = false;
    std::thread worker([&] {
        for (;;) {
            barrier.wait();
            if (stop)
                return;
            barrier.wait();
        }
    });
    for (auto _ : s) {
        barrier.wait();
        barrier.wait();
    }
    stop = true;
    barrier.wait();
    worker.join();
}

void forkJoinOpenMP(State& s) {
    for (auto _ : s) {
#pragma omp parallel
        benchmark::ClobberMemory();
    }
}

void forkJoinTbb(State& s) {
    const auto nothing = [](int) { benchmark::ClobberMemory(); };
    for (auto _ : s)
        tbb::parallel_for(0, 2, nothing, tbb::static_partitioner());
}

void chunksOpenMP(State& s) {
    for (auto _ : s) {
#pragma omp parallel for schedule(dynamic, 1)
        for (int i = 0; i < bench::chunkCount; ++i)
            bench::workOfChunk();
    }
    bench::items(s, bench::chunkCount);
}

void chunksTbb(State& s) {
    for (auto _ : s)
        tbb::parallel_for(0, bench::chunkCount, [](int) { bench::workOfChunk(); });
    bench::items(s, bench::chunkCount);
}

void chunksTbbOneByOne(State& s) {
    for (auto _ : s)
        tbb::parallel_for(
            tbb::blocked_range<int>(0, bench::chunkCount, 1),
            [](const tbb::blocked_range<int>& range) {
                for (int i = range.begin(); i < range.end(); ++i)
                    bench::workOfChunk();
            },
            tbb::simple_partitioner());
    bench::items(s, bench::chunkCount);
}

void treeTbb(int depth) {
    if (depth > 0) {
        tbb::task_group group;
        group.run([depth] { treeTbb(depth - 1); });
        treeTbb(depth - 1);
        group.wait();
    }
    bench::workOfTask();
}

void treeOpenMP(int depth) {
    if (depth > 0) {
#pragma omp task
        treeOpenMP(depth - 1);
#pragma omp task
        treeOpenMP(depth - 1);
#pragma omp taskwait
    }
    bench::workOfTask();
}

void taskTreeTbb(State& s) {
    for (auto _ : s)
        treeTbb(bench::treeDepth);
    bench::items(s, bench::taskCount);
}

void taskTreeOpenMP(State& s) {
    for (auto _ : s) {
#pragma omp parallel
#pragma omp single
        treeOpenMP(bench::treeDepth);
    }
    bench::items(s, bench::taskCount);
}

template<class Sort>
void regSort(const std::string& name, Sort sort) {
    for (size_t n : {1000000u, 10000000u})
        bench::reg("sort/" + name + "/" + std::to_string(n), [n, sort](State& s) {
            bench::sortInts(s, n, [sort](int* b, int* e) { sort(b, e, std::less<int>()); });
        })->UseRealTime();
    bench::reg("sort_index/" + name, [sort](State& s) {
        bench::sortIndices(s, 1000000, sort);
    })->UseRealTime();
}

const bool registered = [] {
    omp_set_num_threads(2);
    static const tbb::global_control control(tbb::global_control::max_allowed_parallelism, 2);
    bench::reg("fork_join/openmp", forkJoinOpenMP)->UseRealTime();
    bench::reg("fork_join/context_tbb", forkJoinTbb)->UseRealTime();
    bench::reg("fork_join/limit_mandated_barrier", forkJoin<MandatedBarrier>)->UseRealTime();
    bench::reg("fork_join/limit_spin_barrier", forkJoin<SpinBarrier>)->UseRealTime();
    bench::reg("chunks/openmp_dynamic_1", chunksOpenMP)->UseRealTime();
    bench::reg("chunks/tbb_auto", chunksTbb)->UseRealTime();
    bench::reg("chunks/tbb_one_by_one", chunksTbbOneByOne)->UseRealTime();
    bench::reg("task_tree/tbb_task_group", taskTreeTbb)->UseRealTime();
    bench::reg("task_tree/openmp_tasks", taskTreeOpenMP)->UseRealTime();
    regSort("gnu_parallel", [](int* b, int* e, auto less) { __gnu_parallel::sort(b, e, less); });
    regSort("tbb", [](int* b, int* e, auto less) { tbb::parallel_sort(b, e, less); });
    regSort("std_sort", [](int* b, int* e, auto less) { std::sort(b, e, less); });
    return true;
}();

} // namespace
