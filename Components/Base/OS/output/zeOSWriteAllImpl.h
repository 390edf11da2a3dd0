// SPDX-License-Identifier: MIT

/// @file
/// Writing onto a byte stream until everything is written.

#pragma once

#include <cstddef>

#include "Base/Utility/zeUtilError.h"

namespace zeOS {

class IOStream;

/// Writes all `count` bytes and returns how many were taken, fewer only with an error. A write that
/// reports success without taking a byte counts as File::ErrIO: it would be tried for ever.
std::size_t writeAll(IOStream& stream, const char* bytes, std::size_t count, zeUtil::Error& error);

} // namespace zeOS
