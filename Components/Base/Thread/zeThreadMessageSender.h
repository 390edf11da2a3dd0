// SPDX-License-Identifier: MIT

/// @file
/// The sending end of a connection between threads: zeThread::MessageSender.
///
/// **Order of locks**, here and in the receiver: the process-wide lock of connections, then the
/// sender's lock, then the receiver's. Take getLock() only in this order.
///
/// Threads: any thread may call at any time, while the sender exists.
///
/// @code
/// #include "Base/Thread/zeThreadMessageReceiver.h"
/// struct Greeting : zeThread::Message {
///     explicit Greeting(int& greeted) : greeted_(greeted) {}
///     void dispatch() override { ++greeted_; }
///     int& greeted_;
/// };
/// int greeted = 0;
/// zeThread::MessageReceiver receiver; // of the main thread
/// zeThread::MessageSender sender;     // of another
/// sender.connect(receiver);
/// sender.send(new Greeting(greeted));
/// assert(greeted == 0);
/// receiver.wait();
/// assert(receiver.dispatch() == 1 && greeted == 1);
/// @endcode

#pragma once

#include "Base/Thread/zeThreadMessage.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/zeBaseExport.h"

namespace zeRTB {
class AsyncSignal;
}

namespace zeThread {

class MessageReceiver;

/// Sends messages to the one receiver that it is connected to.
class ZEBASE_API MessageSender {
public:
    /// Not connected.
    MessageSender();
    MessageSender(const MessageSender&) = delete; ///< Connect another to the same receiver.
    MessageSender& operator=(const MessageSender&) = delete;

    /// disconnect(). The memory behind a sender (less than 100 bytes, and its lock) is not freed,
    /// which is kept for compatibility: make senders once rather than in a loop.
    ~MessageSender();

    /// The sender's lock.
    Mutex& getLock();

    /// Takes the message over and appends it to the receiver's queue. Null is ignored. Without a
    /// receiver the message is deleted and does not run.
    void send(Message* message);

    /// send() of an AsyncSignalMessage that takes `signal` over; a message is sent for null too.
    void sendAsyncSignal(zeRTB::AsyncSignal* signal);

    /// Connects to `receiver`, and disconnects from another one before. Messages that were sent
    /// stay where they are.
    void connect(MessageReceiver& receiver);

    /// Ends the connection, if there is one. Messages that were sent still run.
    void disconnect();

private:
    friend class MessageReceiver;
    struct Block;

    Block* block_;
};

} // namespace zeThread
