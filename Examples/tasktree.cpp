// SPDX-License-Identifier: MIT

// Sorts numbers by a tree of tasks. Each task divides its numbers into small and large ones, and
// leaves both parts to tasks that come after it (post-subtasks). What needs the sorted numbers is a
// task, too: it asks for the sorting to be done before it (pre-subtask).
//
//     $ tasktree
//     1000000 numbers are in order, the median is 2147018689

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

#include "Base/Thread/zeThreadPool.h"
#include "Base/Thread/zeThreadTaskQueue.h"

namespace {

using Number = std::uint32_t;

class Sort : public zeUtil::ThreadedTask {
public:
    Sort(Number* begin, Number* end) : begin_(begin), end_(end) {}

    /// On a thread of the pool.
    void execute(int) override {
        if (isSmall()) {
            std::sort(begin_, end_);
            return;
        }
        middle_ = begin_ + (end_ - begin_) / 2;
        std::nth_element(begin_, middle_, end_);
    }

    /// On the thread that drives the queue, when execute() is done. The queue deletes the tasks.
    ThreadedTask* postExecute(int index) override {
        if (isSmall() || index == 2)
            return nullptr;
        return index == 0 ? new Sort(begin_, middle_) : new Sort(middle_, end_);
    }

private:
    bool isSmall() const { return end_ - begin_ < 20000; }

    Number* begin_;
    Number* end_;
    Number* middle_ = nullptr;
};

class Report : public zeUtil::ThreadedTask {
public:
    explicit Report(std::vector<Number>& numbers) : numbers_(numbers) {}

    ThreadedTask* preExecute(int index) override {
        return index == 0 ? new Sort(numbers_.data(), numbers_.data() + numbers_.size()) : nullptr;
    }

    /// When the sorting is done, with all of its post-subtasks.
    void execute(int) override {
        const bool isSorted = std::is_sorted(numbers_.begin(), numbers_.end());
        std::printf("%zu numbers are %s order, the median is %u\n", numbers_.size(),
                    isSorted ? "in" : "out of", numbers_[numbers_.size() / 2]);
    }

private:
    std::vector<Number>& numbers_;
};

} // namespace

int main() {
    std::vector<Number> numbers(1000000);
    std::mt19937 random;
    for (Number& number : numbers)
        number = static_cast<Number>(random());

    const unsigned int processors = std::max(std::thread::hardware_concurrency(), 1u);
    zeThread::Pool pool(static_cast<int>(processors));
    zeUtil::ThreadPool::install(&pool);
    zeThread::TaskQueue queue; // over the pool that is installed
    queue.acquire();
    queue.submit(new Report(numbers));
    queue.release(); // waits until all tasks are done
    return 0;
}
