// SPDX-License-Identifier: MIT

/// @file
/// What programs print: results to standard output, messages and traces to standard error, all by
/// zeOS::AppOutput.

#pragma once

#include <optional>
#include <string>

#include "Base/OS/zeOSAppOutput.h"
#include "Base/OS/zeOSDebugTrace.h"
#include "Base/OS/zeOSStopWatch.h"

namespace app {

/// The levels of AppOutput that options choose.
enum Level : int {
    quiet = -1, ///< Failures, and what was asked for.
    normal = 0, ///< What was done as well.
    verbose,    ///< The steps as well.
    trace,      ///< When each step begins and ends as well.
};

/// Opens both streams.
void openOutput();

/// Where results go: AppOutput::application1.
zeOS::AppOutputStream& results();
/// Where messages go: AppOutput::status.
zeOS::AppOutputStream& messages();

/// Prints "PROGRAM: TEXT", or TEXT alone if `program` is empty, as a message in one line, made
/// visible, at any level.
void report(const std::string& program, const std::string& text);

/// Throws a Failure if what was printed to results() cannot be written.
void flushResults();

/// Indents a stream by two spaces as long as it lives.
class Indent {
public:
    explicit Indent(zeOS::AppOutputStream& stream);
    Indent(const Indent&) = delete;
    Indent& operator=(const Indent&) = delete;
    ~Indent();

private:
    zeOS::AppOutputStream& stream_;
    int before_;
};

/// A step of the work as long as it lives. At the level verbose it says what is done and, when it
/// ends, how long that took, and messages between are indented; at the level trace there is a trace
/// as well.
class Step {
public:
    /// `name` is a literal, for the trace; `text` is for people.
    Step(const char* name, const std::string& text);
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    ~Step();

private:
    zeOS::DebugTrace trace_;
    zeOS::StopWatch watch_;
    std::optional<zeOS::AppOutputStatusTab> tab_;
};

} // namespace app
