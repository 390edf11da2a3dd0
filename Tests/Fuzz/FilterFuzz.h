// SPDX-License-Identifier: MIT

/// @file
/// What the targets over the filters share. Each function ends the process if a filter does not
/// behave.

#pragma once

#include <string>
#include <string_view>

class ioBufferedStream;

namespace fuzz {

/// Pushes and pops a filter: `&ioBufferedStream::compress`, say.
using Filter = void (ioBufferedStream::*)(bool on);

/// What comes out below the filter.
std::string filtered(Filter filter, std::string_view bytes);

/// A checksum's frame that is larger than a reader's block.
std::string largeFrame();

/// Takes bytes that anybody may have made for those that come out below a filter. Read in blocks
/// and byte by byte, they must give the same, up to the end and behind it.
void readFiltered(Filter filter, std::string_view bytes);

/// Writes bytes through a filter, with a flush now and then and other bytes around them, and wants
/// them back.
void roundTrip(Filter filter, std::string_view bytes);

} // namespace fuzz
