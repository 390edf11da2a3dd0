// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSError.h"

#include <cerrno>
#include <cstring>

namespace zeOS {

zeString::IString getLastError() {
    return errorText(errno);
}

zeString::IString errorText(int number) {
    const int before = errno;
    const char* text = std::strerror(number);
    zeString::IString result(text && *text ? text : "unknown error");
    errno = before;
    return result;
}

} // namespace zeOS
