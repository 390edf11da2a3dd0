// SPDX-License-Identifier: MIT

/// @file
/// The queue of messages that a thread runs: zeThread::MessageReceiver.
///
/// See zeThreadMessageSender.h for the sending end, an example, and the order of locks.
///
/// Threads: wait() and dispatch() are for the thread that the receiver belongs to, as is its
/// destruction; any thread may send, connect and disconnect.
///
/// @code
/// #include "Base/Thread/zeThreadMessageSender.h"
/// struct WakingReceiver : zeThread::MessageReceiver {
///     ~WakingReceiver() override { disconnect(); } // while onMessageReceived() is still this one
///     void onMessageReceived() override { isAwake = true; } // on the sending thread
///     bool isAwake = false;
/// };
/// WakingReceiver receiver;
/// zeThread::MessageSender sender;
/// sender.connect(receiver);
/// sender.sendAsyncSignal(nullptr);
/// assert(receiver.isAwake && receiver.dispatch() == 1);
/// @endcode

#pragma once

#include <vector>

#include "Base/Thread/zeThreadMutex.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

class Message;
class MessageSender;

/// A queue of messages, from any number of senders.
class ZEBASE_API MessageReceiver {
public:
    /// Without senders, and empty.
    MessageReceiver();
    MessageReceiver(const MessageReceiver&) = delete; ///< Connect senders to another one.
    MessageReceiver& operator=(const MessageReceiver&) = delete;

    /// Disconnects all senders, and runs the messages that are queued, in order, on the calling
    /// thread: they must not throw, nor use this receiver any more. No thread may be in wait().
    ///
    /// A class that overrides onMessageReceived() calls disconnect() in its own destructor: a
    /// sender might otherwise call it while the object is half destroyed.
    virtual ~MessageReceiver();

    /// Called on the sending thread for each message, after it was queued, with the sender's and
    /// the receiver's lock held: it must not call either. Here it does nothing. Override it to wake
    /// a main loop that does not sit in wait().
    virtual void onMessageReceived();

    /// The receiver's lock.
    Mutex& getLock();

    /// Waits until there is a message in the queue. Runs nothing.
    void wait();

    /// Runs the messages that are queued now, in the order in which they were sent, and deletes
    /// each. What is sent meanwhile is left for the next call. Returns how many there were.
    int dispatch();

    /// Runs and deletes these messages, none of which is null, and empties the list. Returns how
    /// many there were.
    int dispatchMessages(std::vector<Message*>& messages);

    /// MessageSender::connect().
    void connect(MessageSender& sender);

    /// For callers that hold the locks: removes `sender`, not null, from those that are connected
    /// to this receiver, and leaves it without a receiver, whichever it had. Others call
    /// MessageSender::disconnect().
    void disconnect(MessageSender* sender);

    /// Disconnects all senders. What they have sent stays in the queue.
    void disconnect();

private:
    friend class MessageSender;
    struct Block;

    Block* block_;
};

} // namespace zeThread
