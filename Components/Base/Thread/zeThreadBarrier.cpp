// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadBarrier.h"

#include <atomic>

#include "Base/Thread/zeThreadCondition.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadMutexImpl.h"
#include "Base/Thread/zeThreadReferenceCount.h"
#include "Base/Thread/zeThreadSpinImpl.h"

namespace zeThread {

class Barrier::Impl : public ReferenceCount {
public:
    explicit Impl(int parties) : count_(parties) {}

    void wait() {
        unsigned int cycle = 0;
        if (arriveLast(cycle)) {
            condition_.broadcast(); // without the mutex, so that those who wake find it free
            return;
        }
        if (count_ <= static_cast<int>(usableProcessors()) &&
            spin_.until([this, cycle] { return isOver(cycle); }))
            return;
        MutexOp op(condition_.getMutex(), true);
        op.lock();
        while (!isOver(cycle))
            condition_.wait(zeUtil::Interval());
    }

private:
    /// Counts the party, says which cycle it is in, and returns whether it was the last one, which
    /// begins the next cycle.
    bool arriveLast(unsigned int& cycle) {
        const BriefLock lock(condition_.getMutex());
        cycle = cycle_;
        if (++arrived_ != count_)
            return false;
        arrived_ = 0;
        ++cycle_;
        return true;
    }

    bool isOver(unsigned int cycle) const { return cycle_ != cycle; }

    Condition condition_; ///< Its mutex guards all changes of what follows.
    int count_;
    int arrived_ = 0;
    std::atomic<unsigned int> cycle_ = 0; ///< Read without the mutex by those who spin.
    AdaptiveSpin spin_;
};

Barrier::Barrier(int parties) : impl_(new Impl(parties)) {}

Barrier::~Barrier() = default;

void Barrier::wait() {
    const ze::Reference<Impl> kept = impl_;
    kept->wait();
}

} // namespace zeThread
