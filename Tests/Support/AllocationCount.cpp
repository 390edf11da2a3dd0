// SPDX-License-Identifier: MIT

#include "Support/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> count = 0;
std::atomic<std::size_t> bytes = 0;
std::atomic<std::size_t> failing = 0;

} // namespace

std::size_t allocationCount() {
    return count;
}

std::size_t allocatedBytes() {
    return bytes;
}

void failAllocation(std::size_t n) {
    failing = n == 0 ? 0 : count + n;
}

// ThreadSanitizer has operators of its own, which no program may replace: there nothing is counted,
// and nothing fails.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define REPLACEABLE [[gnu::weak]]
#endif
#endif
#ifndef REPLACEABLE
#define REPLACEABLE
#endif

REPLACEABLE void* operator new(std::size_t size) {
    if (++count == failing)
        throw std::bad_alloc();
    bytes += size;
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

REPLACEABLE void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

REPLACEABLE void operator delete(void* memory) noexcept {
    std::free(memory);
}

REPLACEABLE void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
