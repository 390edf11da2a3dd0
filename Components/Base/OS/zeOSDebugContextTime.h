// SPDX-License-Identifier: MIT

/// @file
/// Where the time of one operation goes, by named scopes.
///
/// The application marks the operation with DebugContextTime::clearAndStart() and
/// DebugContextTime::stopAndReport(); code below it marks its parts with zeOS::DebugScopeTime,
/// which costs a call and a test while no operation runs. The report gives each name's share of the
/// total, and the share of what lies outside all scopes:
///
/// ```
/// Operation 0.53sec load:
///   61% decode
///   12% link
///   27% OTHER
/// ```
///
/// A scope within a scope adds to both names, so that shares can add up to more than 100 %. A share
/// of a total of 0 is not a number.
///
/// **Names are compared as pointers.** Equal texts at different addresses are different entries,
/// and entries are in the order of the addresses.
///
/// Threads: all of this belongs to one thread, usually the main one.
///
/// @code
/// #include "Base/OS/zeOSDebugChannel.h"
/// zeOS::DebugContextTime& operation = zeOS::DebugContextTime::getInstance();
/// operation.clearAndStart("load");
/// {
///     const zeOS::DebugScopeTime scope("decode");
/// }
/// zeOS::DebugChannel quiet;
/// operation.stopAndReport(&quiet); // the channel is off: nothing is printed
/// @endcode

#pragma once

#include <map>

#include "Base/OS/zeOSStopWatch.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class DebugChannel;

/// The profile of one operation at a time. getInstance() gives the only one.
class ZEBASE_API DebugContextTime {
public:
    /// The only one, made on the first call.
    static DebugContextTime& getInstance();

    DebugContextTime(const DebugContextTime&) = delete;            ///< Pass a reference.
    DebugContextTime& operator=(const DebugContextTime&) = delete; ///< Pass a reference.

    /// Begins an operation, and forgets the one before. `name` is kept as a pointer. No scope may
    /// be open.
    void clearAndStart(const char* name);
    /// Ends the operation and prints the report by `channel`, if that is on. Null takes a channel
    /// that is always on. Scopes that are still open are not counted.
    void stopAndReport(DebugChannel* channel);

    /// @{
    /// What zeOS::DebugScopeTime does: push() begins a scope, and tells whether an operation runs;
    /// if so, pop() ends it, and adds `seconds` to `name`.
    bool push();
    void pop(const char* name, double seconds);
    /// @}

private:
    ZEBASE_HIDDEN DebugContextTime();

    const char* name_ = ""; ///< Not owned.
    StopWatch total_;
    StopWatch other_;
    std::map<const char*, double> scopes_; ///< Seconds by name.
    int depth_ = 0;
    bool active_ = false;
};

/// Counts the time from its construction to its destruction for a name, if an operation runs.
class ZEBASE_API DebugScopeTime {
public:
    /// `name` is a literal, or lives until the report; null makes a guard that does nothing.
    explicit DebugScopeTime(const char* name);
    DebugScopeTime(const DebugScopeTime&) = delete;            ///< Make another one.
    DebugScopeTime& operator=(const DebugScopeTime&) = delete; ///< Make another one.
    /// Ends the scope.
    ~DebugScopeTime();

private:
    const char* name_; ///< Null if the guard does nothing.
    StopWatch timer_;
};

} // namespace zeOS
