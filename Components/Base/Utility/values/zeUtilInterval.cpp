// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilInterval.h"

#include <cmath>
#include <limits>
#include <string_view>

#include "Base/Utility/zeUtilError.h"

namespace zeUtil {

namespace {

constexpr int microsecondsPerSecond = 1000000;
constexpr int secondsPerMinute = 60;
constexpr int secondsPerHour = 3600;

/// `n * factor` modulo 2^32.
int wrappedProduct(int n, int factor) {
    return static_cast<int>(static_cast<unsigned int>(n) * static_cast<unsigned int>(factor));
}

/// Takes the digits that `text` begins with off; false if there are none. The number wraps.
bool takeNumber(std::string_view& text, int& number) {
    unsigned int n = 0;
    std::size_t digits = 0;
    for (; digits < text.length() && text[digits] >= '0' && text[digits] <= '9'; ++digits)
        n = 10 * n + static_cast<unsigned int>(text[digits] - '0');
    text.remove_prefix(digits);
    number = static_cast<int>(n);
    return digits > 0;
}

} // namespace

Interval::Interval(double value) {
    const double magnitude = std::fabs(value);
    const double whole = std::floor(magnitude);
    // Not a number must not become zero, which means no limit.
    if (!(whole <= std::numeric_limits<int>::max())) {
        seconds = std::numeric_limits<int>::max();
        microseconds = microsecondsPerSecond - 1;
        return;
    }
    seconds = static_cast<int>(whole);
    microseconds = static_cast<int>((magnitude - whole) * microsecondsPerSecond);
}

Interval::Interval(const char* text) {
    std::string_view unit(text ? text : "");
    int n = 0;
    const bool hasNumber = takeNumber(unit, n);
    if (hasNumber && unit == "us") {
        seconds = n / microsecondsPerSecond;
        microseconds = n % microsecondsPerSecond;
    } else if (hasNumber && unit == "ms") {
        seconds = n / 1000;
        microseconds = n % 1000 * 1000;
    } else if (hasNumber && unit == "s") {
        seconds = n;
    } else if (hasNumber && unit == "min") {
        seconds = wrappedProduct(n, secondsPerMinute);
    } else if (hasNumber && unit == "h") {
        seconds = wrappedProduct(n, secondsPerHour);
    } else {
        throw Error(1, "Bad time string");
    }
}

} // namespace zeUtil
