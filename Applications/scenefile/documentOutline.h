// SPDX-License-Identifier: MIT

/// @file
/// The guard before the reader: what a document is made of, found out without trusting it.
///
/// The library's reader takes a file as it comes: it waits for the end of a header that has none,
/// and for a brace that never comes in a text that was cut off. So a document from outside is
/// walked here first, as bytes and by the reader's own rules. What passes ends where it says, so
/// that the reader ends as well.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Base/IO/ioHeader.h"

#include "documentFile.h"
#include "documentFilters.h"

namespace scenefile {

/// Positions are those in the document without its filters: in the file, what stands behind the
/// packet that announces filters has no place of its own.
struct PacketOutline {
    std::int64_t position = 0; ///< of its first byte
    std::int64_t size = 0;     ///< from there to the next packet
    int type = 0;              ///< its place in DocumentOutline::types
};

struct DocumentOutline {
    ioWriteMethod method = ioWriteBinary;
    bool littleEndian = true; ///< of no meaning in a text document
    DocumentFilters filters;
    std::int64_t fileSize = 0;          ///< with the filters
    std::vector<std::string> types;     ///< the registry, by id
    std::vector<PacketOutline> packets; ///< the end-of-file packet is the last

    bool isText() const { return method == ioWriteAscii || method == ioWriteAsciiDebug; }
    /// Each value has a tag.
    bool isDebug() const { return method == ioWriteAsciiDebug || method == ioWriteBinaryDebug; }

    /// "packet 3 (scenefile_node) at byte 512", for messages.
    std::string describePacket(int number) const;
};

/// Walks the whole file. Throws a Failure with the byte position where it stops making sense: a
/// header, a registry or a packet that is not as the format has it, a packet that the rest of the
/// file cannot hold, an end without the end-of-file packet, or anything behind that packet.
DocumentOutline outlineDocument(const DocumentFile& file);

} // namespace scenefile
