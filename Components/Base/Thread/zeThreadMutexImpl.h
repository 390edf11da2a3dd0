// SPDX-License-Identifier: MIT

/// @file
/// What lies behind a zeThread::Mutex.

#pragma once

#include <pthread.h>

#include "Base/Thread/zeThreadMutex.h"

namespace zeThread {

/// A cache line of its own, so that threads that use neighbouring locks do not disturb each other.
struct alignas(64) Mutex::Block {
    bool ignored;
    pthread_mutex_t mutex{}; ///< Zero-filled: of the default kind, which is not recursive.
};

} // namespace zeThread
