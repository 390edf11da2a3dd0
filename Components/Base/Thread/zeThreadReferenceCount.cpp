// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadReferenceCount.h"

#include "Base/Thread/zeThreadAtomic.h"
#include "Base/Thread/zeThreadRelaxedImpl.h"

namespace zeThread {

ReferenceCount::~ReferenceCount() = default;

void ReferenceCount::ref() const {
    atomicIncrement(count_);
}

// The second look at the count is kept for compatibility. Only the thread that brought it to 0
// takes it: for any other the object may be gone.
void ReferenceCount::unref() const {
    if (atomicDecrement(count_) == 0 && refs() == 0)
        delete this;
}

int ReferenceCount::refs() const {
    return relaxedLoad(count_);
}

} // namespace zeThread
