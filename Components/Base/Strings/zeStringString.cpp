// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringString.h"

namespace zeString {

String::~String() = default;

bool String::isEmpty() const {
    return length() == 0;
}

bool String::isNull() const {
    return isEmpty();
}

unsigned int String::length() const {
    return 0;
}

unsigned int String::first() const {
    return 0;
}

unsigned int String::last() const {
    const unsigned int n = length();
    return n == 0 ? 0 : n - 1;
}

unsigned int String::capacity() const {
    return 0;
}

unsigned int String::reserve(unsigned int) {
    return 0;
}

unsigned int String::maxSize() const {
    return 0;
}

bool String::doBoundsCheck(unsigned int pos) const {
    return pos < length();
}

bool String::doBoundsCheck(unsigned int pos, unsigned int n) const {
    return pos < length() && (n == npos || n <= length());
}

} // namespace zeString
