// SPDX-License-Identifier: MIT

// start: a program is started, known to run, and waited for.

#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSProcessManager.h"

#include "OS/processesWorkload.h"

namespace {

bool start() {
    const zeOS::SyncResult result =
        zeOS::ProcessManager::getInstance()->startSync({bench::startedProgram}, zeOS::Filename());
    return result.error.code() == 0 && result.exitCode == 0;
}

const bool registered = [] {
    bench::regStart("ours", start);
    return true;
}();

} // namespace
