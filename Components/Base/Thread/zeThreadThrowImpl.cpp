// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadThrowImpl.h"

namespace zeThread {

void throwError(const zeUtil::Error& error) {
    throw error;
}

} // namespace zeThread
