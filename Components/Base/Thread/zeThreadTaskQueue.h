// SPDX-License-Identifier: MIT

/// @file
/// The queue that executes trees of tasks on the threads of a pool: zeThread::TaskQueue.
///
/// zeUtilThreadedTaskQueue.h says what tasks are and in which order they are executed. Here the
/// workers of a Pool execute them, all `n` of them. The thread that drives the queue executes none:
/// in submit(), wait() and release() it asks tasks for subtasks, hands those that are ready to the
/// workers, at most two for each worker at a time, and deletes tasks that are done.
///
/// Threads: one thread drives a queue, that which may use its Pool. `execute` of tasks runs on the
/// workers, everything else of a task on the driving thread.
///
/// @code
/// #include <atomic>
/// #include "Base/Thread/zeThreadPool.h"
/// static std::atomic<int> done = 0;
/// struct Leaf : zeUtil::ThreadedTask {
///     void execute(int) override { ++done; }
/// };
/// struct Root : zeUtil::ThreadedTask {
///     ThreadedTask* preExecute(int index) override { return index < 100 ? new Leaf : nullptr; }
///     void execute(int) override { assert(done == 100); }
/// };
/// zeThread::Pool pool(2);
/// zeUtil::ThreadPool::install(&pool);
/// zeThread::TaskQueue queue;
/// zeUtil::ThreadedTaskQueue::install(&queue);
/// queue.acquire();
/// queue.submit(new Root);
/// queue.release(); // waits, too
/// assert(done == 100);
/// @endcode

#pragma once

#include "Base/Utility/zeUtilThreadedTaskQueue.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

class QueueImpl;

/// A queue over the Pool that is installed when it is made.
///
/// **Cancellation.** Tasks that workers have, or are about to get, are still executed. So is a task
/// whose pre-subtasks were all asked for before the cancellation, once these are done. Tasks that
/// come back from the workers are asked for no post-subtasks. A submitted task with setNoCancel()
/// protects the whole queue, unless it is submitted when the queue is cancelled already: then it is
/// deleted, as every other. A subtask with setNoCancel() protects nothing.
class ZEBASE_API TaskQueue : public zeUtil::ThreadedTaskQueue {
public:
    /// A Pool of at least one thread must be installed, and outlive the queue. The queue can be
    /// made without, but not used. Throws the zeUtil::Error of Semaphore or Condition.
    TaskQueue();

    /// The queue must have been released: with the workers still in it, the destructor would not
    /// return. One that is installed is uninstalled.
    ~TaskQueue() override;

    /// Takes all workers of the Pool, and uninstalls the Pool, which must not be executing. Not to
    /// be nested, nor called for two queues on the same Pool at once.
    void acquire() override;

    /// Takes over the task. Returns when its tree has been looked at as far as the workers have
    /// room; that is, waits while each of them has two tasks ahead. Not to be called by a task.
    void submit(zeUtil::ThreadedTask* task) override;

    void wait() override;

    /// Also installs the Pool again, even if it was not installed before acquire().
    void release() override;

    /// The number that the Pool was made with; 1 without one.
    int getNumThreads() override;

    /// A cancellation that the queue has noticed stays, whatever Progress comes next, until
    /// release(); only with null the queue is not cancelled.
    void setCancelObject(zeUtil::Progress* progress) override;

    bool cancelled() override;

private:
    QueueImpl* impl_;
    bool ownsImpl_;
};

} // namespace zeThread
