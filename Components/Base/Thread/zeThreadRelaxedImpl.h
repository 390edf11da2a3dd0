// SPDX-License-Identifier: MIT

/// @file
/// Access to a plain field that one thread may read while another, under a lock, changes it.

#pragma once

#include <atomic>

namespace zeThread {

/// The value at some moment.
template<class T>
T relaxedLoad(const T& field) {
    return std::atomic_ref<T>(const_cast<T&>(field)).load(std::memory_order_relaxed);
}

/// Changes the value. The caller holds the lock that keeps other changes away.
template<class T>
void relaxedStore(T& field, T value) {
    std::atomic_ref<T>(field).store(value, std::memory_order_relaxed);
}

} // namespace zeThread
