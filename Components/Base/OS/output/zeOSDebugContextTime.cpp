// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDebugContextTime.h"

#include "Base/OS/zeOSDebugChannel.h"

namespace zeOS {
namespace {

/// Single precision decides how shares are rounded.
double percent(double part, double total) {
    return static_cast<float>(part) / static_cast<float>(total) * 100.0F;
}

} // namespace

DebugContextTime& DebugContextTime::getInstance() {
    static DebugContextTime instance;
    return instance;
}

DebugContextTime::DebugContextTime() = default;

void DebugContextTime::clearAndStart(const char* name) {
    name_ = name;
    depth_ = 0;
    active_ = true;
    scopes_.clear();
    total_.clear(); // an operation that was never reported left its time here
    other_.clear();
    total_.start();
    other_.start();
}

void DebugContextTime::stopAndReport(DebugChannel* channel) {
    static DebugChannel ownChannel;
    active_ = false;
    const double total = total_.clear();
    const double other = other_.clear();
    if (!channel) {
        channel = &ownChannel;
        channel->enable(true);
    }
    channel->print("Operation %.2fsec %s:\n", static_cast<double>(static_cast<float>(total)),
                   name_);
    for (const auto& [name, seconds] : scopes_)
        channel->print("  %.0f%% %s\n", percent(seconds, total), name);
    channel->print("  %.0f%% OTHER\n", percent(other, total));
}

bool DebugContextTime::push() {
    if (active_ && depth_++ == 0)
        other_.stop();
    return active_;
}

void DebugContextTime::pop(const char* name, double seconds) {
    if (!active_)
        return;
    scopes_[name] += seconds;
    if (--depth_ == 0)
        other_.start();
}

DebugScopeTime::DebugScopeTime(const char* name)
    : name_(name && DebugContextTime::getInstance().push() ? name : nullptr) {
    if (name_)
        timer_.start();
}

DebugScopeTime::~DebugScopeTime() {
    if (name_)
        DebugContextTime::getInstance().pop(name_, timer_.clear());
}

} // namespace zeOS
