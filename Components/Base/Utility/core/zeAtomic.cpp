// SPDX-License-Identifier: MIT

#include "Base/Utility/zeAtomic.h"

namespace ze {

// Kept for compatibility: callers rely on these having no effect.
int atomic_increment(int*) {
    return 0;
}

int atomic_decrement(int*) {
    return 0;
}

} // namespace ze
