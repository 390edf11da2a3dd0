// SPDX-License-Identifier: MIT

/// @file
/// Work that one thread hands to another: zeThread::Message.
///
/// A zeThread::MessageSender takes a message over and appends it to the queue of its
/// zeThread::MessageReceiver, whose thread runs it and deletes it.
///
/// Threads: a message belongs to the sending thread until it is sent, and then to the one that
/// dispatches it.
///
/// @code
/// struct Progress : zeThread::Message {
///     Progress(int& shown, int percent) : shown_(shown), percent_(percent) {}
///     void dispatch() override { shown_ = percent_; }
///     int& shown_;
///     int percent_;
/// };
/// int shown = 0;
/// Progress(shown, 50).dispatch(); // what the receiver's thread does
/// assert(shown == 50);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeRTB {
class AsyncSignal;
}

namespace zeThread {

/// Base of messages. Made with `new`, and deleted by whom it was sent to.
class ZEBASE_API Message {
public:
    /// Nothing to set up.
    Message() = default;
    Message(const Message&) = delete; ///< Each message is sent once.
    Message& operator=(const Message&) = delete;
    virtual ~Message();

    /// Does the work, on the receiver's thread, which holds no lock meanwhile: it may send, connect
    /// and disconnect. An exception escapes from the receiver's dispatch(), which then deletes the
    /// messages behind this one without running them.
    virtual void dispatch() = 0;
};

/// One firing of a signal as a message, so that a signal is fired on the thread that it belongs to.
class ZEBASE_API AsyncSignalMessage : public Message {
public:
    /// Takes `signal` over, which may be null.
    explicit AsyncSignalMessage(zeRTB::AsyncSignal* signal);

    /// Deletes a signal that was not fired.
    ~AsyncSignalMessage() override;

    /// Fires the signal and deletes it. Does nothing without one.
    void dispatch() override;

private:
    zeRTB::AsyncSignal* signal_;
};

} // namespace zeThread
