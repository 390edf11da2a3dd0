// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSIOStream.h"

namespace zeOS {

IOStream::~IOStream() = default;

} // namespace zeOS
