// SPDX-License-Identifier: MIT

#include "Base/IO/filters/ioCompressTableImpl.h"

#include <cstring>

#include "Base/IO/filters/ioBufferCompressImpl.h"

void ioCompressTableImpl::clear() {
    slotsInUse_ = false;
    slotZeroTaken_ = false;
    std::memset(pairs_, 0, sizeof pairs_);
    std::memset(longer_, 0, sizeof longer_);
}

/// Works out the true table from the strings up to `lastCode`.
void ioCompressTableImpl::useSlots(unsigned lastCode) {
    slotsInUse_ = true;
    std::memset(slots_, 0, sizeof slots_);
    for (unsigned code = ioCompressFormat::firstFreeCode; code <= lastCode; ++code) {
        findInSlots(keys_[code] & 0xFFFF, keys_[code] >> 16);
        slots_[freePlace_] = static_cast<std::uint16_t>(code);
    }
}

bool ioCompressTableImpl::extendInSlots(Match& match, unsigned byte) {
    const unsigned code = findInSlots(match.code, byte);
    if (code != 0)
        match.code = code; // the place is not used
    return code != 0;
}

/// The search as the format defines it.
unsigned ioCompressTableImpl::findInSlots(unsigned code, unsigned byte) {
    const std::uint32_t key = keyOf(code, byte);
    unsigned i = firstSlot(code, byte);
    const unsigned step = i == 0 ? 1 : slotCount - i;
    bool first = true;
    unsigned found;
    while ((found = slots_[i]) != 0 && keys_[found] != key && (first || keys_[found] != 0)) {
        i = i < step ? i + slotCount - step : i - step;
        first = false;
    }
    freePlace_ = i;
    return found != 0 && keys_[found] == key ? found : 0;
}
