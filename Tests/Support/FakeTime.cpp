// SPDX-License-Identifier: MIT

#include "Support/FakeTime.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace {

FakeTime* active = nullptr;
constexpr long second = 1000000000; // in nanoseconds

} // namespace

FakeTime::FakeTime() : now(std::time(nullptr) * second) {
    active = this;
}

FakeTime::~FakeTime() {
    active = nullptr;
}

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (!active || clock != CLOCK_REALTIME)
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    *time = {active->now / second, active->now % second};
    active->advance(active->millisecondsPerReading);
    return 0;
}

int nanosleep(const timespec* time, timespec* rest) {
    if (!active)
        return static_cast<int>(syscall(SYS_nanosleep, time, rest));
    active->sleeps.push_back(*time);
    return 0;
}

} // extern "C"
