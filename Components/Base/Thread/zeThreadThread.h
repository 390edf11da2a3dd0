// SPDX-License-Identifier: MIT

/// @file
/// A thread of the process: zeThread::Thread.
///
/// The body of a thread is a function with an argument, or whatever is connected to a signal.
///
/// **The end.** A Thread that is destroyed does not end its thread, which goes on by itself. Wait
/// for each thread before the program leaves `main`, or make sure that it uses nothing any more
/// that is destroyed then.
///
/// **Signals of the system.** The first Thread of the process blocks SIGCHLD in the thread that
/// makes it; threads that it starts later, and programs that they execute, inherit that. Make the
/// first one before a second thread can make one too.
///
/// An exception that leaves the body ends the process.
///
/// Threads: a Thread belongs to one thread at a time, and its signal, once started, to the new one.
///
/// @code
/// struct Sum {
///     int total = 0;
///     void run() { total = 6 * 7; }
/// };
/// Sum sum;
/// zeThread::Thread thread;
/// thread.getSignal()->connect(&sum, &Sum::run);
/// assert(thread.start().code() == 0);
/// assert(thread.wait().code() == 0);
/// assert(sum.total == 42);
/// @endcode

#pragma once

#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

class ThreadImpl;

/// One thread. Neither copied nor moved: hold it by pointer.
class ZEBASE_API Thread {
public:
    /// Its body is what is connected to getSignal(). It can be started once: the body of a second
    /// start is empty.
    Thread();

    /// Its body is `entry(arg)`. It can be started again after wait().
    Thread(void (*entry)(void*), void* arg);

    Thread(const Thread&) = delete; ///< Make another with the same body.
    Thread& operator=(const Thread&) = delete;

    /// Lets a started thread that was not waited for go on by itself.
    virtual ~Thread();

    /// Replaces the argument of the function for the next start().
    void setArg(void* arg);

    /// What runs in the new thread, newest connection first. Null if the body is a function, and
    /// after start(), which hands the signal over to the new thread: that one destroys it when the
    /// body has ended. A connection that is tied to a client of another thread would be unlinked
    /// from there without a lock: connect without a client, or with one for this Thread alone that
    /// nobody touches until wait().
    zeRTB::SignalVoid* getSignal();

    /// Starts the thread. Code 1: the system could not make it, and the signal is gone with all its
    /// connections. Do not start a running thread again, for which nobody could wait then.
    zeUtil::Error start();

    /// Waits until the body has ended. Code 1: the system could not wait, as when a thread waits
    /// for itself. Code 2: not started, or waited for already.
    zeUtil::Error wait();

private:
    ThreadImpl* impl_;
    bool ownsImpl_;
};

} // namespace zeThread

/// Starts a thread that runs `entry(arg)` and goes on by itself. Returns 1, or 0 if the system
/// could not make it.
extern "C" ZEBASE_API int zeThread_CreateThread(void (*entry)(void*), void* arg);
