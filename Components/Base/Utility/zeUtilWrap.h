// SPDX-License-Identifier: MIT

/// @file
/// Sums of 32-bit counters and offsets that wrap instead of overflowing.
///
/// Threads: pure functions, callable from any thread.
///
/// @code
/// assert(zeUtil::wrappedSum(2147483647, 1) == -2147483647 - 1);
/// @endcode

#pragma once

namespace zeUtil {

/// `a + b` modulo 2^32. For counters that are documented to wrap, and for positions computed from
/// lengths in a file, which are checked where they are used.
constexpr int wrappedSum(int a, int b) noexcept {
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}

} // namespace zeUtil
