// SPDX-License-Identifier: MIT

/// @file
/// Waiting for a while, idle or busy.
///
/// Threads: any thread may call; the calling thread alone waits.
///
/// @code
/// zeOS::sleep(5); // five microseconds: see below
/// zeOS::spin(5);  // five milliseconds of work
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeOS {

/// Sleeps for whole seconds, and **microseconds in place of the remaining milliseconds**: 1500 is
/// 1.0005 seconds, and 100 a tenth of a millisecond. Kept for compatibility; use
/// `std::this_thread::sleep_for` for other times than whole seconds. A signal that is handled in
/// the meantime ends the sleep. Returns at once for a negative number.
ZEBASE_API void sleep(int milliseconds);

/// Keeps the processor busy until that time of the wall clock is over. A correction of the system's
/// clock makes it longer or shorter.
ZEBASE_API void spin(int milliseconds);

} // namespace zeOS
