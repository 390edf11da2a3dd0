// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilOrdering.h"

#include <numeric>

namespace zeUtil {

Ordering::~Ordering() {
    delete[] indices_;
}

void Ordering::resize(unsigned long size) {
    const int newSize = static_cast<int>(size);
    if (newSize != size_) {
        int* indices = new int[static_cast<unsigned long>(newSize)];
        delete[] indices_;
        indices_ = indices;
        size_ = newSize;
    }
    std::iota(begin(), end(), 0);
}

} // namespace zeUtil
