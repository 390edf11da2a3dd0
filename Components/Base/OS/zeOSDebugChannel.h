// SPDX-License-Identifier: MIT

/// @file
/// Named places for development output that can be switched on.
///
/// What a channel prints goes to zeOS::AppOutput::status of zeOS::AppOutput::getInstance(), if the
/// channel is on. While it is off, a print costs a call and the test of two flags.
///
/// Threads: channels belong to the thread that uses zeOS::AppOutput; any thread may call
/// enableEveryChannel().
///
/// @code
/// #include "Base/OS/zeOSAppOutput.h"
/// static zeOS::DebugChannel loading;
/// loading.print("not printed: channels are off at first\n");
/// loading.enable(true);
/// zeOS::AppOutput::getInstance().status.open("-", false);
/// {
///     const zeOS::DebugChannelTab tab(loading, 0);
///     loading.print("%d packets\n", 12);
/// }
/// zeOS::AppOutput::getInstance().status.close();
/// @endcode

#pragma once

#include "Base/Strings/zeStringPrintf.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// A switch in front of the application's first stream. Off at first.
class ZEBASE_API DebugChannel {
public:
    /// Switches this channel.
    void enable(bool on) { on_ = on; }
    /// Switches all channels on, those that are off too; false leaves each to its own switch.
    static void enableEveryChannel(bool on);
    /// Whether the channel prints.
    bool enabled() const;

    /// @{
    /// Prints while the channel is on: at any level, or if the stream shows `level`. Compilers
    /// check the arguments of literal formats if ZEBASE_CHECK_FORMATS is defined.
    void print(const char* format, ...) const ZEBASE_FORMAT(2, 3);
    void print(int level, const char* format, ...) const ZEBASE_FORMAT(3, 4);
    /// @}

    /// @{
    /// Changes the indent of the stream by four, whether or not the channel is on.
    void increaseIndentLevel() const;
    void decreaseIndentLevel() const;
    /// @}

private:
    bool on_ = false;
};

/// Indents the stream as long as the guard lives, if the channel is on when it begins, and the
/// stream shows `level`.
class ZEBASE_API DebugChannelTab {
public:
    /// `channel` must outlive the guard.
    DebugChannelTab(DebugChannel& channel, int level);
    DebugChannelTab(const DebugChannelTab&) = delete;            ///< Make another one.
    DebugChannelTab& operator=(const DebugChannelTab&) = delete; ///< Make another one.
    /// Takes the indent back.
    ~DebugChannelTab();

private:
    DebugChannel& channel_;
    bool active_;
};

} // namespace zeOS
