// SPDX-License-Identifier: MIT

/// @file
/// The file behind the trace, and how the classes of undo write to it.

#pragma once

#include <cstdio>

#include "Base/Undo/zeUndoReport.h"

/// There is one. What is destroyed after it, at exit, finds the trace closed.
class zeUndoReportFile {
public:
    zeUndoReportFile() = default;
    zeUndoReportFile(const zeUndoReportFile&) = delete;
    zeUndoReportFile& operator=(const zeUndoReportFile&) = delete;
    ~zeUndoReportFile() { close(); }

    void init(const char* path);
    void write(const char* text);
    static bool isOpen() { return s_file != nullptr; }

private:
    static void close();

    static std::FILE* s_file; ///< Outlives the object.
};

namespace zeUndo {

/// zeUndoReport() of the arguments, which are evaluated in any case: commands are asked for their
/// size. Without a trace, it costs one test.
template<class... Arguments>
inline void report(const char* format, Arguments... arguments) {
    if (zeUndoReportFile::isOpen())
        zeUndoReport(format, arguments...);
}

} // namespace zeUndo
