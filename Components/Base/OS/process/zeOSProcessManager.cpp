// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSProcessManager.h"

#include <atomic>
#include <memory>

namespace zeOS {
namespace {

std::atomic<ProcessManager*> procMan = nullptr;

} // namespace

ProcessManager::~ProcessManager() = default;

ProcessManager* ProcessManager::getInstance() {
    ProcessManager* found = procMan.load(std::memory_order_acquire);
    if (found)
        return found;
    // Of several threads that come here at once, the first one's manager stays.
    std::unique_ptr<ProcessManager> made(createProcessManager());
    return procMan.compare_exchange_strong(found, made.get()) ? made.release() : found;
}

bool ProcessManager::setInstance(ProcessManager* manager) {
    ProcessManager* none = nullptr;
    return procMan.compare_exchange_strong(none, manager);
}

zeUtil::Error ProcessManager::startAsync(const std::vector<zeString::IString>& args,
                                         const Filename& directory) {
    return doStartAsync(args, directory);
}

SyncResult ProcessManager::startSync(const std::vector<zeString::IString>& args,
                                     const Filename& directory) {
    return doStartSync(args, directory);
}

ProcessManagerImpl::~ProcessManagerImpl() = default;

} // namespace zeOS
