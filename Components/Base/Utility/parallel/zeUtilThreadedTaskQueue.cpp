// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilThreadedTaskQueue.h"

#include <memory>

#include "Base/Utility/zeUtilProgress.h"
#include "Base/Utility/zeUtilThreadPool.h"

namespace zeUtil {

namespace {

class SimpleQueue final : public ThreadedTaskQueue {
public:
    constexpr SimpleQueue() = default;

    void acquire() override { acquired_ = true; }

    void submit(ThreadedTask* task) override {
        waited_ = false;
        processTask(task);
    }

    void wait() override { waited_ = true; }

    void release() override {
        acquired_ = false;
        cancellable_ = true;
        progress_ = nullptr;
    }

    int getNumThreads() override { return 1; }

    void setCancelObject(Progress* progress) override { progress_ = progress; }

    bool cancelled() override { return progress_ && cancellable_ && progress_->cancelled(); }

private:
    /// Returns whether the task had its turn: its parent stops at the first one that had none.
    bool processTask(ThreadedTask* given) {
        const std::unique_ptr<ThreadedTask> task(given);
        if (cancelled())
            return false;
        if (!task->isCancellable())
            cancellable_ = false;
        processSubtasks(*task, &ThreadedTask::preExecute);
        if (!task->getNoExecute() && !cancelled())
            task->execute(0);
        // Asked for the first subtask even when cancelled; processTask() deletes it.
        processSubtasks(*task, &ThreadedTask::postExecute);
        return true;
    }

    void processSubtasks(ThreadedTask& task, ThreadedTask* (ThreadedTask::*subtask)(int)) {
        for (int index = 0;; ++index) {
            ThreadedTask* next = (task.*subtask)(index);
            if (!next || !processTask(next))
                return;
        }
    }

    bool acquired_ = false;
    bool waited_ = true;
    bool cancellable_ = true;
    Progress* progress_ = nullptr;
};

constinit SimpleQueue s_simpleQueue; // there before any static object that may call get()

} // namespace

ThreadedTask::~ThreadedTask() = default;

ThreadedTask* ThreadedTask::preExecute(int) {
    return nullptr;
}

void ThreadedTask::execute(int) {}

ThreadedTask* ThreadedTask::postExecute(int) {
    return nullptr;
}

int ThreadedTask::getNumThreads() const {
    return ThreadPool::get()->numThreads;
}

constinit std::atomic<ThreadedTaskQueue*> ThreadedTaskQueue::s_queue = nullptr;

ThreadedTaskQueue::~ThreadedTaskQueue() = default;

ThreadedTaskQueue* ThreadedTaskQueue::get() {
    ThreadedTaskQueue* queue = s_queue.load(std::memory_order_acquire);
    return queue ? queue : getSingleThreaded();
}

ThreadedTaskQueue* ThreadedTaskQueue::getSingleThreaded() {
    return &s_simpleQueue;
}

void ThreadedTaskQueue::install(ThreadedTaskQueue* queue) {
    s_queue.store(queue, std::memory_order_release);
}

} // namespace zeUtil
