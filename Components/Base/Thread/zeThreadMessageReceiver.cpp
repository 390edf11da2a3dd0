// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMessageReceiver.h"

#include <memory>
#include <utility>

#include "Base/Thread/zeThreadMessage.h"
#include "Base/Thread/zeThreadMessageImpl.h"

namespace zeThread {

Mutex s_connectionLock(true);

namespace {

/// Empties a list in the end, and deletes the messages that an exception has left in it.
class Emptied {
public:
    explicit Emptied(std::vector<Message*>& messages) : messages_(messages) {}
    Emptied(const Emptied&) = delete;
    Emptied& operator=(const Emptied&) = delete;
    ~Emptied() {
        for (const Message* message : messages_)
            delete message;
        messages_.clear();
    }

private:
    std::vector<Message*>& messages_;
};

} // namespace

MessageReceiver::MessageReceiver() : block_(new Block) {}

MessageReceiver::~MessageReceiver() {
    std::vector<Message*> messages;
    {
        MutexOp connectionOp(s_connectionLock, true);
        connectionOp.lock();
        disconnect();
        {
            MutexOp op(getLock(), true);
            op.lock();
            messages.swap(block_->queue);
        }
        delete std::exchange(block_, nullptr);
    }
    dispatchMessages(messages);
}

void MessageReceiver::onMessageReceived() {}

Mutex& MessageReceiver::getLock() {
    return block_->condition.getMutex();
}

void MessageReceiver::wait() {
    MutexOp op(getLock(), true);
    op.lock();
    while (block_->queue.empty())
        block_->condition.wait(zeUtil::Interval());
}

int MessageReceiver::dispatch() {
    std::vector<Message*> messages;
    {
        MutexOp op(getLock(), true);
        op.lock();
        messages.swap(block_->queue);
    }
    return dispatchMessages(messages);
}

int MessageReceiver::dispatchMessages(std::vector<Message*>& messages) {
    const Emptied batch(messages);
    for (Message*& message : messages) {
        const std::unique_ptr<Message> owned(std::exchange(message, nullptr));
        owned->dispatch();
    }
    return static_cast<int>(messages.size());
}

void MessageReceiver::connect(MessageSender& sender) {
    MutexOp connectionOp(s_connectionLock, true);
    connectionOp.lock();
    MutexOp senderOp(sender.getLock(), true);
    senderOp.lock();
    if (MessageReceiver* const former = sender.block_->receiver) {
        MutexOp op(former->getLock(), true);
        op.lock();
        former->disconnect(&sender);
    }
    MutexOp op(getLock(), true);
    op.lock();
    block_->senders.insert(&sender);
    sender.block_->receiver = this;
}

void MessageReceiver::disconnect(MessageSender* sender) {
    block_->senders.erase(sender);
    sender->block_->receiver = nullptr;
}

void MessageReceiver::disconnect() {
    for (;;) {
        // The sender's lock comes before the receiver's, and only the receiver knows the sender:
        // look, let go, lock in order, and look again. The sender may be gone by then (even with
        // another in its place), but not its block.
        MutexOp op(getLock(), true);
        op.lock();
        if (block_->senders.empty())
            return;
        MessageSender* const sender = *block_->senders.begin();
        MessageSender::Block* const senderBlock = sender->block_;
        op.unlock();
        MutexOp senderOp(senderBlock->lock, true);
        senderOp.lock();
        op.lock();
        if (block_->senders.contains(sender) && sender->block_ == senderBlock)
            disconnect(sender);
    }
}

} // namespace zeThread
