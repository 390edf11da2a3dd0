// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadTaskQueue.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadPool.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/Utility/zeUtilProgress.h"
#include "Support/ThreadCalls.h"

namespace {

using zeThread::Pool;
using zeThread::TaskQueue;
using zeUtil::Progress;
using zeUtil::ThreadedTask;
using zeUtil::ThreadedTaskQueue;

/// What a task is to do, and what became of it. Plain fields, written by whoever has the task in
/// hand: ThreadSanitizer proves that the queue passes it on properly.
struct Node {
    std::vector<std::size_t> pre, post;
    bool noExecute = false;

    int made = 0, executed = 0, deleted = 0;
    int asked[2] = {0, 0};              ///< Calls of preExecute and postExecute.
    bool exhausted[2] = {false, false}; ///< The last of these gave null.
};

/// A forest of tasks, of which each checks the order of what happens to it.
class Forest {
public:
    explicit Forest(unsigned int seed) : random_(seed) {
        const std::size_t size = 1 + draw(150);
        const unsigned int fewRoots = 1 + draw(40);
        for (nodes.resize(1); nodes.size() < size; nodes.emplace_back()) {
            const std::size_t parent = draw(static_cast<unsigned int>(nodes.size()));
            if (draw(fewRoots) == 0)
                roots.push_back(nodes.size());
            else
                (draw(2) ? nodes[parent].pre : nodes[parent].post).push_back(nodes.size());
            nodes.back().noExecute = draw(5) == 0;
        }
        roots.insert(roots.begin(), 0);
    }

    unsigned int draw(unsigned int n) { return static_cast<unsigned int>(random_() % n); }

    std::unique_ptr<ThreadedTask> makeTask(std::size_t node);

    /// Takes the whole forest through `queue`.
    void run(ThreadedTaskQueue& queue) {
        driver = std::this_thread::get_id();
        threads = queue.getNumThreads();
        queue.acquire();
        queue.setCancelObject(progress);
        for (std::size_t root : roots) {
            queue.submit(makeTask(root).release());
            if (draw(10) == 0)
                queue.wait();
        }
        if (draw(2))
            queue.wait();
        queue.release();
    }

    /// How often a queue over threads asks its Progress when nothing is cancelled: for each submit,
    /// each question for a subtask, and each task that a worker gives back.
    int questions() const {
        std::size_t count = roots.size();
        for (const Node& node : nodes)
            count += node.pre.size() + node.post.size() + 2 + !node.noExecute;
        return static_cast<int>(count);
    }

    std::vector<Node> nodes{};
    std::vector<std::size_t> roots;
    Progress* progress = nullptr;
    bool isCancelled = false; ///< The queue was told so: it must ask for nothing more.
    bool isSerial = false;    ///< The queue is the single-threaded one, which asks on.
    std::thread::id driver;
    int threads = 1;

private:
    std::mt19937 random_;
};

class ForestTask : public ThreadedTask {
public:
    ForestTask(Forest& forest, std::size_t node) : forest_(forest), node_(forest.nodes[node]) {
        ++node_.made;
        if (node_.noExecute)
            setNoExecute();
    }

    ~ForestTask() override {
        EXPECT_EQ(std::this_thread::get_id(), forest_.driver);
        for (const auto* subtasks : {&node_.pre, &node_.post})
            for (std::size_t i : *subtasks)
                EXPECT_EQ(forest_.nodes[i].deleted, forest_.nodes[i].made) << "goes after subtasks";
        ++node_.deleted;
    }

    ThreadedTask* preExecute(int index) override {
        EXPECT_EQ(node_.executed, 0);
        return next(0, node_.pre, index);
    }

    void execute(int threadIndex) override {
        EXPECT_TRUE(threadIndex >= 0 && threadIndex < forest_.threads);
        EXPECT_EQ(std::this_thread::get_id() == forest_.driver, forest_.isSerial);
        EXPECT_EQ(getNumThreads(), 1) << "what a task starts in parallel runs serially";
        for (std::size_t i : node_.pre)
            EXPECT_EQ(forest_.nodes[i].deleted, forest_.nodes[i].made); // comes after pre-subtasks
        EXPECT_EQ(node_.asked[1], 0) << "comes before post-subtasks";
        ++node_.executed;
    }

