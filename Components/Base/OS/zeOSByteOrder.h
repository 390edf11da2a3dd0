// SPDX-License-Identifier: MIT

/// @file
/// The order of bytes in numbers: reversing it, and getting from this machine's to little-endian.
///
/// Threads: any thread may call.
///
/// @code
/// assert(zeOS::swap(0x01020304) == 0x04030201);
/// short pair[] = {0x0102, 0x0304};
/// zeOS::swap(pair, 2);
/// assert(pair[0] == 0x0201 && pair[1] == 0x0403);
/// assert(zeOS::swapLittle(0x01020304) == 0x01020304);
/// @endcode

#pragma once

#include <bit>
#include <cstring>

namespace zeOS {

/// @{
/// The value with its bytes reversed.
inline short swap(short value) {
    return static_cast<short>(__builtin_bswap16(static_cast<unsigned short>(value)));
}
inline int swap(int value) {
    return static_cast<int>(__builtin_bswap32(static_cast<unsigned int>(value)));
}
inline long swap(long value) {
    return static_cast<long>(__builtin_bswap64(static_cast<unsigned long>(value)));
}
inline float swap(float value) {
    return std::bit_cast<float>(swap(std::bit_cast<int>(value)));
}
inline double swap(double value) {
    return std::bit_cast<double>(swap(std::bit_cast<long>(value)));
}
/// @}

namespace detail {

/// From the last to the first.
template<class Number>
void reverseEach(Number* values, unsigned long count) {
    char* const bytes = reinterpret_cast<char*>(values);
    while (count-- > 0) {
        Number value;
        std::memcpy(&value, bytes + count * sizeof value, sizeof value);
        value = swap(value);
        std::memcpy(bytes + count * sizeof value, &value, sizeof value);
    }
}

} // namespace detail

/// @{
/// Reverses the bytes of each of `count` elements, which need not be aligned.
inline void swap(short* values, unsigned long count) {
    detail::reverseEach(values, count);
}
inline void swap(int* values, unsigned long count) {
    detail::reverseEach(values, count);
}
inline void swap(long* values, unsigned long count) {
    detail::reverseEach(values, count);
}
inline void swap(float* values, unsigned long count) {
    detail::reverseEach(values, count);
}
inline void swap(double* values, unsigned long count) {
    detail::reverseEach(values, count);
}
/// @}

/// @{
/// The value in little-endian order, or back from it: on this platform the value itself.
inline short swapLittle(short value) {
    return value;
}
inline int swapLittle(int value) {
    return value;
}
inline long swapLittle(long value) {
    return value;
}
inline float swapLittle(float value) {
    return value;
}
inline double swapLittle(double value) {
    return value;
}
/// @}

/// @{
/// The same for each of `count` elements: on this platform it does nothing.
inline void swapLittle(short*, unsigned long) {}
inline void swapLittle(int*, unsigned long) {}
inline void swapLittle(long*, unsigned long) {}
inline void swapLittle(float*, unsigned long) {}
inline void swapLittle(double*, unsigned long) {}
/// @}

/// 0: this machine is little-endian.
inline int getBytesex() {
    return 0;
}

} // namespace zeOS
