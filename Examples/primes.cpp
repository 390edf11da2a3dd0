// SPDX-License-Identifier: MIT

// Counts primes on all processors. The work is cut into chunks, which the threads of a pool take
// one at a time; without a pool, the same code runs on one thread. Ctrl-C stops it.
//
//     $ primes 3000000
//     216816 primes below 3000000
//     $ primes 3000000 1
//     216816 primes below 3000000
//
// On a terminal it shows how far it has come.

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "Base/Thread/zeThreadPool.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/Utility/zeUtilProgress.h"

namespace {

volatile std::sig_atomic_t isInterrupted = 0;

bool isPrime(int n) {
    if (n < 2 || n % 2 == 0)
        return n == 2;
    for (int divisor = 3; divisor <= n / divisor; divisor += 2) {
        if (n % divisor == 0)
            return false;
    }
    return true;
}

/// Counts the primes below a limit, by chunks of 10,000 numbers.
class CountPrimes : public zeUtil::ThreadedChunkAlg {
public:
    explicit CountPrimes(int limit) : limit_(limit) {}

    int count() const { return count_; }

    void initialize(int numThreads) override {
        numChunks = limit_ / chunkSize + 1;
        // Each thread counts for itself, in a cache line of its own: no lock is needed.
        counts_.resize(static_cast<std::size_t>(numThreads));
    }

    void threadFunc(int chunk, int threadId, int) override {
        if (cancelled(threadId))
            return; // as for all chunks that are left
        int& count = counts_[static_cast<std::size_t>(threadId)].primes;
        for (int n = chunk * chunkSize; n < (chunk + 1) * chunkSize && n < limit_; ++n)
            count += isPrime(n);
        // Chunks are dealt in order, so that its number says how far all threads have come.
        updateProgress(threadId, (chunk + 1.0) / numChunks);
    }

    void finalize() override {
        for (const Count& count : counts_)
            count_ += count.primes;
    }

private:
    static constexpr int chunkSize = 10000;
    struct alignas(64) Count {
        int primes = 0;
    };

    int limit_;
    std::vector<Count> counts_;
    int count_ = 0;
};

void show(zeUtil::Progress* progress) {
    std::fprintf(stderr, "\r%3.0f %%", 100 * progress->get());
}

void stopIfInterrupted(zeUtil::Progress* progress) {
    if (isInterrupted)
        progress->cancel();
}

} // namespace

int main(int argc, char** argv) {
    const int limit = argc > 1 ? std::atoi(argv[1]) : 3000000;
    const auto processors = static_cast<int>(std::thread::hardware_concurrency());
    const int threads = argc > 2 ? std::atoi(argv[2]) : processors;
    if (limit < 0 || limit > 2000000000 || threads < 1) {
        std::fprintf(stderr, "usage: primes [LIMIT [THREADS]]\n");
        return 2;
    }
    std::signal(SIGINT, [](int) { isInterrupted = 1; });
    zeUtil::Progress progress;
    progress.getSigCheckCancel().connect(stopIfInterrupted);
    if (isatty(STDERR_FILENO))
        progress.getSigUpdate().connect(show);

    CountPrimes algorithm(limit);
    algorithm.setProgress(&progress);
    try {
        zeThread::Pool pool(threads);
        zeUtil::ThreadPool::install(&pool);
        zeUtil::ThreadPool::get()->execute(algorithm); // as code does that knows of no pool
    } catch (const zeUtil::Error& error) {             // a thread could not be started
        std::fprintf(stderr, "primes: %s\n", error.message());
        return 1;
    }
    if (isatty(STDERR_FILENO))
        std::fprintf(stderr, "\r     \r");
    if (progress.cancelled()) {
        std::fprintf(stderr, "primes: stopped\n");
        return 1;
    }
    std::printf("%d primes below %d\n", algorithm.count(), limit);
    return 0;
}
