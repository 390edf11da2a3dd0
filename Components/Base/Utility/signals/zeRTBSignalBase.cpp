// SPDX-License-Identifier: MIT

#include "Base/Utility/zeRTBSignalBase.h"

#include <memory>
#include <utility>

namespace zeRTB {

SignalBase::connectionItem::~connectionItem() {
    delete function;
}

void SignalBase::connectionItem::detach() {
    (prev ? prev->next : owner->head_) = next;
    if (next)
        next->prev = prev;
    next = nullptr;
    prev = nullptr;
    owner = nullptr;
}

void SignalBase::connectionItem::destroy() {
    if (peer) {
        peer->peer = nullptr; // first, so that the halves do not recurse into each other
        peer->destroy();
        peer = nullptr;
    }
    if (lockCount != 0) {
        pendingDestroy = true;
        return;
    }
    if (owner)
        detach();
    delete this;
}

SignalBase::~SignalBase() {
    if (!head_)
        return;
    // The destructor of a function object may end other connections of this list: they unlink
    // themselves from `ending`, and the loop reads its head afresh each time.
    SignalBase ending;
    ending.takeConnections(*this);
    while (connectionItem* item = ending.head_) {
        item->detach();
        item->destroy();
    }
}

int SignalBase::numConnections() const {
    int count = 0;
    for (const connectionItem* item = head_; item; item = item->next)
        ++count;
    return count;
}

SignalBase::connectionItem* SignalBase::createConnectionItem() {
    auto* item = new connectionItem(this);
    item->next = head_;
    if (head_)
        head_->prev = item;
    head_ = item;
    return item;
}

SignalBase::Connection* SignalBase::addCallback(FunctionBase* function) {
    std::unique_ptr<FunctionBase> owned(function);
    connectionItem* item = createConnectionItem();
    item->function = owned.release();
    return item;
}

SignalBase::Connection* SignalBase::addCallback(FunctionBase* function, SignalClient& client) {
    std::unique_ptr<FunctionBase> owned(function);
    connectionItem* clientItem = client.createConnectionItem();
    try {
        connectionItem* item = addCallback(owned.release());
        item->peer = clientItem;
        clientItem->peer = item;
        return item;
    } catch (...) {
        clientItem->destroy(); // no half of a connection stays behind
        throw;
    }
}

void SignalBase::disconnect(Connection* connection) {
    for (connectionItem* item = head_; item; item = item->next) {
        if (item == connection) {
            item->destroy();
            return;
        }
    }
}

void SignalBase::disconnectInstance(void* instance) {
    for (connectionItem* item = head_; item;) {
        item->lock();
        if (item->function && item->function->isInstance(instance))
            item->destroy();
        connectionItem* next = item->next;
        item->unlock();
        item = next;
    }
}

SignalBase::Connection* SignalBase::findInstance(void* instance) const {
    for (connectionItem* item = head_; item; item = item->next) {
        if (!item->pendingDestroy && item->function && item->function->isInstance(instance))
            return item;
    }
    return nullptr;
}

SignalBase::Connection* SignalBase::findGlobalCallback(void* function) const {
    for (connectionItem* item = head_; item; item = item->next) {
        // Connections that wait for destruction count here, unlike in findInstance(): callers ask
        // whether the function may still be needed.
        if (item->function && item->function->isGlobalFunction(function))
            return item;
    }
    return nullptr;
}

void SignalBase::takeConnections(SignalBase& other) noexcept {
    head_ = std::exchange(other.head_, nullptr);
    for (connectionItem* item = head_; item; item = item->next)
        item->owner = this;
}

} // namespace zeRTB
