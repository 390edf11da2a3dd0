// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadSemaphore.h"

#include <semaphore.h>

#include <limits>
#include <utility>

#include "Base/OS/zeOSError.h"
#include "Base/Thread/zeThreadSpinImpl.h"
#include "Base/Thread/zeThreadThrowImpl.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeThread {

struct Semaphore::Block {
    bool tryWait() {
        return zeUtil::retried([this] { return sem_trywait(semaphore); }) == 0;
    }

    /// Where the counter is zero; apart, so that the usual case stays short.
    [[gnu::noinline]] void waitForPost() {
        if (!spin.until([this] { return tryWait(); }))
            zeUtil::retried([this] { return sem_wait(semaphore); });
    }

    sem_t own{};
    sem_t* semaphore = &own;
    AdaptiveSpin spin;
};

namespace {

/// Frees the block and throws what the system said of it.
template<class Block>
[[noreturn]] void fail(int code, Block*& block) {
    const zeUtil::Error error(code, zeOS::getLastError());
    delete std::exchange(block, nullptr);
    throwError(error);
}

} // namespace

Semaphore::Semaphore(unsigned int initial) : block_(new Block) {
    if (sem_init(block_->semaphore, 0, initial) != 0)
        fail(1, block_);
}

// The block is freed on failure only, which is kept for compatibility.
Semaphore::~Semaphore() {
    if (sem_destroy(block_->semaphore) != 0)
        fail(2, block_);
}

void Semaphore::wait() {
    if (!block_->tryWait())
        block_->waitForPost();
}

bool Semaphore::tryWait() {
    return block_->tryWait();
}

void Semaphore::post() {
    sem_post(block_->semaphore);
}

unsigned int Semaphore::maxValue() {
    return std::numeric_limits<int>::max();
}

} // namespace zeThread
