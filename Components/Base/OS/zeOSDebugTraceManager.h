// SPDX-License-Identifier: MIT

/// @file
/// Which development traces are on.
///
/// A trace is on if its categories are selected, and zeOS::AppOutput::status of
/// zeOS::AppOutput::getInstance() shows its level. As long as no category was enabled, all traces
/// are selected; from then on those without a category, and those with one that was enabled. Both
/// are looked at once, when the trace is made: enable categories before that.
///
/// Threads: any thread may call getInstance(); the rest belongs to the thread that makes traces.
///
/// @code
/// zeOS::DebugTraceManager::getInstance().enableCategory("io");
/// @endcode

#pragma once

#include <cstddef>
#include <unordered_set>

#include "Base/Strings/zeStringCString.h"
#include "Base/Utility/zeHash.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class DebugTrace;

/// Knows the categories that were enabled, and the names of all traces. getInstance() gives the
/// only one.
class ZEBASE_API DebugTraceManager {
public:
    /// The only one, made on the first call.
    static DebugTraceManager& getInstance();

    DebugTraceManager(const DebugTraceManager&) = delete;            ///< Pass a reference.
    DebugTraceManager& operator=(const DebugTraceManager&) = delete; ///< Pass a reference.

    /// Selects all traces that are made from now on.
    void enableAllCategories();
    /// Selects the traces of `category` that are made from now on.
    void enableCategory(const zeString::CString& category);

    /// @{
    /// Switches a trace on or off, by its categories and its level. The constructors of
    /// zeOS::DebugTrace do it.
    void registerTrace(DebugTrace* trace);
    void registerTrace(DebugTrace* trace, const char* category);
    void registerTrace(DebugTrace* trace, const char* category1, const char* category2);
    /// @}
    /// Switches a trace on if `on` is true and its level is shown, else off.
    void initializeTrace(DebugTrace* trace, bool on);

private:
    struct Hash {
        std::size_t operator()(const zeString::CString& text) const {
            return zeString::hashfunction(text);
        }
    };
    using Names = std::unordered_set<zeString::CString, Hash>;

    ZEBASE_HIDDEN DebugTraceManager();
    ZEBASE_HIDDEN bool selects(const char* category) const;

    bool allCategories_ = false;
    Names categories_;
    Names traceNames_;
};

} // namespace zeOS
