// SPDX-License-Identifier: MIT

/// @file
/// The filters of a document: what its packets go through on their way to the file.
///
/// A packet file does not say which filters were used. So the first packet of a document with
/// filters has a type of its own, and names them in a string; everything behind it goes through
/// them.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Base/IO/ioBuffer.h"

namespace scenefile {

namespace packetType {
inline constexpr const char* filters = "scenefile_filters";
}

/// The order of the filters is fixed, from the file upward. The checksum covers every byte as it
/// lies in the file, so that no other filter meets a damaged one. Enciphered bytes have no patterns
/// left to compress, so the compression comes on top.
struct DocumentFilters {
    bool checksum = false;
    bool encrypt = false;
    bool compress = false;

    bool any() const { return checksum || encrypt || compress; }
    /// "checksum encrypt compress", or those of them that are used.
    std::string words() const;
    /// The filters with these words, if there are any.
    static std::optional<DocumentFilters> fromWords(std::string_view words);
    /// Pushes them onto a stream that stands behind the packet which announces them.
    void push(ioBufferedStream& stream) const;
    /// The same; a packet of text is followed by a newline, which is read first.
    void push(ioBufferedStreamInput& stream, bool isText) const;
};

} // namespace scenefile
