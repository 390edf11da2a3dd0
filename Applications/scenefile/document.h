// SPDX-License-Identifier: MIT

/// @file
/// Scenes as documents: packet files of the library. `Documentation/formats.md` describes the
/// bytes.

#pragma once

#include <string>

#include "Base/IO/ioHeader.h"

#include "documentOutline.h"
#include "scene.h"

namespace scenefile {

/// The packet types of a document, beside the strings and the end that every packet file has.
namespace packetType {
inline constexpr const char* scene = "scenefile_scene";
inline constexpr const char* node = "scenefile_node";
inline constexpr const char* mesh = "scenefile_mesh";
inline constexpr const char* group = "scenefile_group";
inline constexpr const char* material = "scenefile_material";
inline constexpr const char* vertices = "scenefile_vertices";
inline constexpr const char* string = "packetFile_string";
} // namespace packetType

/// Rounds all numbers of a scene as a text document does, to 16 digits. Returns how many changed.
int roundForText(Scene& scene);

/// How a document is written.
struct DocumentForm {
    ioWriteMethod method = ioWriteBinary;
    DocumentFilters filters;
};

/// Writes a scene that checkScene() finds nothing wrong with. The
/// descriptor stays the caller's. Throws a Failure if a write fails.
void saveDocument(const Scene& scene, const DocumentForm& form, int descriptor);

struct Document {
    DocumentOutline outline;
    Scene scene;
    int references = 0; ///< usages of references, null ones left out

    DocumentForm form() const { return {outline.method, outline.filters}; }
};

/// Reads a document and checks it whole: its outline, that each reference leads to an object of the
/// right kind and each object is referred to, checkScene(), and the counts that the document
/// states. Throws a Failure with the byte position or the packet where anything is wrong. What the
/// file claims never decides how much memory is allocated.
Document loadDocument(const std::string& path);

} // namespace scenefile
