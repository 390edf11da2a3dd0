// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDebugChannel.h"

#include <atomic>

#include "Base/OS/zeOSAppOutput.h"

using zeString::VariadicArguments;

namespace zeOS {
namespace {

std::atomic<bool> s_enableEvery{false};

AppOutputStream& output() {
    return AppOutput::getInstance().status;
}

} // namespace

void DebugChannel::enableEveryChannel(bool on) {
    s_enableEvery.store(on, std::memory_order_relaxed);
}

bool DebugChannel::enabled() const {
    return on_ || s_enableEvery.load(std::memory_order_relaxed);
}

void DebugChannel::print(const char* format, ...) const {
    if (!enabled())
        return;
    VariadicArguments arguments;
    va_start(arguments.list, format);
    output().printArg(format, arguments.list);
}

void DebugChannel::print(int level, const char* format, ...) const {
    if (!enabled())
        return;
    VariadicArguments arguments;
    va_start(arguments.list, format);
    output().printArg(level, format, arguments.list);
}

void DebugChannel::increaseIndentLevel() const {
    output().increaseIndentLevel();
}

void DebugChannel::decreaseIndentLevel() const {
    output().decreaseIndentLevel();
}

DebugChannelTab::DebugChannelTab(DebugChannel& channel, int level)
    : channel_(channel), active_(channel.enabled() && level <= output().getLevel()) {
    if (active_)
        channel_.increaseIndentLevel();
}

DebugChannelTab::~DebugChannelTab() {
    if (active_)
        channel_.decreaseIndentLevel();
}

} // namespace zeOS
