// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadRWLock.h"

#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadRelaxedImpl.h"

namespace zeThread {

RWLock::RWLock() = default;

RWLock::~RWLock() = default;

void RWLock::readLock() {
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    while (writer_)
        condition_.wait(zeUtil::Interval());
    relaxedStore(readers_, readers_ + 1);
}

void RWLock::writeLock() {
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    while (writer_ || readers_ > 0)
        condition_.wait(zeUtil::Interval());
    relaxedStore(writer_, true);
}

void RWLock::readUnlock() {
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    relaxedStore(readers_, readers_ - 1);
    if (readers_ == 0)
        condition_.signal();
}

void RWLock::writeUnlock() {
    MutexOp op(condition_.getMutex(), true);
    op.lock();
    relaxedStore(writer_, false);
    condition_.broadcast();
}

int RWLock::numberOfReaders() const {
    return relaxedLoad(readers_);
}

bool RWLock::hasWriter() const {
    return relaxedLoad(writer_);
}

} // namespace zeThread
