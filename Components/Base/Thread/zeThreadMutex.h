// SPDX-License-Identifier: MIT

/// @file
/// The lock (zeThread::Mutex) and the object that holds it for a scope (zeThread::MutexOp).
///
/// Threads: a Mutex may be used by any thread at any time; a MutexOp belongs to one thread.
///
/// @code
/// zeThread::Mutex mutex(true);
/// int shared = 0; // guarded by `mutex`
/// {
///     zeThread::MutexOp op(mutex, true);
///     op.lock(); // the constructor does not
///     ++shared;
/// } // unlocked here
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeThread {

/// A lock that one thread holds at a time. It is not recursive: a thread that locks it twice waits
/// for ever.
///
/// No operation reports an error. Destroy it when no thread holds it or waits for it.
class ZEBASE_API Mutex {
public:
    /// Unlocked. The argument is kept for compatibility and changes nothing.
    explicit Mutex(bool ignored = true);
    Mutex(const Mutex&) = delete; ///< Share a reference to one.
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex();

    /// Waits until no other thread holds the lock, and takes it.
    void lock();

    /// Releases the lock, which the calling thread holds.
    void unlock();

private:
    friend class BriefLock;
    friend class Condition;
    struct Block;

    Block* block_;
};

/// Holds a Mutex for a scope. The constructor does not lock.
class MutexOp {
public:
    /// For `mutex`, which must outlive it. The destructor unlocks only with `unlockOnDestroy`.
    MutexOp(Mutex& mutex, bool unlockOnDestroy)
        : mutex_(&mutex), unlockOnDestroy_(unlockOnDestroy) {}
    MutexOp(const MutexOp&) = delete; ///< Make another for the same Mutex.
    MutexOp& operator=(const MutexOp&) = delete;

    /// Unlocks if lock() was called without unlock() since, and if the constructor was told so.
    ~MutexOp() {
        if (unlockOnDestroy_ && locked_)
            mutex_->unlock();
    }

    /// Locks the mutex.
    void lock() {
        mutex_->lock();
        locked_ = true;
    }

    /// Unlocks the mutex, which the calling thread must hold, also when it was locked without this
    /// object.
    void unlock() {
        mutex_->unlock();
        locked_ = false;
    }

private:
    Mutex* mutex_;
    bool locked_ = false;
    bool unlockOnDestroy_;
};

} // namespace zeThread
