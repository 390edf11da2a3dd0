// SPDX-License-Identifier: MIT

/// @file
/// A thread that repeats one operation until it is told to stop: zeThread::PollingThread.
///
/// **The end.** The thread ends when poll() returns false, or after terminateAsync(). It then sends
/// its terminated signal to the receiver, whose next dispatch() fires it, on the receiver's thread.
/// The message refers to the PollingThread. Delete the object in this order: terminateAsync(), then
/// wait() and dispatch() of the receiver until the terminated signal has fired, then the object,
/// also from a function that is connected to the signal. The destructor waits for the thread, but
/// does not tell it to stop; and a thread that still polls when the destructor of the derived class
/// begins calls a pure virtual function.
///
/// Threads: the thread that made it calls everything but poll(), and the receiver's thread fires
/// the terminated signal; any thread may call terminateAsync() and use getSender().
///
/// @code
/// #include "Base/Thread/zeThreadMessageReceiver.h"
/// struct Countdown : zeThread::PollingThread {
///     int left = 3;
///     bool poll() override { return --left > 0; } // on the new thread
/// };
/// bool isOver = false;
/// zeThread::MessageReceiver receiver;
/// Countdown countdown;
/// countdown.getSigTerminated().connectOwned([&](zeThread::PollingThread*) { isOver = true; });
/// assert(countdown.start(receiver).code() == 0);
/// while (!isOver) {
///     receiver.wait();
///     receiver.dispatch();
/// }
/// assert(countdown.left == 0);
/// @endcode

#pragma once

#include "Base/Thread/zeThreadMessageSender.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

class MessageReceiver;
class PollingImpl;

/// Base of such threads. Neither copied nor moved: hold it by pointer.
class ZEBASE_API PollingThread {
public:
    /// Not started.
    PollingThread();
    PollingThread(const PollingThread&) = delete; ///< Make another.
    PollingThread& operator=(const PollingThread&) = delete;

    /// Waits for the thread, which must have been told to stop, or stop by itself.
    virtual ~PollingThread();

    /// The operation that is repeated, on the new thread. Returns whether to go on.
    virtual bool poll() = 0;

    /// Connects the sender to `receiver`, and starts the thread. If the receiver is destroyed while
    /// the thread runs, it goes on, and its messages and its end are dropped. Code 1: started
    /// already ("Object started already"; an object can be started once), or the system could not
    /// make the thread, in which case the sender is disconnected and another attempt may follow.
    zeUtil::Error start(MessageReceiver& receiver);

    /// Tells the thread to stop, and does not wait for it. A poll() that is running runs to its
    /// end. Before the first one, there will be none. A stopped object stays so.
    void terminateAsync();

    /// Fired on the receiver's thread when the thread has ended, with this object.
    zeRTB::SignalArg<PollingThread*>& getSigTerminated();

    /// For messages to the receiver, from poll() or elsewhere.
    MessageSender& getSender();

private:
    PollingImpl* impl_;
    bool ownsImpl_;
};

} // namespace zeThread
