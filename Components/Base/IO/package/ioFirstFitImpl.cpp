// SPDX-License-Identifier: MIT

#include "Base/IO/package/ioFirstFitImpl.h"

#include <algorithm>
#include <bit>

void ioFirstFitImpl::assign(const std::vector<long>& sizes) {
    const std::size_t leaves = std::bit_ceil(std::max<std::size_t>(sizes.size(), 1));
    greatest_.assign(2 * leaves, taken);
    std::copy(sizes.begin(), sizes.end(), greatest_.begin() + static_cast<std::ptrdiff_t>(leaves));
    for (std::size_t node = leaves - 1; node > 0; --node)
        greatest_[node] = std::max(greatest_[2 * node], greatest_[2 * node + 1]);
    valid_ = true;
}

void ioFirstFitImpl::set(int index, long size) {
    if (!valid_)
        return;
    const std::size_t leaves = greatest_.size() / 2;
    if (static_cast<std::size_t>(index) >= leaves) { // unknown elements count as taken
        if (size != taken)
            valid_ = false;
        return;
    }
    std::size_t node = leaves + static_cast<std::size_t>(index);
    greatest_[node] = size;
    while ((node /= 2) > 0)
        greatest_[node] = std::max(greatest_[2 * node], greatest_[2 * node + 1]);
}

int ioFirstFitImpl::find(long size) const {
    if (greatest_[1] < size)
        return -1;
    const std::size_t leaves = greatest_.size() / 2;
    std::size_t node = 1;
    while (node < leaves)
        node = greatest_[2 * node] >= size ? 2 * node : 2 * node + 1;
    return static_cast<int>(node - leaves);
}
