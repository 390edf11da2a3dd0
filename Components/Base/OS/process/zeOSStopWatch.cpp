// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSStopWatch.h"

#include <ctime>
#include <utility>

namespace zeOS {

double StopWatch::start() {
    now(started_);
    running_ = true;
    return elapsed_;
}

double StopWatch::stop() {
    elapsed_ = check();
    running_ = false;
    return elapsed_;
}

double StopWatch::clear() {
    stop();
    return std::exchange(elapsed_, 0);
}

double StopWatch::check() const {
    if (!running_)
        return elapsed_;
    CurTime time;
    now(time);
    return elapsed_ + getDelta(started_, time);
}

void StopWatch::now(CurTime& time) const {
    std::timespec current = {};
    ::clock_gettime(CLOCK_REALTIME, &current);
    time.seconds = static_cast<int>(current.tv_sec);
    time.nanoseconds = static_cast<int>(current.tv_nsec);
}

double StopWatch::getDelta(const CurTime& from, const CurTime& to) const {
    // The difference is right although the seconds wrap in 2038.
    const int seconds = static_cast<int>(static_cast<unsigned int>(to.seconds) -
                                         static_cast<unsigned int>(from.seconds));
    return seconds + (to.nanoseconds - from.nanoseconds) / 1000000000.0;
}

} // namespace zeOS
