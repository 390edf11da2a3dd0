// SPDX-License-Identifier: MIT

// The pool and the queue with two threads working, in real time. fork_join: releasing one other
// thread into an empty function and joining it; chunks: pieces of about 80 ns dealt one at a time;
// task_tree: a binary tree of tasks of about 0.7 us, each after its two subtasks (two workers; the
// thread that drives them executes nothing); sort, sort_index: ints, and indices by ints. `one` is
// the single-threaded pool or queue. Run it with the machine idle, and again with a busy loop on
// every processor.

#include <functional>

#include "Base/Thread/zeThreadPool.h"
#include "Base/Thread/zeThreadTaskQueue.h"
#include "Base/Utility/zeUtilSMPSort.h"

#include "poolWorkload.h"

namespace {

/// Makes the pool of one thread, or another, that in force for a benchmark.
struct InForce {
    explicit InForce(int threads) {
        if (threads == 1)
            return;
        pool = std::make_unique<zeThread::Pool>(threads);
        zeUtil::ThreadPool::install(pool.get());
        queue = std::make_unique<zeThread::TaskQueue>();
        zeUtil::ThreadedTaskQueue::install(queue.get());
    }
    std::unique_ptr<zeThread::Pool> pool;
    std::unique_ptr<zeThread::TaskQueue> queue;
};

struct Empty : zeUtil::ThreadedAlg {
    void threadFunc(int, int) override {}
};

struct Chunks : zeUtil::ThreadedChunkAlg {
    void initialize(int) override { numChunks = bench::chunkCount; }
    void threadFunc(int, int, int) override { bench::workOfChunk(); }
};

struct Tree : zeUtil::ThreadedTask {
    explicit Tree(int itsDepth) : depth(itsDepth) {}
    ThreadedTask* preExecute(int index) override {
        return depth > 0 && index < 2 ? new Tree(depth - 1) : nullptr;
    }
    void execute(int) override { bench::workOfTask(); }
    int depth;
};

void forkJoin(State& s) {
    const InForce inForce(2);
    Empty empty;
    for (auto _ : s)
        zeUtil::ThreadPool::get()->execute(empty);
}

void chunks(State& s, int threads) {
    const InForce inForce(threads);
    Chunks algorithm;
    for (auto _ : s)
        zeUtil::ThreadPool::get()->execute(algorithm);
    bench::items(s, bench::chunkCount);
}

void taskTree(State& s, int threads) {
    const InForce inForce(threads);
    zeUtil::ThreadedTaskQueue* queue = zeUtil::ThreadedTaskQueue::get();
    for (auto _ : s) {
        queue->acquire();
        queue->submit(new Tree(bench::treeDepth));
        queue->release();
    }
    bench::items(s, bench::taskCount);
}

void sort(State& s, size_t n, int threads) {
    const InForce inForce(threads);
    bench::sortInts(s, n, [](int* b, int* e) { zeUtil::SMPSort(b, e, std::less<int>()); });
}

void sortIndex(State& s) {
    const InForce inForce(2);
    bench::sortIndices(s, 1000000, [](int* b, int* e, auto less) { zeUtil::SMPSort(b, e, less); });
}

const bool registered = [] {
    bench::reg("fork_join/ours", forkJoin)->UseRealTime();
    bench::reg("chunks/ours", [](State& s) { chunks(s, 2); })->UseRealTime();
    bench::reg("chunks/context_one", [](State& s) { chunks(s, 1); })->UseRealTime();
    bench::reg("task_tree/ours", [](State& s) { taskTree(s, 2); })->UseRealTime();
    bench::reg("task_tree/context_one", [](State& s) { taskTree(s, 1); })->UseRealTime();
    for (size_t n : {1000000u, 10000000u}) {
        const std::string size = "/" + std::to_string(n);
        bench::reg("sort/ours" + size, [n](State& s) { sort(s, n, 2); })->UseRealTime();
        bench::reg("sort/context_one" + size, [n](State& s) { sort(s, n, 1); })->UseRealTime();
    }
    bench::reg("sort_index/ours", sortIndex)->UseRealTime();
    return true;
}();

} // namespace
