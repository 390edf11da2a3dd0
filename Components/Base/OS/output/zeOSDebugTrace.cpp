// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDebugTrace.h"

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/OS/zeOSDebugTraceManager.h"
#include "Base/Utility/zeUtilWrap.h"

namespace zeOS {
namespace {

AppOutputStream& output() {
    return AppOutput::getInstance().status;
}

double now() {
    return AppMain::getInstance().getElapsed();
}

} // namespace

DebugTrace::DebugTrace(const char* name, int level) {
    init(name, level);
    DebugTraceManager::getInstance().registerTrace(this);
}

DebugTrace::DebugTrace(const char* name, int level, const char* category) {
    init(name, level);
    DebugTraceManager::getInstance().registerTrace(this, category);
}

DebugTrace::DebugTrace(const char* name, int level, const char* category1, const char* category2) {
    init(name, level);
    DebugTraceManager::getInstance().registerTrace(this, category1, category2);
}

void DebugTrace::start(const char* text) {
    if (!enabled_)
        return;
    calls_ = zeUtil::wrappedSum(calls_, 1);
    output().printf("%9.4f Start trace: %s %s\n", now(), name_, text ? text : "");
    output().increaseIndentLevel();
    timers_.emplace_back().start();
}

double DebugTrace::stop() {
    if (!enabled_ || timers_.empty())
        return 0;
    const double elapsed = timers_.back().stop();
    timers_.pop_back();
    total_ += elapsed;
    output().decreaseIndentLevel();
    output().printf("%9.4f End trace: %s elapsed %.4f total %.4f calls %d\n", now(), name_, elapsed,
                    total_, calls_);
    return elapsed;
}

double DebugTrace::tick(const char* text) {
    if (!enabled_)
        return 0;
    const double elapsed = timers_.empty() ? 0 : timers_.back().check();
    if (text)
        output().printf("%9.4f tick trace: %s %s now %.4f\n", now(), name_, text, elapsed);
    else
        output().printf("%9.4f tick trace: %s now %.4f\n", now(), name_, elapsed);
    return elapsed;
}

void DebugTrace::print(const char* text) {
    if (text && enabled_)
        output().printf("%9.4f trace: %s.  %s\n", now(), name_, text);
}

void DebugTrace::init(const char* name, int level) {
    total_ = 0;
    name_ = name;
    level_ = level;
    calls_ = 0;
    enabled_ = true;
}

} // namespace zeOS
