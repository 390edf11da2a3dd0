// SPDX-License-Identifier: MIT

/// @file
/// What the file layer itself may know about registered transports.

#pragma once

namespace zeOS {

/// Whether every name is a local one, as long as no transport factory is registered: a question
/// about a name then needs no transport to answer it.
bool everyNameIsLocal();

} // namespace zeOS
