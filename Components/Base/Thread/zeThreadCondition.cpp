// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadCondition.h"

#include <pthread.h>

#include <cstring>
#include <ctime>
#include <memory>

#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadMutexImpl.h"
#include "Base/Thread/zeThreadThrowImpl.h"

namespace zeThread {

struct Condition::Block {
    pthread_cond_t condition;
    Mutex mutex{false};
};

Condition::Condition() {
    auto block = std::make_unique<Block>();
    if (const int error = pthread_cond_init(&block->condition, nullptr))
        throwError({1, "Cannot initialize pthread condition: %s", std::strerror(error)});
    block_ = block.release();
}

Condition::~Condition() {
    const int error = pthread_cond_destroy(&block_->condition);
    delete block_;
    if (error)
        throwError({2, "The pthread condition being destroyed is in use."});
}

Mutex& Condition::getMutex() {
    return block_->mutex;
}

void Condition::signal() {
    pthread_cond_signal(&block_->condition);
}

void Condition::broadcast() {
    pthread_cond_broadcast(&block_->condition);
}

int Condition::wait(zeUtil::Interval deadline) {
    pthread_mutex_t* const mutex = &block_->mutex.block_->mutex;
    if (deadline == zeUtil::Interval())
        return pthread_cond_wait(&block_->condition, mutex);
    const timespec time{deadline.seconds, deadline.microseconds * 1000L};
    return pthread_cond_timedwait(&block_->condition, mutex, &time);
}

} // namespace zeThread
