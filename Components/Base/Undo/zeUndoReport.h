// SPDX-License-Identifier: MIT

/// @file
/// The trace file of undo: what its managers, groups and commands do, line by line.
///
/// Nothing is written until zeUndoReportInit() opens a file. Each report reaches the file at once,
/// so that the trace survives a crash of the program. There is one trace for the process.
///
/// **Percent signs.** Reports are formatted twice: the finished text is a format again. A percent
/// sign in the name of a group or a command is therefore taken for a conversion of an argument that
/// is zero, unless it is doubled, and "%n" in a name ends the process. Names that come from outside
/// need their percent signs doubled as long as a trace may be open.
///
/// Threads: one at a time, that of the managers.
///
/// @code
/// zeUndoReport("nothing is open: %d bytes go nowhere\n", 12);
/// @endcode

#pragma once

#include "Base/Strings/zeStringPrintf.h"
#include "Base/zeBaseExport.h"

/// Opens the file for appending, and writes a line that separates new reports from what is there.
/// The path must be writable: otherwise the process ends by a write to a null file. A file that was
/// open is closed. The new one is closed when the process exits.
ZEBASE_API void zeUndoReportInit(const char* path);

/// Writes the formatted text, cut after 1,023 bytes; see above for percent signs.
ZEBASE_API void zeUndoReport(const char* format, ...) ZEBASE_FORMAT(1, 2);
