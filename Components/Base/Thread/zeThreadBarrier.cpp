// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadBarrier.h"

#include "Base/Thread/zeThreadCondition.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadReferenceCount.h"

namespace zeThread {

class Barrier::Impl : public ReferenceCount {
public:
    explicit Impl(int parties) : count_(parties) {}

    void wait() {
        MutexOp op(condition_.getMutex(), true);
        op.lock();
        const unsigned int cycle = cycle_;
        if (++arrived_ == count_) {
            arrived_ = 0;
            ++cycle_;
            op.unlock();
            condition_.broadcast();
            return;
        }
        while (cycle_ == cycle)
            condition_.wait(zeUtil::Interval());
    }

private:
    Condition condition_; ///< Its mutex guards all that follows.
    int count_;
    int arrived_ = 0;
    unsigned int cycle_ = 0;
};

Barrier::Barrier(int parties) : impl_(new Impl(parties)) {}

Barrier::~Barrier() = default;

void Barrier::wait() {
    const ze::Reference<Impl> kept = impl_;
    kept->wait();
}

} // namespace zeThread
