// SPDX-License-Identifier: MIT

#include "Base/Utility/zeReferenceCount.h"

namespace ze {

ImplBase::~ImplBase() = default;

ReferenceCount::~ReferenceCount() = default;

} // namespace ze
