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

/// Whether a string that is first looked for in slot 0 leaves the state in which every table gives
/// the same codes.
///
/// The quirk is about the string of two zero bytes, with key 0. It does not show while that string
/// is in slot 0, where its search begins: all others that begin there go on, as at any first probe,
/// and those that begin elsewhere do not come by, since the number of slots is prime. So the quirk
/// shows if another string took slot 0 before.
bool ioCompressTableImpl::quirkMayShow(unsigned code) {
    if (code == 0 && slotZeroTaken_)
        return true;
    slotZeroTaken_ = true;
    return false;
}

/// Works out the true table from the strings up to `lastCode`.
void ioCompressTableImpl::useSlots(unsigned lastCode) {
    slotsInUse_ = true;
    std::memset(slots_, 0, sizeof slots_);
    for (unsigned code = ioCompressFormat::firstFreeCode; code <= lastCode; ++code) {
        findInSlots(keys_[code] & 0xFFFF, keys_[code] >> 16);
        slots_[place_] = static_cast<std::uint16_t>(code);
    }
}

/// The search as the format has it. Its first probe stops at a free slot, and later ones also at
/// the string of two zero bytes, as if its slot were free. A new string then takes that slot, and
/// the two zero bytes are forgotten (or, in a full table, a string further on is not found). A
/// reader follows whatever codes come, but any other search gives another stream.
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
    place_ = i;
    return found != 0 && keys_[found] == key ? found : 0;
}
