// SPDX-License-Identifier: MIT

/// @file
/// Scenes as documents: packet files of the library. `Documentation/formats.md` describes the
/// bytes.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioHeader.h"

#include "scene/scene.h"

namespace scenefile {

class DocumentFile;

/// The packet types of a document, besides the end that every packet file has.
namespace packetType {
inline constexpr const char* scene = "scenefile_scene";
inline constexpr const char* node = "scenefile_node";
inline constexpr const char* mesh = "scenefile_mesh";
inline constexpr const char* group = "scenefile_group";
inline constexpr const char* material = "scenefile_material";
inline constexpr const char* vertices = "scenefile_vertices";
inline constexpr const char* string = "packetFile_string";
inline constexpr const char* filters = "scenefile_filters";
} // namespace packetType

/// What the packets of a document go through on their way to the file. A packet file does not say
/// which filters were used: so a document that has any announces them in its first packet, by a
/// string with their names, and everything behind it goes through them.
///
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

/// How a document is written.
struct DocumentForm {
    ioWriteMethod method = ioWriteBinary;
    DocumentFilters filters;

    bool isText() const { return method == ioWriteAscii || method == ioWriteAsciiDebug; }
    /// Each value has a tag.
    bool isDebug() const { return method == ioWriteAsciiDebug || method == ioWriteBinaryDebug; }
    /// Other bytes than those of a text.
    bool isBinary() const { return !isText() || filters.any(); }
};

/// Positions are those in the document without its filters: what follows the packet that announces
/// filters has no place of its own in the file.
struct PacketOutline {
    std::int64_t position = 0; ///< Of its first byte.
    std::int64_t size = 0;     ///< In bytes.
    int type = 0;              ///< Its place in DocumentOutline::types.
};

/// What a document is made of.
struct DocumentOutline {
    std::string name; ///< Of the file, for messages.
    DocumentForm form;
    bool littleEndian = true;           ///< Without meaning in a text document.
    std::int64_t fileSize = 0;          ///< With the filters.
    std::vector<std::string> types;     ///< The registry, by id.
    std::vector<PacketOutline> packets; ///< The end-of-file packet is the last.

    /// "packet 3 (scenefile_node) at byte 512", for messages.
    std::string describePacket(int number) const;
};

/// A document in memory.
struct Document {
    DocumentOutline outline;
    Scene scene;
    int references = 0; ///< Usages of references, without null ones.

    const DocumentForm& form() const { return outline.form; }
};

/// Rounds all numbers of a scene as a text document does, to 16 digits. Returns how many changed.
int roundForText(Scene& scene);

/// Writes a scene that checkScene() finds nothing wrong with. The descriptor stays the caller's.
/// Throws a Failure if a write fails.
void saveDocument(const Scene& scene, const DocumentForm& form, int descriptor);

/// Finds out what a document is made of, so that it can be read: a reader alone would wait for the
/// rest of a file that was cut off. Throws a Failure with the byte position if header, list of
/// types, a packet or the end are not as they should be, or if anything follows the end.
DocumentOutline outlineDocument(const DocumentFile& file);

/// Reads the document in the file `path`, in an entry of a package ("PACKAGE:ENTRY", in place), or
/// in standard input, and checks all of it: its outline,
/// that each reference leads to an object of the right kind and each object is referred to,
/// checkScene(), and the counts that the document states. Throws a Failure with the byte position
/// or the packet where anything is wrong. What the file claims never decides how much memory is
/// allocated.
Document loadDocument(const std::string& path);

} // namespace scenefile
