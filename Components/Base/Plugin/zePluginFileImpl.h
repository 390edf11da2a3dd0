// SPDX-License-Identifier: MIT

/// @file
/// What a file must be before the dynamic linker gets it.

#pragma once

namespace zeOS {
class FileStatus;
}

namespace zePlugin {

/// Whether opening the file at `path`, of which a query said `status`, ends. The dynamic linker
/// would wait for the writer of a pipe, and a library that was cut off, as by a copy that did not
/// end, would kill the process with SIGBUS when a page behind its end is touched. All else that is
/// no library is left to the dynamic linker, which says what is wrong with it.
bool canBeOpened(const char* path, const zeOS::FileStatus& status);

} // namespace zePlugin
