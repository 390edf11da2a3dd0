// SPDX-License-Identifier: MIT

/// @file
/// What lies behind a zeThread::Mutex, and the lock for the shortest of scopes.

#pragma once

#include <pthread.h>

#include "Base/Thread/zeThreadMutex.h"

namespace zeThread {

/// A cache line of its own, so that threads that use neighbouring locks do not disturb each other.
struct alignas(64) Mutex::Block {
    pthread_mutex_t mutex{}; ///< Zero-filled: of the default kind, which is not recursive.
    bool ignored;
};

/// Holds, for a scope, a mutex that nobody holds for more than some nanoseconds: where another
/// thread does, it tries some more times before it sleeps, since falling asleep and waking takes
/// much longer.
class BriefLock {
public:
    explicit BriefLock(Mutex& mutex) : mutex_(&mutex.block_->mutex) {
        if (pthread_mutex_trylock(mutex_) != 0)
            lockContended(*mutex_);
    }
    BriefLock(const BriefLock&) = delete;
    BriefLock& operator=(const BriefLock&) = delete;
    ~BriefLock() { pthread_mutex_unlock(mutex_); }

private:
    [[gnu::cold, gnu::noinline]] ZEBASE_HIDDEN static void lockContended(pthread_mutex_t& mutex);

    pthread_mutex_t* mutex_;
};

} // namespace zeThread
