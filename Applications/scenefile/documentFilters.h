// SPDX-License-Identifier: MIT

/// @file
/// The filters of a document: what its packets go through on their way to the file.
///
/// A packet file does not say which filters were used. So the first packet of a document that has
/// any is one of a type of scenefile's own, which names them in a string; everything behind it goes
/// through them.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Base/IO/ioBuffer.h"

namespace scenefile {

namespace packetType {
inline constexpr const char* filters = "scenefile_filters";
}

/// The filters stand in one order, from the file upward. The checksum covers every byte as it lies
/// in the file, so that no other filter is given a damaged one. What is enciphered has no patterns
/// left to compress, so the compression comes on top.
struct DocumentFilters {
    bool checksum = false;
    bool encrypt = false;
    bool compress = false;

    bool any() const { return checksum || encrypt || compress; }
    /// "checksum encrypt compress", or those of them that are used.
    std::string words() const;
    /// The filters with these words; nothing if there are no such filters.
    static std::optional<DocumentFilters> fromWords(std::string_view words);
    void push(ioBufferedStream& stream) const;
};

} // namespace scenefile