    ThreadedTask* postExecute(int index) override {
        EXPECT_TRUE(node_.noExecute || node_.executed == 1 || forest_.isCancelled);
        return next(1, node_.post, index);
    }

private:
    ThreadedTask* next(int phase, const std::vector<std::size_t>& subtasks, int index) {
        EXPECT_TRUE(!forest_.isCancelled || forest_.isSerial);
        EXPECT_EQ(std::this_thread::get_id(), forest_.driver);
        EXPECT_EQ(index, node_.asked[phase]++) << "asked in order, and not after null";
        EXPECT_FALSE(node_.exhausted[phase]);
        const auto i = static_cast<std::size_t>(index);
        node_.exhausted[phase] = i >= subtasks.size();
        return node_.exhausted[phase] ? nullptr : forest_.makeTask(subtasks[i]).release();
    }

    Forest& forest_;
    Node& node_;
};

std::unique_ptr<ThreadedTask> Forest::makeTask(std::size_t node) {
    return std::make_unique<ForestTask>(*this, node);
}

/// The single-threaded queue, or one over a pool.
class AnyQueue {
public:
    explicit AnyQueue(int threads) {
        if (threads == 0)
            return;
        pool_ = std::make_unique<Pool>(threads);
        zeUtil::ThreadPool::install(pool_.get());
        queue_ = std::make_unique<TaskQueue>();
        ThreadedTaskQueue::install(queue_.get());
    }
    ~AnyQueue() {
        queue_.reset();
        EXPECT_EQ(ThreadedTaskQueue::get(), ThreadedTaskQueue::getSingleThreaded());
    }
    ThreadedTaskQueue& operator*() const { return *ThreadedTaskQueue::get(); }
    ThreadedTaskQueue* operator->() const { return ThreadedTaskQueue::get(); }
    bool isSerial() const { return !queue_; }

private:
    std::unique_ptr<Pool> pool_;
    std::unique_ptr<TaskQueue> queue_;
};

constexpr int never = INT_MAX;

/// Takes a random forest through the queue, cancelled by the `n`-th question to the Progress.
/// Returns whether it came to that. Otherwise everything happens once.
bool run(const AnyQueue& queue, unsigned int seed, int n) {
    Forest forest(seed);
    forest.isSerial = queue.isSerial();
    Progress progress;
    forest.progress = n == never && seed % 2 == 0 ? nullptr : &progress;
    int questions = 0;
    std::vector<Node> atCancellation;
    progress.getSigCheckCancel().connectOwned([&](Progress* root) {
        if (++questions < n)
            return;
        root->cancel();
        forest.isCancelled = true;
        if (forest.isSerial)
            atCancellation = forest.nodes;
    });
    forest.run(*queue);
    for (std::size_t i = 0; i < forest.nodes.size(); ++i) {
        const Node& node = forest.nodes[i];
        EXPECT_TRUE(node.made == 1 || (node.made == 0 && forest.isCancelled));
        EXPECT_TRUE((node.exhausted[0] && node.exhausted[1]) || forest.isCancelled);
        EXPECT_EQ(node.deleted, node.made);
        // A task that was asked for all pre-subtasks is executed, also when it still waits for
        // some of them at the cancellation. The single-threaded queue executes nothing more.
        if (!forest.isSerial || !forest.isCancelled)
            EXPECT_EQ(node.executed, node.exhausted[0] && !node.noExecute);
        else
            EXPECT_EQ(node.executed, atCancellation[i].executed);
    }
    if (forest.progress && !forest.isCancelled && !forest.isSerial) {
        EXPECT_EQ(questions, forest.questions());
    }
    EXPECT_FALSE(queue->cancelled()) << "forgotten with the release";
    return forest.isCancelled;
}

} // namespace

class TaskQueues : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Threads, TaskQueues, testing::Values(0, 1, 2, 8));

