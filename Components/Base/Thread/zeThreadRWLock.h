// SPDX-License-Identifier: MIT

/// @file
/// The lock for many readers or one writer (zeThread::RWLock), and the object that holds it for a
/// scope (zeThread::RWLockOp).
///
/// Threads: an RWLock may be used by any thread at any time; an RWLockOp belongs to one thread.
///
/// @code
/// zeThread::RWLock lock;
/// {
///     zeThread::RWLockOp op(lock, true);
///     op.read(); // the constructor locks nothing
///     assert(lock.numberOfReaders() == 1 && !lock.hasWriter());
/// } // released here
/// assert(lock.numberOfReaders() == 0);
/// @endcode

#pragma once

#include "Base/Thread/zeThreadCondition.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

/// Any number of readers at a time, or one writer.
///
/// Readers come first: a reader waits only while a writer holds the lock, so that readers who
/// follow each other without a gap keep a writer waiting. Not recursive: a reader that asks to
/// write waits for ever.
///
/// Making one can throw, and destroying one can end the process, as for Condition.
class ZEBASE_API RWLock {
public:
    /// Free.
    RWLock();
    RWLock(const RWLock&) = delete; ///< Share a reference to one.
    RWLock& operator=(const RWLock&) = delete;
    ~RWLock();

    /// Waits while there is a writer, then becomes a reader.
    void readLock();

    /// Waits while there is a writer or any reader, then becomes the writer.
    void writeLock();

    /// Ends one reader, of any thread. The last one wakes one waiting thread.
    void readUnlock();

    /// Ends the writer, of any thread, and wakes all waiting threads.
    void writeUnlock();

    /// The number of readers at some moment: it may have changed when the call returns. Takes no
    /// lock.
    int numberOfReaders() const;

    /// Whether there was a writer at some moment. Takes no lock.
    bool hasWriter() const;

private:
    Condition condition_; ///< Its mutex guards both fields.
    int readers_ = 0;
    bool writer_ = false;
};

/// Holds an RWLock for a scope, to read, to write or both in turn. The constructor locks nothing.
class RWLockOp {
public:
    /// For `lock`, which must outlive it. The second argument is kept for compatibility and changes
    /// nothing: the destructor always unlocks, unlike that of MutexOp.
    RWLockOp(RWLock& lock, bool unlockOnDestroy) : lock_(&lock), ignored_(unlockOnDestroy) {
        static_cast<void>(ignored_);
    }
    RWLockOp(const RWLockOp&) = delete; ///< Make another for the same RWLock.
    RWLockOp& operator=(const RWLockOp&) = delete;

    /// unlock(): one side, also when both are held.
    ~RWLockOp() { unlock(); }

    /// Takes the lock to read.
    void read() {
        readHeld_ = true;
        lock_->readLock();
    }

    /// Takes the lock to write. Waits for ever if this thread still reads.
    void write() {
        writeHeld_ = true;
        lock_->writeLock();
    }

    /// Releases one side: the reader's if read() was called, else the writer's if write() was.
    void unlock() {
        if (readHeld_) {
            readHeld_ = false;
            lock_->readUnlock();
        } else if (writeHeld_) {
            writeHeld_ = false;
            lock_->writeUnlock();
        }
    }

private:
    RWLock* lock_;
    bool readHeld_ = false;
    bool writeHeld_ = false;
    bool ignored_;
};

} // namespace zeThread
