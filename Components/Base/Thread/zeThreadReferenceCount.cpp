// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadReferenceCount.h"

#include "Base/Thread/zeThreadAtomic.h"
#include "Base/Thread/zeThreadRelaxedImpl.h"

namespace zeThread {

ReferenceCount::~ReferenceCount() = default;

void ReferenceCount::ref() const {
    atomicIncrement(count_);
}

// The count is read again before the object is deleted, as it always was; but only by the thread
// that brought it to 0. Any other may find the object gone.
void ReferenceCount::unref() const {
    if (atomicDecrement(count_) == 0 && refs() == 0)
        delete this;
}

int ReferenceCount::refs() const {
    return relaxedLoad(count_);
}

} // namespace zeThread
