// SPDX-License-Identifier: MIT

/// @file
/// Small jobs that an application's main loop advances when it has nothing else to do.
///
/// zeUtil::getIdleTasks() is a list of tasks that take turns: each IdleTasks::run() is one step of
/// one task. The signal IdleTasks::sigChanged tells the main loop when the list has got its first
/// task or lost its last one, so that the loop starts or stops calling run().
///
/// **Ownership.** A task lives as long as there is a ze::Reference to it. The list holds two, from
/// IdleTasks::addTask() until the task is removed.
///
/// **Re-entry.** A step, a callback of the signal and the destructor of a task may add and remove
/// any task. A callback of the signal must not throw; an exception from a step passes through
/// run(), and the next turn is that of the next task.
///
/// Threads: the application's main thread only.
///
/// @code
/// struct Countdown : zeUtil::IdleTask {
///     int left = 3;
///     void step() override {
///         if (--left == 0)
///             setFinished();
///     }
/// };
/// zeUtil::IdleTasks& idle = zeUtil::getIdleTasks();
/// ze::Reference<Countdown> task(new Countdown);
/// idle.addTask(task);
/// while (idle.haveTasks())
///     idle.run();
/// assert(task->left == 0);
/// @endcode

#pragma once

#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

/// Base of the jobs.
class ZEBASE_API IdleTask : public ze::ReferenceCount {
public:
    ~IdleTask() override;

    /// Does a small part of the job. May add and remove tasks, this one included.
    virtual void step() = 0;

    /// Says that the job is done: the list drops the task when the running step has returned, or
    /// else after its next step.
    void setFinished() { finished_ = true; }

    /// Whether setFinished() was called.
    bool isFinished() const { return finished_; }

private:
    bool finished_ = false;
};

/// The list of tasks. There is one, see getIdleTasks().
class ZEBASE_API IdleTasks {
public:
    /// Fired when a task is added to an empty list, and when the last one is removed: haveTasks()
    /// says which. Not fired at exit.
    zeRTB::SignalVoid sigChanged;

    virtual ~IdleTasks();

    /// Appends a task, which is not null. A task that is in the list already keeps its place.
    virtual void addTask(ze::Reference<IdleTask> task) = 0;

    /// Removes a task; one that is not in the list is ignored. If it was to have the next turn, the
    /// one behind it has it.
    virtual void removeTask(ze::Reference<IdleTask> task) = 0;

    /// Gives the next task in the list its turn, one step, and removes it if it has finished. Does
    /// nothing without tasks. After the last task the first one follows; a task that is added while
    /// the last one is having its turn waits for its own turn in the next round.
    virtual void run() = 0;

    /// Whether there are tasks.
    virtual bool haveTasks() const = 0;
};

/// The list of this process, made on the first call and destroyed at exit with the tasks in it.
ZEBASE_API IdleTasks& getIdleTasks();

} // namespace zeUtil
