// SPDX-License-Identifier: MIT

/// @file
/// Scenes as documents: packet files of the library. `Documentation/formats.md` describes the
/// bytes.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Base/IO/ioHeader.h"

#include "document/documentFile.h"
#include "document/documentFilters.h"
#include "scene/scene.h"

namespace scenefile {

/// The packet types of a document, besides the end that every packet file has.
namespace packetType {
inline constexpr const char* scene = "scenefile_scene";
inline constexpr const char* node = "scenefile_node";
inline constexpr const char* mesh = "scenefile_mesh";
inline constexpr const char* group = "scenefile_group";
inline constexpr const char* material = "scenefile_material";
inline constexpr const char* vertices = "scenefile_vertices";
inline constexpr const char* string = "packetFile_string";
} // namespace packetType

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

/// Reads the document in the file `path`, or in standard input, and checks all of it: its outline,
/// that each reference leads to an object of the right kind and each object is referred to,
/// checkScene(), and the counts that the document states. Throws a Failure with the byte position
/// or the packet where anything is wrong. What the file claims never decides how much memory is
/// allocated.
Document loadDocument(const std::string& path);

} // namespace scenefile
