// SPDX-License-Identifier: MIT

/// @file
/// The two hooks through which packet files report what they cannot recover from.
///
/// Everything else that fails is in the status of the context.
///
/// Threads: the hooks are plain variables, set before a second thread reads or writes packet files.
///
/// A program that must survive what is fatal, such as a damaged debug file, sets an abort hook that
/// throws: the exception passes through readFile() to its caller, and all that the context can be
/// used for afterwards is to be destroyed.
///
/// @code
/// #include <string>
/// static std::string messages;
/// ioPacketFileErrorInit([](char* text) { messages += text; });
/// ioPacketFileError("packet %d\n", 5);
/// assert(messages == "packet 5\n");
/// ioPacketFileErrorInit(nullptr);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

/// Sets who gets the messages; null for standard error. The text is the library's, for the time of
/// the call.
ZEBASE_API void ioPacketFileErrorInit(void (*hook)(char* text));

/// Formats a message as `printf` does, cut at 1023 bytes, and gives it to the hook.
[[gnu::format(printf, 1, 2)]] ZEBASE_API void ioPacketFileError(const char* format, ...);

/// Sets what is called before the process ends.
ZEBASE_API void ioPacketFileAbortInit(void (*hook)());

/// Calls the hook, if there is one, and then `abort()`, in any case.
[[noreturn]] ZEBASE_API void ioPacketFileAbort();
