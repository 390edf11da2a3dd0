// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMutex.h"

#include "Base/Thread/zeThreadMutexImpl.h"

namespace zeThread {

Mutex::Mutex(bool ignored) : block_(new Block{ignored}) {}

Mutex::~Mutex() {
    pthread_mutex_destroy(&block_->mutex);
    delete block_;
}

void Mutex::lock() {
    pthread_mutex_lock(&block_->mutex);
}

void Mutex::unlock() {
    pthread_mutex_unlock(&block_->mutex);
}

} // namespace zeThread
