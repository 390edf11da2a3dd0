// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadTaskQueue.h"

#include <atomic>
#include <cassert>
#include <new>
#include <utility>

#include "Base/Thread/zeThreadCondition.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadPool.h"
#include "Base/Thread/zeThreadPoolImpl.h"
#include "Base/Thread/zeThreadSemaphore.h"
#include "Base/Thread/zeThreadSpinImpl.h"
#include "Base/Utility/zeBlockAllocator.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilInterval.h"
#include "Base/Utility/zeUtilProgress.h"

namespace zeThread {

namespace {

enum State {
    StatePreExecute,  ///< Being asked for pre-subtasks.
    StateWaitPre,     ///< Asked for all of them; some are alive.
    StateExecute,     ///< Ready for a worker, or at one.
    StatePostExecute, ///< Executed; being asked for post-subtasks.
    StateWaitPost,    ///< Asked for all of them; some are alive.
    StateDone,        ///< To be destroyed.
};

/// A task in the queue. It is in the hands of one thread at a time: of a worker from the moment it
/// is taken from the ready list until it is appended to the finished list, of the driving thread
/// otherwise.
struct TaskRecord {
    zeUtil::ThreadedTask* task; ///< Owned.
    int children = 0;           ///< Subtasks that are alive.
    int index = 0;              ///< Of the subtask to ask for next.
    State state = StatePreExecute;
    TaskRecord* parent;         ///< Null for a submitted task.
    TaskRecord* next = nullptr; ///< In the one list that the record stands in.
    bool cancelled = false;     ///< Not to be executed, nor asked for subtasks.

    TaskRecord(zeUtil::ThreadedTask* itsTask, TaskRecord* itsParent)
        : task(itsTask), parent(itsParent) {}
};

/// A list of records, linked through `next`.
class RecordList {
public:
    TaskRecord* first() const { return first_; }
    int count() const { return count_; }

    void append(TaskRecord* record) {
        record->next = nullptr;
        (last_ ? last_->next : first_) = record;
        last_ = record;
        ++count_;
    }
    void push(TaskRecord* record) {
        record->next = first_;
        first_ = record;
        if (!last_)
            last_ = record;
        ++count_;
    }
    TaskRecord* pop() {
        TaskRecord* const record = first_;
        first_ = record->next;
        if (!first_)
            last_ = nullptr;
        --count_;
        return record;
    }

private:
    TaskRecord* first_ = nullptr;
    TaskRecord* last_ = nullptr;
    int count_ = 0;
};

} // namespace

class QueueImpl : public ze::ImplBase {
public:
    QueueImpl() : pool_(dynamic_cast<Pool*>(zeUtil::ThreadPool::get())) {
        if (pool_)
            numThreads_ = pool_->numThreads;
    }
    QueueImpl(const QueueImpl&) = delete;
    QueueImpl& operator=(const QueueImpl&) = delete;
    ~QueueImpl() override { assert(!acquired_); }

    virtual void acquire();
    virtual void submit(zeUtil::ThreadedTask* task);
    virtual void wait();
    virtual void release();
    virtual int getNumThreads() { return numThreads_; }
    virtual void setCancelObject(zeUtil::Progress* progress) { progress_ = progress; }
    virtual bool cancelled();

private:
    static void threadFunc(void* queue, int number, int numThreads);
    void workerLoop(int threadIndex);
    void waitForTask(MutexOp& op);
    void noteReady();

    void processTasks();
    void collectFinished();
    void waitForWorkers();
    void add(zeUtil::ThreadedTask* task, TaskRecord* parent);
    void advance(TaskRecord* record);
    static void leavePrePhase(TaskRecord* record);
    static void leavePostPhase(TaskRecord* record);
    static State afterPreSubtasks(const TaskRecord* record);
    void dispatch(TaskRecord* record);
    void handOver(TaskRecord* record);
    void finish(TaskRecord* record);
    static bool endChild(TaskRecord* parent);
    void destroy(TaskRecord* record);

    bool hasRoom() const { return inFlight_ < 2 * numThreads_; }

    // The driving thread's own.
    bool acquired_ = false;
    bool cancellable_ = true; ///< Until a task with setNoCancel() is submitted.
    bool cancelled_ = false;  ///< The Progress has said so.
    int numThreads_ = 1;
    int outstanding_ = 0; ///< Records alive.
    ze::BlockAllocator allocator_{sizeof(TaskRecord), 20};
    RecordList stack_;      ///< To be advanced, the first one next.
    bool needWait_ = false; ///< A post of wakeup_ is to come, or has come.

