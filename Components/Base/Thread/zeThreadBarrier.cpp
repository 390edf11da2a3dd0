// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadBarrier.h"

#include <atomic>

#include "Base/Thread/zeThreadCondition.h"
#include "Base/Thread/zeThreadMutex.h"
#include "Base/Thread/zeThreadReferenceCount.h"
#include "Base/Thread/zeThreadSpinImpl.h"

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
            op.unlock(); // first, so that those who wake find the mutex free
            condition_.broadcast();
            return;
        }
        op.unlock();
        const auto isOver = [this, cycle] { return cycle_ != cycle; };
        if (count_ <= static_cast<int>(usableProcessors()) && spin_.until(isOver))
            return;
        op.lock();
        while (!isOver())
            condition_.wait(zeUtil::Interval());
    }

private:
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