TEST_P(TaskQueues, ExecuteEachTaskOfATreeOnceInItsPlace) {
    const ThreadsAndLocks none;
    const AnyQueue queue(GetParam());
    for (unsigned int seed = 0; seed < 100 && !HasFailure(); ++seed)
        run(queue, seed, never);
    const RandomYields yields;
    unsigned int seed = 100;
    for (const StressTime time(0.5); time.isLeft() && !HasFailure(); ++seed)
        run(queue, seed, never);
    EXPECT_FALSE(HasFailure()) << "seed " << seed - 1;
}

TEST_P(TaskQueues, StopWhenTheyAreCancelledAndDeleteTheRest) {
    const ThreadsAndLocks none;
    const AnyQueue queue(GetParam());
    for (int n = 1; run(queue, 7, n) && !HasFailure(); ++n) {
    }
    const RandomYields yields;
    std::mt19937 random(1);
    unsigned int seed = 0;
    for (const StressTime time(0.5); time.isLeft() && !HasFailure(); ++seed)
        run(queue, seed, 1 + static_cast<int>(random() % 300));
    EXPECT_FALSE(HasFailure()) << "seed " << seed - 1;
}

TEST_P(TaskQueues, AreProtectedByATaskThatCannotBeCancelled) {
    const AnyQueue queue(GetParam());
    struct Protected : ThreadedTask {
        explicit Protected(int& sum) : sum_(sum) { setNoCancel(); }
        void execute(int) override { ++sum_; }
        int& sum_;
    };
    struct Parent : ThreadedTask {
        explicit Parent(int& sum) : sum_(sum) {}
        ThreadedTask* preExecute(int index) override {
            return index == 0 ? new Protected(sum_) : nullptr;
        }
        int& sum_;
    };
    Progress progress, other;
    int sum = 0;
    queue->acquire();
    queue->setCancelObject(&progress);
    queue->submit(new Protected(sum));
    queue->wait();
    progress.cancel();
    EXPECT_FALSE(queue->cancelled());
    queue->submit(new Protected(sum));
    queue->release();
    EXPECT_EQ(sum, 2);

    queue->acquire(); // the protection has ended
    queue->setCancelObject(&progress);
    queue->submit(new Protected(sum));
    EXPECT_EQ(sum, 2) << "deleted, since it came too late";
    EXPECT_TRUE(queue->cancelled());
    queue->setCancelObject(&other);
    EXPECT_EQ(queue->cancelled(), !queue.isSerial()) << "a queue over threads remembers";
    queue->setCancelObject(nullptr);
    EXPECT_FALSE(queue->cancelled());
    queue->release();

    queue->acquire();
    queue->setCancelObject(&other);
    queue->submit(new Parent(sum));
    queue->wait();
    other.cancel();
    EXPECT_EQ(queue->cancelled(), !queue.isSerial()) << "a subtask protects the serial queue only";
    queue->release();
    EXPECT_EQ(sum, 3);
}

TEST(TaskQueue, HasTwoTasksInHandForEachWorker) {
    const AnyQueue queue(3);
    int alive = 0, most = 0;
    struct Leaf : ThreadedTask {
        Leaf(int& nowAlive, int& mostAlive) : alive_(nowAlive) {
            mostAlive = std::max(mostAlive, ++alive_);
        }
        ~Leaf() override { --alive_; }
        int& alive_;
    };
    struct Root : ThreadedTask {
        explicit Root(std::function<ThreadedTask*()> makeLeaf) : leaf(std::move(makeLeaf)) {}
        ThreadedTask* preExecute(int index) override { return index < 1000 ? leaf() : nullptr; }
        std::function<ThreadedTask*()> leaf;
    };
    const RandomYields yields;
    queue->acquire();
    queue->wait(); // nothing was submitted
    queue->submit(new Root([&] { return new Leaf(alive, most); }));
    queue->release();
    EXPECT_EQ(most, 6);
    EXPECT_EQ(alive, 0);
}

TEST(TaskQueue, IsMadeWithoutAPoolOrNotAtAll) {
    EXPECT_EQ(TaskQueue().getNumThreads(), 1);
    for (auto call : {ThreadFaults::onSemInit, ThreadFaults::onCondInit}) {
        const ThreadFaults faults(call, 1, ENOMEM);
        EXPECT_THROW(TaskQueue(), zeUtil::Error);
    }
}
