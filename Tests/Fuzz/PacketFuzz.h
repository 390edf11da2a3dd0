// SPDX-License-Identifier: MIT

/// @file
/// What the targets over packet files share: a reader that does everything that a client can do, in
/// the order in which the file asks for it, and the writer of files for it.

#pragma once

#include <string>
#include <string_view>

#include "Base/IO/ioHeader.h"

namespace fuzz {

/// A file with every kind of value, array, reference and structure.
std::string everything(ioWriteMethod method);

/// Reads a file, in blocks of two sizes, and ends the process if they do not come to the same.
///
/// The library waits for ever for an "@" that ends a header and for the "{" that begins a packet of
/// text: both are put behind the file, so that every wait ends there.
void readPackets(std::string_view file);

} // namespace fuzz
