// SPDX-License-Identifier: MIT

/// @file
/// Development traces: what begins and ends when, nested, with the time that it took.
///
/// A trace prints to zeOS::AppOutput::status of zeOS::AppOutput::getInstance(). Each line begins
/// with the seconds since the program's start (zeOS::AppMain::getElapsed()):
///
/// ```
///    0.0123 Start trace: load scene.zd
///        0.0124 trace: load.  header is sound
///        0.0150 tick trace: load packets now 0.0027
///    0.0180 End trace: load elapsed 0.0057 total 0.0057 calls 1
/// ```
///
/// **Whether a trace is on is decided when it is made**: by its categories
/// (zeOSDebugTraceManager.h), and by the level of `status` at that moment. Later changes of level
/// and categories do not reach it; setEnabled() does. Set the levels before the first trace is
/// made, and do not make traces in static constructors.
///
/// Threads: traces belong to the thread that uses zeOS::AppOutput, whose indent they share.
///
/// @code
/// #include "Base/OS/zeOSAppOutput.h"
/// zeOS::AppOutput::getInstance().status.open("-", false);
/// zeOS::DebugTrace trace("example", 0);
/// trace.start("work");
/// trace.print("half of it is done");
/// assert(trace.stop() >= 0);
/// assert(trace.stop() == 0); // nothing runs any more
/// zeOS::AppOutput::getInstance().status.close();
/// @endcode

#pragma once

#include <vector>

#include "Base/OS/zeOSStopWatch.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// A named trace. Names and categories are literals, or live as long as the trace; none is null.
class ZEBASE_API DebugTrace {
public:
    /// A trace of no category.
    DebugTrace(const char* name, int level);
    /// A trace that `category` selects.
    DebugTrace(const char* name, int level, const char* category);
    /// A trace that either category selects.
    DebugTrace(const char* name, int level, const char* category1, const char* category2);

    /// Switches the trace, whatever level and categories say.
    void setEnabled(bool enabled) { enabled_ = enabled; }

    /// Begins a stretch, which may lie within one that runs, and indents what follows. `text` may
    /// be null.
    void start(const char* text);
    /// Ends the stretch that began last. Returns its seconds; 0, and nothing is printed, if none
    /// runs or the trace is off.
    double stop();
    /// Prints how long the stretch that began last has been running. Returns its seconds; 0 if none
    /// runs or the trace is off. `text` may be null.
    double tick(const char* text);
    /// Prints `text`, unless it is null.
    void print(const char* text);

private:
    friend class DebugTraceManager;
    ZEBASE_HIDDEN void init(const char* name, int level);

    std::vector<StopWatch> timers_; ///< A stack: the last one is the innermost.
    double total_;                  ///< Seconds of the finished stretches.
    const char* name_;              ///< Not owned.
    int level_;
    int calls_;
    bool enabled_;
};

} // namespace zeOS
