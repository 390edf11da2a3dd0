// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadThread.h"

#include <pthread.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <utility>

#include "Base/OS/zeOSError.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zeThread {

using Signal = zeRTB::SignalVoid;

class ThreadImpl : public ze::ImplBase {
public:
    ThreadImpl(void (*entry)(void*), void* arg, std::unique_ptr<Signal> signal)
        : entry_(entry), arg_(arg), signal_(std::move(signal)) {
        if (!s_initialized.load(std::memory_order_relaxed)) {
            blockChildSignal();
            s_initialized.store(true, std::memory_order_relaxed);
        }
    }

    static std::atomic<bool> s_initialized;

    void (*entry_)(void*); ///< The body, or null: then the signal is.
    void* arg_;
    std::unique_ptr<Signal> signal_; ///< Goes to the new thread at the start.
    bool running_ = false; ///< From a start to the next wait, also when the body has ended.
    pthread_t handle_{};

private:
    static void blockChildSignal() {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    }
};

constinit std::atomic<bool> ThreadImpl::s_initialized = false;

namespace {

/// What a new thread is given, and owns.
struct StartRecord {
    void (*entry)(void*);
    void* arg;
    std::unique_ptr<Signal> signal;
};

void* zeThreadFunction(void* given) {
    const std::unique_ptr<StartRecord> record(static_cast<StartRecord*>(given));
    if (record->entry)
        record->entry(record->arg);
    else if (record->signal)
        record->signal->send();
    return nullptr;
}

zeUtil::Error failure(const char* format, int error) {
    return {1, format, zeOS::errorText(error).asWChar()};
}

} // namespace

Thread::Thread()
    : impl_(new ThreadImpl(nullptr, nullptr, std::make_unique<Signal>())), ownsImpl_(true) {}

Thread::Thread(void (*entry)(void*), void* arg)
    : impl_(new ThreadImpl(entry, arg, nullptr)), ownsImpl_(true) {}

Thread::~Thread() {
    if (impl_->running_)
        pthread_detach(impl_->handle_);
    if (ownsImpl_)
        delete impl_;
    impl_ = nullptr;
}

void Thread::setArg(void* arg) {
    impl_->arg_ = arg;
}

zeRTB::SignalVoid* Thread::getSignal() {
    return impl_->signal_.get();
}

zeUtil::Error Thread::start() {
    std::unique_ptr<StartRecord> record(
        new StartRecord{impl_->entry_, impl_->arg_, std::move(impl_->signal_)});
    pthread_attr_t attributes; // never destroyed, which is kept; there is nothing to free
    pthread_attr_init(&attributes);
    pthread_t handle{}; // undefined after a failure: a thread that was started before keeps its own
    if (const int error = pthread_create(&handle, &attributes, zeThreadFunction, record.get()))
        return failure("pthread_create() failed: %S", error);
    static_cast<void>(record.release()); // the thread's
    impl_->handle_ = handle;
    impl_->running_ = true;
    return {};
}

zeUtil::Error Thread::wait() {
    if (!impl_->running_)
        return {2, "cannot wait for a stopped thread"};
    const int error = pthread_join(impl_->handle_, nullptr);
    impl_->running_ = false; // also if it failed
    return error ? failure("pthread_join() failed: %S", error) : zeUtil::Error();
}

} // namespace zeThread

int zeThread_CreateThread(void (*entry)(void*), void* arg) {
    zeThread::Thread thread(entry, arg);
    return thread.start().code() == 0 ? 1 : 0;
}
