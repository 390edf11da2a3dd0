// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSSleep.h"

#include <ctime>

#include "Base/OS/zeOSStopWatch.h"

namespace zeOS {

void sleep(int milliseconds) {
    std::timespec time = {};
    time.tv_sec = milliseconds / 1000;
    time.tv_nsec = milliseconds % 1000 * 1000; // not nanoseconds: callers rely on short waits
    ::nanosleep(&time, nullptr);
}

void spin(int milliseconds) {
    StopWatch watch;
    watch.start();
    while (watch.check() < milliseconds / 1000.0)
        ;
}

} // namespace zeOS
