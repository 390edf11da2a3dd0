// SPDX-License-Identifier: MIT

// What locks, waits and counts cost; primitivesWorkload.h says what is measured.

#include "Base/Thread/zeThreadAtomic.h"
#include "Base/Thread/zeThreadBarrier.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadSemaphore.h"

#include "Thread/primitivesWorkload.h"

namespace {

zeThread::Mutex mutex;
int count = 0;

const bool registered = [] {
    std::thread([] {}).join();
    bench::reg("lock/ours", [](State& s) {
        for (auto _ : s) {
            mutex.lock();
            mutex.unlock();
        }
    });
    bench::regCount("ours", [] { return zeThread::atomicIncrement(count); });
    bench::regSemaphore<zeThread::Semaphore>("ours");
    bench::regForkJoin<zeThread::Barrier>("ours");
    return true;
}();

} // namespace
