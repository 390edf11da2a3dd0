// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadPollingThread.h"

#include <memory>

#include "Base/Thread/zeThreadMessageReceiver.h"
#include "Base/Thread/zeThreadMessageSender.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadThread.h"
#include "Base/Utility/zeRTBAsyncSignal.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zeThread {

using TerminatedSignal = zeRTB::SignalArg<PollingThread*>;

class PollingImpl : public ze::ImplBase {
public:
    PollingImpl(PollingThread* owner, bool (PollingThread::*repeated)())
        : owner_(owner), repeated_(repeated) {}

    ~PollingImpl() override {
        if (thread_)
            thread_->wait();
        thread_ = nullptr; // while the rest still stands
    }

    zeUtil::Error start(MessageReceiver& receiver) {
        if (thread_)
            return {1, "Object started already"};
        sender_.connect(receiver);
        thread_ = std::make_unique<Thread>();
        thread_->getSignal()->connect(client_, this, &PollingImpl::threadFunc);
        zeUtil::Error error = thread_->start();
        if (error.code() != 0) {
            sender_.disconnect();
            thread_ = nullptr;
        }
        return error;
    }

    void terminate() {
        MutexOp op(mutex_, true);
        op.lock();
        terminate_ = true;
    }

    TerminatedSignal& terminated() { return terminated_; }
    MessageSender& sender() { return sender_; }

private:
    void threadFunc() {
        while (!isTerminating() && (owner_->*repeated_)()) {
        }
        sender_.sendAsyncSignal(new zeRTB::AsyncSignalArg<TerminatedSignal>(&terminated_, owner_));
    }

    bool isTerminating() {
        MutexOp op(mutex_, true);
        op.lock();
        return terminate_;
    }

    // The new thread ends the connection, and unlinks it here: nobody else may use this client.
    zeRTB::SignalClient client_;
    PollingThread* owner_;
    bool (PollingThread::*repeated_)();
    std::unique_ptr<Thread> thread_; ///< From a successful start.
    bool terminate_ = false;         ///< Guarded by `mutex_`. Never taken back.
    TerminatedSignal terminated_;
    MessageSender sender_;
    Mutex mutex_;
};

PollingThread::PollingThread()
    : impl_(new PollingImpl(this, &PollingThread::poll)), ownsImpl_(true) {}

PollingThread::~PollingThread() {
    if (ownsImpl_)
        delete impl_;
    impl_ = nullptr;
}

zeUtil::Error PollingThread::start(MessageReceiver& receiver) {
    return impl_->start(receiver);
}

void PollingThread::terminateAsync() {
    impl_->terminate();
}

zeRTB::SignalArg<PollingThread*>& PollingThread::getSigTerminated() {
    return impl_->terminated();
}

MessageSender& PollingThread::getSender() {
    return impl_->sender();
}

} // namespace zeThread
