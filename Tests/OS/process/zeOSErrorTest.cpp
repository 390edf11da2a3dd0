// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSError.h"

#include <cerrno>
#include <cstring>

#include <gtest/gtest.h>

TEST(SystemError, SaysWhatTheSystemSaysAndLeavesErrnoAlone) {
    for (const int number : {0, ENOENT, ENOSPC, -1, 100000}) {
        errno = number;
        EXPECT_STREQ(zeOS::getLastError().asMultibyte(), std::strerror(number));
        EXPECT_EQ(errno, number);
        EXPECT_STREQ(zeOS::errorText(number).asMultibyte(), std::strerror(number));
    }
}
