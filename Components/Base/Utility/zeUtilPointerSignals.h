// SPDX-License-Identifier: MIT

/// @file
/// Four process-wide signals for applications that trace their pointers.
///
/// The library never fires them. Who does, and what the three arguments are, is the application's
/// to define. They exist from load time on and are destroyed at exit; connections that are left
/// end then.
///
/// Threads: one at a time for each signal.
///
/// @code
/// struct Trace {
///     int released = 0;
///     void count(const char*, void*, int) { ++released; }
/// } trace;
/// auto* connection = zeUtil::getPointerReleaseSignal().connect(&trace, &Trace::count);
/// zeUtil::getPointerReleaseSignal().send("texture", &trace, 1);
/// zeUtil::getPointerReleaseSignal().disconnect(connection);
/// assert(trace.released == 1);
/// @endcode

#pragma once

#include "Base/Utility/zeRTBSignal.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

/// The type of the four signals.
using PointerSignal = zeRTB::Signal3Args<const char*, void*, int>;

/// For pointers that get their first value.
ZEBASE_API PointerSignal& getPointerInitSignal();

/// For pointers that become owners of an object.
ZEBASE_API PointerSignal& getPointerAcquireSignal();

/// For pointers that give an object up.
ZEBASE_API PointerSignal& getPointerReleaseSignal();

/// For objects that are deleted.
ZEBASE_API PointerSignal& getPointerDeleteSignal();

} // namespace zeUtil
