// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSVirtualMemory.h"

#include <algorithm>

#include "Base/Utility/zeReferenceCount.h"

namespace zeOS {
namespace {

constexpr int freeState = 0;
constexpr int notAvailable = 3;

} // namespace

class VirtualMemoryIterator::VirtualMemoryIteratorImpl : public ze::ImplBase {
public:
    void reset() {}
    void next() {}
    bool valid() const { return false; }
    unsigned long getSize() const { return 0; }
    int getState() const { return notAvailable; }
};

VirtualMemoryIterator::VirtualMemoryIterator() : impl_(new VirtualMemoryIteratorImpl) {}

VirtualMemoryIterator::~VirtualMemoryIterator() {
    delete impl_;
}

void VirtualMemoryIterator::reset() {
    impl_->reset();
}

void VirtualMemoryIterator::next() {
    impl_->next();
}

bool VirtualMemoryIterator::valid() const {
    return impl_->valid();
}

unsigned long VirtualMemoryIterator::getSize() const {
    return impl_->getSize();
}

int VirtualMemoryIterator::getState() const {
    return impl_->getState();
}

bool IsMemBlockFree(unsigned long size) {
    VirtualMemoryIterator region;
    if (region.getState() == notAvailable)
        return true;
    for (; region.valid(); region.next())
        if (region.getState() == freeState && region.getSize() >= size)
            return true;
    return false;
}

unsigned long GetMaxFreeMemBlockSize() {
    VirtualMemoryIterator region;
    if (region.getState() == notAvailable)
        return 0;
    unsigned long largest = 0;
    for (; region.valid(); region.next())
        largest = std::max(largest, region.getSize());
    return largest;
}

zeUtil::Error useWindowsLowFragmentationHeap() {
    return zeUtil::Error();
}

} // namespace zeOS
