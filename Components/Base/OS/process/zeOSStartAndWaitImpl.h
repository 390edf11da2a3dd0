// SPDX-License-Identifier: MIT

#pragma once

#include "Base/OS/zeOSProcessManager.h"

namespace zeOS {

class Callable;

/// Calls `callable`, and waits for the process that it made.
///
/// The process ends unseen by the application's handler of SIGCHLD: while any thread is in here, a
/// handler that does nothing stands in its place, and the signal is taken off before it returns.
/// Several threads may wait at once.
SyncResult startAndWait(Callable& callable);

} // namespace zeOS
