// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilPointerSignals.h"

namespace zeUtil {

namespace {

PointerSignal initSignal;
PointerSignal acquireSignal;
PointerSignal releaseSignal;
PointerSignal deleteSignal;

} // namespace

PointerSignal& getPointerInitSignal() {
    return initSignal;
}

PointerSignal& getPointerAcquireSignal() {
    return acquireSignal;
}

PointerSignal& getPointerReleaseSignal() {
    return releaseSignal;
}

PointerSignal& getPointerDeleteSignal() {
    return deleteSignal;
}

} // namespace zeUtil
