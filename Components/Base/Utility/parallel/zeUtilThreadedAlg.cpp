// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilThreadedAlg.h"

#include "Base/Utility/zeUtilProgress.h"

namespace zeUtil {

ThreadedAlgBase::~ThreadedAlgBase() = default;

bool ThreadedAlgBase::cancelled(int threadId) {
    if (threadId == 0 && progress_ && progress_->cancelled())
        cancelledFlag_.store(true, std::memory_order_relaxed);
    return cancelledFlag_.load(std::memory_order_relaxed);
}

void ThreadedAlgBase::updateProgress(int threadId, double value) {
    if (Progress* progress = getProgress(threadId))
        progress->set(value);
}

ThreadedAlg::~ThreadedAlg() = default;

void ThreadedAlg::initialize(int) {}

void ThreadedAlg::finalize() {}

ThreadedChunkAlg::~ThreadedChunkAlg() = default;

void ThreadedChunkAlg::initialize(int) {}

void ThreadedChunkAlg::finalize() {}

} // namespace zeUtil
