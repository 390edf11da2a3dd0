// SPDX-License-Identifier: MIT

#include "Base/Utility/zeRTBAsyncSignal.h"

namespace zeRTB {

AsyncSignal::~AsyncSignal() = default;

} // namespace zeRTB
