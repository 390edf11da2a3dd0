// SPDX-License-Identifier: MIT

/// @file
/// The two hooks through which packet files report what they cannot recover from.
///
/// They are plain variables: set them at the start of the program, before a second thread reads or
/// writes packet files. Everything else that fails is in the status of the context.
///
/// A program that must survive what is fatal, a debug file that somebody damaged, say, sets an
/// abort hook that throws: the exception passes through readFile() to its caller, and the context
/// is good for nothing but its destruction then.
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
