// SPDX-License-Identifier: MIT

/// @file
/// The export macros and the version. This header belongs to no area and includes nothing.
///
/// The version of the headers is a set of macros, the version of the library a function: a program
/// may run with a newer library than it was compiled with. Both are equal in the first two numbers
/// while the major version is 0, since the dynamic linker refuses any other library.
///
/// Threads: any thread may call at any time.
///
/// @code
/// assert(ZEBASE_VERSION_MAJOR == ZEBASE_VERSION / 10000);
/// assert(zeBase_version() == ZEBASE_VERSION); // the library is that of the headers
/// @endcode

#pragma once

/// The first number of the headers' version. It changes when the interface does.
#define ZEBASE_VERSION_MAJOR 0
/// The second number. While the first is 0, it changes when the interface does.
#define ZEBASE_VERSION_MINOR 1
/// The third number. It changes with corrections that keep the interface.
#define ZEBASE_VERSION_PATCH 0
/// The headers' version as one number that grows: 10203 for 1.2.3.
#define ZEBASE_VERSION                                                                             \
    (ZEBASE_VERSION_MAJOR * 10000 + ZEBASE_VERSION_MINOR * 100 + ZEBASE_VERSION_PATCH)

/// Marks what libzeBase.so exports. Everything else is hidden. Templates and inline functions need
/// no mark. A class that plug-ins derive from, cast to or catch bears it on the class, and has an
/// out-of-line first virtual operation, so that its type information exists once in a process.
#define ZEBASE_API __attribute__((visibility("default")))

/// Marks what is nested in an exported class and stays inside the library all the same: hidden
/// implementations, and private functions that no inline code calls.
#define ZEBASE_HIDDEN __attribute__((visibility("hidden")))

/// The version of the library that the process runs with, in the form of ZEBASE_VERSION. The name
/// is that of C, so that it can be looked up in a library that was loaded at run time.
extern "C" ZEBASE_API int zeBase_version() noexcept;
