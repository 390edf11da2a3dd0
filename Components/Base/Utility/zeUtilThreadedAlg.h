// SPDX-License-Identifier: MIT

/// @file
/// The base classes of parallel algorithms: zeUtil::ThreadedAlg runs one function on every thread
/// of a pool, zeUtil::ThreadedChunkAlg deals out pieces of work to them.
///
/// zeUtil::ThreadPool::execute() runs an algorithm: `initialize` on the calling thread,
/// `threadFunc` on all threads, the calling one among them, which is number 0, and `finalize` on
/// the calling thread when all are through. What one of these steps has written, the next one sees.
///
/// **Progress.** zeUtil::Progress is for one thread only, so thread 0 speaks for all: it alone
/// reports, and asks whether to stop. The others learn of it through cancelled(). Nobody stops an
/// algorithm from outside: `threadFunc` asks, and returns early.
///
/// Threads: an algorithm is executed by one caller at a time, and `threadFunc` runs on several
/// threads at once. It must not throw, unless the pool is zeUtil::ThreadPool's single-threaded one.
///
/// @code
/// #include <array>
/// #include "Base/Utility/zeUtilProgress.h"
/// #include "Base/Utility/zeUtilThreadPool.h"
/// struct Squares : zeUtil::ThreadedChunkAlg {
///     std::array<int, 1000> values = {};
///     void initialize(int) override { numChunks = 10; }
///     void threadFunc(int chunk, int threadId, int) override {
///         if (cancelled(threadId))
///             return;
///         for (int i = 100 * chunk; i < 100 * (chunk + 1); ++i)
///             values[static_cast<unsigned int>(i)] = i * i;
///         updateProgress(threadId, chunk / 10.0);
///     }
/// };
/// zeUtil::Progress progress;
/// Squares squares;
/// squares.setProgress(&progress);
/// zeUtil::ThreadPool::get()->execute(squares);
/// assert(squares.values[999] == 999 * 999 && progress.get() == 0.9);
/// @endcode

#pragma once

#include <atomic>

#include "Base/zeBaseExport.h"

namespace zeUtil {

class Progress;

/// What both kinds of algorithms have: progress and cancellation, spoken for by thread 0.
class ZEBASE_API ThreadedAlgBase {
public:
    ThreadedAlgBase() = default;
    /// An algorithm is executed where it stands.
    ThreadedAlgBase(const ThreadedAlgBase&) = delete;
    ThreadedAlgBase& operator=(const ThreadedAlgBase&) = delete;
    virtual ~ThreadedAlgBase();

    /// Where to report, null for nowhere. The algorithm does not own it.
    void setProgress(Progress* progress) { progress_ = progress; }

    /// Whether to stop. Thread 0 asks the Progress each time; the others are told what thread 0 was
    /// told last. Once true, it stays true for the life of the algorithm, on all threads.
    bool cancelled(int threadId);

    /// Reports on thread 0, and does nothing on the others.
    void updateProgress(int threadId, double value);

    /// The Progress on thread 0; null on the others, or if there is none.
    Progress* getProgress(int threadId) const { return threadId == 0 ? progress_ : nullptr; }

private:
    Progress* progress_ = nullptr;
    std::atomic<bool> cancelledFlag_ = false; ///< Relaxed: it orders nothing.
};

/// An algorithm whose threads divide the work themselves, by their numbers.
class ZEBASE_API ThreadedAlg : public ThreadedAlgBase {
public:
    ~ThreadedAlg() override;

    /// Called first, with the number of threads of the pool.
    virtual void initialize(int numThreads);

    /// Called once on each thread, with its number from 0 to `numThreads` - 1.
    virtual void threadFunc(int threadId, int numThreads) = 0;

    /// Called last.
    virtual void finalize();
};

/// An algorithm whose work is cut into chunks. Each is dealt once, in rising order, to the next
/// thread that is free, so that chunks may take different times. Dealing one costs about as much as
/// an uncontended lock: give a chunk a microsecond of work, or more.
class ZEBASE_API ThreadedChunkAlg : public ThreadedAlgBase {
public:
    /// Read after initialize(), which may set it.
    int numChunks = 100;

    ~ThreadedChunkAlg() override;

    /// Called first, with the number of threads of the pool.
    virtual void initialize(int numThreads);

    /// Called once for each chunk from 0 to `numChunks` - 1, on the thread `threadId` from 0 to
    /// `numThreads` - 1.
    virtual void threadFunc(int chunk, int threadId, int numThreads) = 0;

    /// Called last.
    virtual void finalize();
};

} // namespace zeUtil
