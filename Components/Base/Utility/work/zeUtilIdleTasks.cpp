// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilIdleTasks.h"

#include <cassert>
#include <functional>
#include <list>
#include <map>
#include <utility>

namespace zeUtil {

namespace {

using Task = ze::Reference<IdleTask>;

struct ByAddress {
    bool operator()(const Task& a, const Task& b) const { return std::less<>()(a.get(), b.get()); }
};

class IdleTasksImpl final : public IdleTasks {
public:
    IdleTasksImpl() = default;
    IdleTasksImpl(const IdleTasksImpl&) = delete;
    IdleTasksImpl& operator=(const IdleTasksImpl&) = delete;

    ~IdleTasksImpl() override {
        current_ = tasks_.end();
        index_.clear();
        // One by one, since the destructor of a task may call this list, and add another task. The
        // entry goes last: a list that never gets its first task fires no signal.
        while (!tasks_.empty()) {
            index_.erase(tasks_.front());
            tasks_.front() = Task();
            tasks_.pop_front();
        }
    }

    void addTask(Task task) override {
        assert(task);
        if (index_.contains(task))
            return;
        std::list<Task> last{task};
        index_.emplace(std::move(task), last.begin());
        tasks_.splice(tasks_.end(), last);
        if (tasks_.size() == 1)
            sigChanged.send();
    }

    void removeTask(Task task) override {
        const auto found = index_.find(task);
        if (found == index_.end())
            return;
        const Position position = found->second;
        if (current_ == position)
            ++current_;
        index_.erase(found); // `task` keeps the object, whose destructor may call this list
        tasks_.erase(position);
        if (tasks_.empty() && sigChanged.isConnected())
            sigChanged.send();
    }

    void run() override {
        if (!haveTasks())
            return;
        if (current_ == tasks_.end())
            current_ = tasks_.begin();
        const Task task = *current_;
        ++current_; // before the step, which may remove the task
        task->step();
        if (task->isFinished())
            removeTask(task);
    }

    bool haveTasks() const override { return !tasks_.empty(); }

private:
    using Position = std::list<Task>::iterator;

    std::list<Task> tasks_;
    std::map<Task, Position, ByAddress> index_;
    Position current_ = tasks_.end(); ///< Whose turn is next; the end stands for the first task.
};

} // namespace

IdleTask::~IdleTask() = default;

IdleTasks::~IdleTasks() = default;

IdleTasks& getIdleTasks() {
    static IdleTasksImpl tasks;
    return tasks;
}

} // namespace zeUtil
