// SPDX-License-Identifier: MIT

/// @file
/// From the paths of a command line to the library's.

#pragma once

#include <string>

#include "Base/OS/zeOSFilename.h"

namespace scenefile {

/// The library takes paths as UTF-8: throws a Failure for one that is not, since it could only lead
/// to another file. Links in the directories are resolved, so that ".." means what the system means
/// by it.
zeOS::Filename fileName(const std::string& path);

} // namespace scenefile
