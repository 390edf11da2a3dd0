// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadSemaphore.h"

#include <semaphore.h>

#include <limits>
#include <utility>

#include "Base/OS/zeOSError.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Base/Utility/zeUtilError.h"

namespace zeThread {

struct Semaphore::Block {
    sem_t own{};
    sem_t* semaphore = &own;
};

namespace {

/// Frees the block and reports what the system said of it; ends the process where a destructor
/// calls it: destructors let no exception out.
template<class Block>
[[noreturn]] void fail(int code, Block*& block) {
    zeUtil::Error error(code, zeOS::getLastError());
    delete std::exchange(block, nullptr);
    throw error;
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
    zeUtil::retried([this] { return sem_wait(block_->semaphore); });
}

bool Semaphore::tryWait() {
    return zeUtil::retried([this] { return sem_trywait(block_->semaphore); }) == 0;
}

void Semaphore::post() {
    sem_post(block_->semaphore);
}

unsigned int Semaphore::maxValue() {
    return std::numeric_limits<int>::max();
}

} // namespace zeThread
