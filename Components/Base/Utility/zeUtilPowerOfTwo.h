// SPDX-License-Identifier: MIT

/// @file
/// Powers of two near an int.
///
/// Threads: pure functions, callable from any thread.
///
/// @code
/// assert(zeUtil::ceilPowerOfTwo(5) == 8 && zeUtil::ceilPowerOfTwo(8) == 8);
/// assert(zeUtil::roundPowerOfTwo(5) == 4 && zeUtil::roundPowerOfTwo(6) == 8);
/// assert(zeUtil::isPowerOfTwo(1) && !zeUtil::isPowerOfTwo(0));
/// @endcode

#pragma once

#include <bit>

namespace zeUtil {

/// The smallest power of two that is not below `n`: 1 for everything below 2, and 2147483647 above
/// 1073741824.
constexpr int ceilPowerOfTwo(int n) noexcept {
    if (n < 2)
        return 1;
    if (n > 1 << 30)
        return 2147483647;
    return static_cast<int>(std::bit_ceil(static_cast<unsigned int>(n)));
}

/// The power of two nearest to `n`, which is at most 1073741824; of two equally near ones the
/// larger. 1 for everything below 2.
constexpr int roundPowerOfTwo(int n) noexcept {
    const int above = ceilPowerOfTwo(n);
    if (n < 2)
        return 1;
    return above - n <= n - above / 2 ? above : above / 2;
}

/// Whether `n` is its own ceilPowerOfTwo(), which 2147483647 is too.
constexpr bool isPowerOfTwo(int n) noexcept {
    return n == ceilPowerOfTwo(n);
}

} // namespace zeUtil
