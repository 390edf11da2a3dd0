// SPDX-License-Identifier: MIT

/// @file
/// The export macro and the version. This header belongs to no area and includes nothing.

#pragma once

/// The version of these headers.
///@{
#define ZEBASE_VERSION_MAJOR 0
#define ZEBASE_VERSION_MINOR 1
#define ZEBASE_VERSION_PATCH 0
///@}

/// Marks what libzeBase.so exports. Everything else is hidden. Templates and inline functions need
/// no mark; a class that plug-ins derive from, cast to or catch bears it on the class, and has an
/// out-of-line first virtual operation, so that its type information exists once in a process.
#define ZEBASE_API __attribute__((visibility("default")))

/// Marks what is nested in an exported class and stays inside the library all the same: hidden
/// implementations.
#define ZEBASE_HIDDEN __attribute__((visibility("hidden")))
