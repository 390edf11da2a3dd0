// SPDX-License-Identifier: MIT

/// @file
/// What lies behind the two ends of a connection between threads.

#pragma once

#include <set>
#include <vector>

#include "Base/Thread/zeThreadCondition.h"
#include "Base/Thread/zeThreadMessageReceiver.h"
#include "Base/Thread/zeThreadMessageSender.h"
#include "Base/Thread/zeThreadMutex.h"

namespace zeThread {

/// Serialises all changes of who is connected to whom. The first in the order of locks.
extern Mutex s_connectionLock;

/// Never freed: a receiver may lock it when the sender has just gone.
struct MessageSender::Block {
    Mutex lock;
    MessageReceiver* receiver = nullptr; ///< Guarded by `lock`.
};

/// The condition's mutex is the receiver's lock and guards the rest.
struct MessageReceiver::Block {
    Condition condition;
    std::set<MessageSender*> senders;
    std::vector<Message*> queue; ///< Owned.
};

} // namespace zeThread
