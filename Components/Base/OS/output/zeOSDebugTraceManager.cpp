// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSDebugTraceManager.h"

#include "Base/OS/zeOSAppOutput.h"
#include "Base/OS/zeOSDebugTrace.h"

namespace zeOS {

DebugTraceManager& DebugTraceManager::getInstance() {
    static DebugTraceManager instance;
    return instance;
}

DebugTraceManager::DebugTraceManager() = default;

void DebugTraceManager::enableAllCategories() {
    allCategories_ = true;
}

void DebugTraceManager::enableCategory(const zeString::CString& category) {
    categories_.insert(category);
}

void DebugTraceManager::registerTrace(DebugTrace* trace) {
    initializeTrace(trace, true);
}

void DebugTraceManager::registerTrace(DebugTrace* trace, const char* category) {
    initializeTrace(trace, selects(category));
}

void DebugTraceManager::registerTrace(DebugTrace* trace, const char* category1,
                                      const char* category2) {
    initializeTrace(trace, selects(category1) || selects(category2));
}

void DebugTraceManager::initializeTrace(DebugTrace* trace, bool on) {
    traceNames_.insert(trace->name_);
    trace->setEnabled(on && AppOutput::getInstance().status.getLevel() >= trace->level_);
}

bool DebugTraceManager::selects(const char* category) const {
    return allCategories_ || categories_.empty() || categories_.count(category) > 0;
}

} // namespace zeOS
