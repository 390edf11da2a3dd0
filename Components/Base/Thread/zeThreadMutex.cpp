// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMutex.h"

#include "Base/Thread/zeThreadMutexImpl.h"
#include "Base/Thread/zeThreadSpinImpl.h"

namespace zeThread {

namespace {

// About two microseconds in all.
constexpr int tries = 20;
constexpr int pausesPerTry = 8;

} // namespace

Mutex::Mutex(bool ignored) : block_(new Block{.ignored = ignored}) {}

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

void BriefLock::lockContended(pthread_mutex_t& mutex) {
    for (int i = 0; i < tries && usableProcessors() > 1; ++i) {
        for (int pause = 0; pause < pausesPerTry; ++pause)
            pauseSpinning();
        if (pthread_mutex_trylock(&mutex) == 0)
            return;
    }
    pthread_mutex_lock(&mutex);
}

} // namespace zeThread
