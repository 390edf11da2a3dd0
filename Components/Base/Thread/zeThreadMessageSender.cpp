// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMessageSender.h"

#include <memory>

#include "Base/Thread/zeThreadMessage.h"
#include "Base/Thread/zeThreadMessageImpl.h"
#include "Base/Utility/zeRTBAsyncSignal.h"

namespace zeThread {

MessageSender::MessageSender() : block_(new Block) {}

// The block is not freed, which is kept for compatibility; MessageReceiver::disconnect() relies on
// it.
MessageSender::~MessageSender() {
    disconnect();
}

Mutex& MessageSender::getLock() {
    return block_->lock;
}

void MessageSender::send(Message* message) {
    std::unique_ptr<Message> owned(message); // deleted, where it stays ours, without a lock
    if (!owned)
        return;
    MutexOp op(block_->lock, true);
    op.lock();
    MessageReceiver* const receiver = block_->receiver;
    if (!receiver)
        return;
    MutexOp receiverOp(receiver->getLock(), true);
    receiverOp.lock();
    receiver->block_->queue.push_back(message);
    static_cast<void>(owned.release());
    receiver->block_->condition.signal();
    receiver->onMessageReceived();
}

void MessageSender::sendAsyncSignal(zeRTB::AsyncSignal* signal) {
    std::unique_ptr<zeRTB::AsyncSignal> owned(signal);
    auto message = std::make_unique<AsyncSignalMessage>(signal);
    static_cast<void>(owned.release());
    send(message.release());
}

void MessageSender::connect(MessageReceiver& receiver) {
    receiver.connect(*this);
}

void MessageSender::disconnect() {
    MutexOp connectionOp(s_connectionLock, true);
    connectionOp.lock();
    MutexOp op(block_->lock, true);
    op.lock();
    MessageReceiver* const receiver = block_->receiver;
    if (!receiver)
        return;
    MutexOp receiverOp(receiver->getLock(), true);
    receiverOp.lock();
    receiver->disconnect(this);
}

} // namespace zeThread
