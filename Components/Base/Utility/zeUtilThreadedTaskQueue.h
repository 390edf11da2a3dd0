// SPDX-License-Identifier: MIT

/// @file
/// Trees of tasks, executed by several threads: zeUtil::ThreadedTask and zeUtil::ThreadedTaskQueue.
///
/// A task is work, with other tasks that must be done before it (pre-subtasks) and after it
/// (post-subtasks), which can have subtasks themselves. The queue asks a task for them one at a
/// time, when there is room for more work, so that a large tree never stands in memory as a whole.
/// The order is:
///
/// 1. `preExecute(0)`, `preExecute(1)`, … until one gives null; the subtasks are executed.
/// 2. When all of these are done, with their own subtasks: `execute`.
/// 3. After that, `postExecute(0)`, `postExecute(1)`, … likewise.
/// 4. When all of these are done, the task is deleted.
///
/// Nothing is promised about the order of tasks that are not each other's subtasks.
///
/// **Which queue.** ThreadedTaskQueue::get() is a queue that executes everything at once on the
/// caller's thread, depth first, until an application installs another, a zeThread::TaskQueue. Its
/// recursion takes stack for each level of the tree.
///
/// **Ownership.** The queue owns, and deletes, each task that is submitted, or returned as a
/// subtask. An installed queue stays with whoever installs it.
///
/// **Cancellation.** Where the Progress of ThreadedTaskQueue::setCancelObject() is cancelled, tasks
/// that were not executed yet are deleted without, and tasks are asked for no further subtasks.
/// What both queues do with tasks on the way is said at their cancelled().
///
/// Threads: one thread drives a queue (acquire() to release()). preExecute(), postExecute() and
/// the destructor of a task run on that thread, execute() on any. A task must not throw.
///
/// @code
/// struct Sum : zeUtil::ThreadedTask { // of the numbers from `first` to `last` - 1
///     Sum(int begin, int end, int& sum) : first(begin), last(end), result(sum) {}
///     zeUtil::ThreadedTask* preExecute(int index) override {
///         if (last - first <= 1000 || index == 2)
///             return nullptr;
///         const int middle = (first + last) / 2;
///         return index == 0 ? new Sum(first, middle, parts[0]) : new Sum(middle, last, parts[1]);
///     }
///     void execute(int) override {
///         result = parts[0] + parts[1];
///         if (last - first <= 1000)
///             for (int i = first; i < last; ++i)
///                 result += i;
///     }
///     int first, last;
///     int& result;
///     int parts[2] = {0, 0};
/// };
/// int sum = 0;
/// zeUtil::ThreadedTaskQueue* queue = zeUtil::ThreadedTaskQueue::get();
/// queue->acquire();
/// queue->submit(new Sum(0, 10000, sum));
/// queue->wait();
/// queue->release();
/// assert(sum == 49995000);
/// @endcode

#pragma once

#include <atomic>

#include "Base/zeBaseExport.h"

namespace zeUtil {

class Progress;

/// Base of the tasks. Made with `new`, and given to a queue.
class ZEBASE_API ThreadedTask {
public:
    ThreadedTask() = default;
    ThreadedTask(const ThreadedTask&) = delete; ///< A queue owns each task by its address.
    ThreadedTask& operator=(const ThreadedTask&) = delete;
    virtual ~ThreadedTask();

    /// A new subtask to be done before this task, or null if there are no more. Called with 0, 1,
    /// and so on until it returns null. This one returns null.
    virtual ThreadedTask* preExecute(int index);

    /// The work, on the thread `threadIndex`, which is from 0 to the queue's getNumThreads() - 1.
    /// This one does nothing.
    virtual void execute(int threadIndex);

    /// A new subtask to be done after this task, or null if there are no more. Called with 0, 1,
    /// and so on until it returns null. This one returns null.
    virtual ThreadedTask* postExecute(int index);

    /// Spares the queue a call of execute(): the task has subtasks only. To be called before the
    /// queue has the last pre-subtask.
    void setNoExecute() { noExecute_ = true; }
    /// Whether setNoExecute() was called.
    bool getNoExecute() const { return noExecute_; }

    /// Protects the whole queue from cancellation, from the submission of this task to release().
    /// To be called before the task is submitted.
    void setNoCancel() { noCancel_ = true; }
    /// Whether setNoCancel() was not called.
    bool isCancellable() const { return !noCancel_; }

    /// The number of threads of ThreadPool::get(), on which an algorithm that the task executes
    /// would run. That is 1 while a zeThread::TaskQueue is acquired, which has the threads for
    /// itself.
    int getNumThreads() const;

private:
    bool noExecute_ = false;
    bool noCancel_ = false;
};

/// Base of the queues, and the place where one is installed for the process.
///
/// Calls come in this order: acquire(), perhaps setCancelObject(), any number of submit(), wait(),
/// release().
class ZEBASE_API ThreadedTaskQueue {
public:
    constexpr ThreadedTaskQueue() = default;
    ThreadedTaskQueue(const ThreadedTaskQueue&) = delete; ///< Hand on a pointer.
    ThreadedTaskQueue& operator=(const ThreadedTaskQueue&) = delete;
    virtual ~ThreadedTaskQueue();

    /// Takes the threads of the queue for what follows.
    virtual void acquire() = 0;

    /// Hands over a task, not null, which the queue deletes. May execute tasks before it returns,
    /// and waits while the threads have enough to do.
    virtual void submit(ThreadedTask* task) = 0;

    /// Returns when all tasks are done and deleted.
    virtual void wait() = 0;

    /// Waits, gives the threads back, and forgets cancellation with its Progress.
    virtual void release() = 0;

    /// How many threads execute tasks.
    virtual int getNumThreads() = 0;

    /// Whom to ask whether to stop, null for nobody. The queue does not own it, and asks it on the
    /// thread that drives the queue.
    virtual void setCancelObject(Progress* progress) = 0;

    /// Whether tasks are being cancelled: the Progress says so, and no task with setNoCancel() was
    /// submitted. Asks the Progress, until it has said so. The queue of getSingleThreaded() asks it
    /// each time; there such a task protects the others from its turn on, also as a subtask, and a
    /// task that is cut short is asked for one subtask more, which is deleted.
    virtual bool cancelled() = 0;

    /// The installed queue, or else the single-threaded one. Never null.
    static ThreadedTaskQueue* get();

    /// The queue that executes tasks on the caller's thread. It exists until the process ends; one
    /// thread at a time may use it.
    static ThreadedTaskQueue* getSingleThreaded();

    /// Makes `queue` the one that get() gives; null puts the single-threaded one in force again.
    static void install(ThreadedTaskQueue* queue);

private:
    ZEBASE_HIDDEN static std::atomic<ThreadedTaskQueue*> s_queue;
};

} // namespace zeUtil
