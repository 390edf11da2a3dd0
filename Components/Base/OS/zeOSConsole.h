// SPDX-License-Identifier: MIT

/// @file
/// A console window for programs without a terminal, which this platform does not have.
///
/// Threads: any thread may call.
///
/// @code
/// assert(zeOS::CreateConsole(80, 1000) == 0);
/// @endcode

#pragma once

namespace zeOS {

/// Does nothing and returns 0. It is there for programs that also run where there is one.
inline int CreateConsole(int, int) {
    return 0;
}

} // namespace zeOS