    Semaphore wakeup_{0}; ///< Posted when about half of what is in flight has finished.
    Condition condition_; ///< Its mutex guards what follows. Workers wait on it for work.
    int inFlight_ = 0; ///< Records handed over and not taken back; written by the driving thread.
    RecordList ready_; ///< To be executed.
    RecordList finished_; ///< Executed, to be taken back.
    bool stopping_ = false;
    std::atomic<bool> isWorkerWanted_ = false; ///< ready_ or stopping_, for those who spin.
    AdaptiveSpin spin_;

    Pool* pool_;                           ///< Not owned.
    zeUtil::Progress* progress_ = nullptr; ///< Not owned; the driving thread's.
};

void QueueImpl::acquire() {
    assert(pool_ && numThreads_ > 0 && !acquired_);
    acquired_ = true;
    pool_->acquire();
    pool_->getPoolImpl()->releaseAll(threadFunc, this);
}

void QueueImpl::submit(zeUtil::ThreadedTask* task) {
    assert(acquired_);
    if (cancelled()) {
        delete task;
    } else {
        add(task, nullptr);
        if (!task->isCancellable())
            cancellable_ = false;
    }
    processTasks();
}

void QueueImpl::wait() {
    while (outstanding_ > 0) {
        processTasks();
        waitForWorkers();
    }
}

void QueueImpl::release() {
    assert(acquired_);
    wait();
    condition_.getMutex().lock();
    stopping_ = true;
    noteReady();
    condition_.broadcast();
    condition_.getMutex().unlock();
    pool_->getPoolImpl()->join();
    pool_->release();
    stopping_ = false;
    noteReady();
    acquired_ = false;
    cancellable_ = true;
    cancelled_ = false;
    progress_ = nullptr;
}

bool QueueImpl::cancelled() {
    if (!progress_ || !cancellable_)
        return false;
    if (cancelled_ || !progress_->cancelled())
        return cancelled_;
    // Those on the ready list are still executed; their post-subtasks are not asked for.
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    for (TaskRecord* record = finished_.first(); record; record = record->next)
        record->cancelled = true;
    cancelled_ = true;
    return true;
}

// --- The workers -------------------------------------------------------------------------------

void QueueImpl::threadFunc(void* queue, int number, int) {
    static_cast<QueueImpl*>(queue)->workerLoop(number - 1);
}

void QueueImpl::workerLoop(int threadIndex) {
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    while (!stopping_) {
        if (!ready_.first()) {
            waitForTask(op);
            continue;
        }
        TaskRecord* const record = ready_.pop();
        noteReady();
        op.unlock();
        if (!record->cancelled)
            record->task->execute(threadIndex);
        record->state = StatePostExecute;
        op.lock();
        finished_.append(record);
        // Each append counts 2 here: the one that reaches half of what is in flight meets 0 or 1.
        const int beyondHalf = 2 * finished_.count() - inFlight_;
        if (beyondHalf == 0 || beyondHalf == 1)
            wakeup_.post();
    }
}

/// Returns when there may be a task, or the end. Spins at first where processors are left for the
/// driving thread, which else would wait for this one.
void QueueImpl::waitForTask(MutexOp& op) {
    if (numThreads_ < static_cast<int>(usableProcessors())) {
        op.unlock();
        spin_.until([this] { return isWorkerWanted_.load(std::memory_order_relaxed); });
        op.lock();
    }
    if (!ready_.first() && !stopping_)
        condition_.wait(zeUtil::Interval());
}

/// Follows each change of ready_ or stopping_, under the mutex if workers are about.
void QueueImpl::noteReady() {
    isWorkerWanted_.store(ready_.first() || stopping_, std::memory_order_relaxed);
}

// --- The driving thread ------------------------------------------------------------------------

/// Advances the tree until only workers can bring it on.
void QueueImpl::processTasks() {
    for (;;) {
        collectFinished();
        while (hasRoom()) {
            if (!stack_.first())
                return;
            advance(stack_.first());
        }
        waitForWorkers();
    }
}

void QueueImpl::collectFinished() {
    if (inFlight_ == 0)
        return;
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    RecordList taken = std::exchange(finished_, RecordList());
    inFlight_ -= taken.count();
    needWait_ = inFlight_ > 0;
    while (wakeup_.tryWait()) { // what these posts tell of has been taken
    }
    op.unlock();
    while (taken.first()) {
        TaskRecord* const record = taken.pop();
        stack_.push(record);
        if (cancelled())
            record->cancelled = true;
    }
}

void QueueImpl::waitForWorkers() {
    if (std::exchange(needWait_, false))
        wakeup_.wait();
}

void QueueImpl::add(zeUtil::ThreadedTask* task, TaskRecord* parent) {
    stack_.push(new (allocator_.alloc()) TaskRecord(task, parent));
    ++outstanding_;
    if (parent)
        ++parent->children;
}

/// Asks the record, which is the first one of the stack, for its next subtask.
void QueueImpl::advance(TaskRecord* record) {
    if (cancelled())
        record->cancelled = true;
    const bool isPre = record->state == StatePreExecute;
    if (!record->cancelled) {
        zeUtil::ThreadedTask* const subtask = isPre ? record->task->preExecute(record->index)
                                                    : record->task->postExecute(record->index);
        ++record->index;
        if (subtask)
            return add(subtask, record); // which is the next to be advanced
    }
    if (isPre)
        leavePrePhase(record);
    else
        leavePostPhase(record);
    dispatch(record);
}

void QueueImpl::leavePrePhase(TaskRecord* record) {
    record->index = 0;
    record->state = record->children > 0 ? StateWaitPre : afterPreSubtasks(record);
}

void QueueImpl::leavePostPhase(TaskRecord* record) {
    record->state = record->children > 0 ? StateWaitPost : StateDone;
}

State QueueImpl::afterPreSubtasks(const TaskRecord* record) {
    return record->task->getNoExecute() ? StatePostExecute : StateExecute;
}

/// Takes the record, the first one of the stack, to where its state leads.
void QueueImpl::dispatch(TaskRecord* record) {
    if (record->state == StatePreExecute || record->state == StatePostExecute)
        return; // goes on from the stack
    stack_.pop();
    if (record->state == StateExecute)
        handOver(record);
    else if (record->state == StateDone)
        finish(record);
    // Otherwise its last child brings it back.
}

void QueueImpl::handOver(TaskRecord* record) {
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    ++inFlight_;
    ready_.append(record);
    noteReady();
    op.unlock();
    condition_.signal(); // without the mutex, so that the worker who wakes finds it free
    needWait_ = true;
}

/// Ends the record, and those above it of which it was the last that they waited for.
void QueueImpl::finish(TaskRecord* record) {
    for (;;) {
        TaskRecord* const parent = record->parent;
        const bool goesOn = parent && endChild(parent);
        destroy(record);
        if (!goesOn)
            return;
        if (parent->state == StateExecute)
            return handOver(parent);
        if (parent->state == StatePostExecute)
            return stack_.push(parent);
        record = parent;
    }
}

/// Whether the parent has waited for this child only. One that is still asking for subtasks stands
/// lower on the stack, and goes on from there.
bool QueueImpl::endChild(TaskRecord* parent) {
    --parent->children;
    const bool isPre = parent->state == StateWaitPre;
    if (parent->children > 0 || (!isPre && parent->state != StateWaitPost))
        return false;
    parent->state = isPre ? afterPreSubtasks(parent) : StateDone;
    return true;
}

void QueueImpl::destroy(TaskRecord* record) {
    delete record->task;
    allocator_.free(record);
    --outstanding_;
}

// --- The public class --------------------------------------------------------------------------

TaskQueue::TaskQueue() : impl_(new QueueImpl), ownsImpl_(true) {}

TaskQueue::~TaskQueue() {
    if (get() == this)
        install(nullptr);
    if (ownsImpl_)
        delete impl_;
}

void TaskQueue::acquire() {
    impl_->acquire();
}

void TaskQueue::submit(zeUtil::ThreadedTask* task) {
    impl_->submit(task);
}

void TaskQueue::wait() {
    impl_->wait();
}

void TaskQueue::release() {
    impl_->release();
}

int TaskQueue::getNumThreads() {
    return impl_->getNumThreads();
}

void TaskQueue::setCancelObject(zeUtil::Progress* progress) {
    impl_->setCancelObject(progress);
}

bool TaskQueue::cancelled() {
    return impl_->cancelled();
}

} // namespace zeThread
