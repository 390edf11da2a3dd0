// SPDX-License-Identifier: MIT

#include <cstdio>
#include <iomanip>
#include <ostream>
#include <vector>

#include "Base/Linear/zeLinearMatrix.h"

#include "Shared/terminal.h"
#include "command/command.h"
#include "scene/scene.h"

namespace scenefile {

namespace {

std::string triple(const double* numbers) {
    char text[80];
    std::snprintf(text, sizeof text, "(%.9g %.9g %.9g)", numbers[0], numbers[1], numbers[2]);
    return text;
}

/// The rows: images of the axes, and the translation. Nothing for the identity.
void showTransform(const Node& node, const char* indent, std::ostream& out) {
    if (node.transform == zeLinear::AffineMatrix::Identity)
        return;
    out << indent << "transform";
    for (const auto& row : node.transform.m)
        out << " " << triple(row);
    out << "\n";
}

std::int64_t documentSize(const DocumentOutline& outline) {
    return outline.packets.back().position + outline.packets.back().size;
}

void showPackets(const DocumentOutline& outline, std::ostream& out) {
    out << "packets: " << outline.packets.size() << ", and the header of "
        << outline.packets.front().position << " bytes\n";
    struct Sum {
        int count = 0;
        std::int64_t bytes = 0;
    };
    std::vector<Sum> sums(outline.types.size());
    for (const PacketOutline& packet : outline.packets) {
        Sum& sum = sums[static_cast<std::size_t>(packet.type)];
        ++sum.count;
        sum.bytes += packet.size;
    }
    for (std::size_t type = 0; type < sums.size(); ++type)
        out << "  " << std::left << std::setw(20) << app::visible(outline.types[type]) << std::right
            << std::setw(8) << sums[type].count << std::setw(12) << sums[type].bytes << " bytes\n";
}

void showVertices(const Vertices& vertices, std::ostream& out) {
    out << "vertices: " << counted(vertices.positionCount(), "position");
    if (!vertices.weights.empty())
        out << " with weights";
    if (!vertices.colours.empty())
        out << " with colours";
    if (vertices.textureCount() > 0)
        out << ", " << counted(vertices.textureCount(), "texture coordinate") << " of "
            << counted(vertices.textureSize, "number");
    out << ", " << counted(vertices.normalCount(), "normal") << "\n";
}

void showRun(const Run& run, std::ostream& out) {
    const char* noun = run.kind == ElementKind::face   ? "face"
                       : run.kind == ElementKind::line ? "line"
                                                       : "point";
    out << "    " << counted(static_cast<std::int64_t>(run.sizes.size()), noun) << ", "
        << counted(static_cast<std::int64_t>(run.positions.size()), "corner") << " of v"
        << (run.hasTexture   ? "/vt"
            : run.hasNormals ? "/"
                             : "")
        << (run.hasNormals ? "/vn" : "");
    if (run.material != nullptr)
        out << "; material " << app::visible(run.material->name);
    if (run.group != nullptr) {
        out << "; group";
        for (const std::string& name : run.group->names)
            out << " " << app::visible(name);
    }
    if (run.smoothing != 0)
        out << "; smoothing " << run.smoothing;
    out << "\n";
}

void showNode(const Node& node, std::ostream& out) {
    out << "  node " << (node.name.empty() ? "(no name)" : app::visible(node.name)) << ": ";
    if (node.mesh == nullptr)
        out << "no mesh\n";
    else
        out << "mesh of " << counted(static_cast<std::int64_t>(node.mesh->runs.size()), "run")
            << ", " << boundsText(meshBounds(node)) << "\n";
    showTransform(node, "    ", out);
    if (node.mesh != nullptr)
        for (const Run& run : node.mesh->runs)
            showRun(run, out);
}

} // namespace

std::string counted(std::int64_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string boundsText(const zeLinear::Range3d& bounds) {
    if (bounds.isUnbounded())
        return "no bounds";
    double low[3];
    double high[3];
    bounds.get(low, high);
    return "bounds " + triple(low) + " to " + triple(high);
}

std::string summary(const Scene& scene) {
    const SceneCounts counts = countScene(scene);
    return counted(scene.vertices->positionCount(), "position") + ", " +
           counted(counts.nodes, "node") + ", " + counted(counts.runs, "run") + ", " +
           counted(counts.elements, "element") + ", " + counted(counts.corners, "corner") + ", " +
           counted(counts.materials, "material") + ", " + counted(counts.groups, "group");
}

void showDocument(const Document& document, std::ostream& out) {
    const DocumentOutline& outline = document.outline;
    out << app::visible(document.outline.name) << ": ";
    if (outline.form.isText())
        out << "text";
    else
        out << "binary, " << (outline.littleEndian ? "little" : "big") << "-endian";
    if (outline.form.isDebug())
        out << " with debug tags";
    out << ", " << documentSize(outline) << " bytes\n";
    if (outline.form.filters.any())
        out << "filters: " << outline.form.filters.words() << ", " << outline.fileSize
            << " bytes in the file\n";
    showPackets(outline, out);
    const Scene& scene = document.scene;
    out << "scene: " << summary(scene) << "\n";
    showVertices(*scene.vertices, out);
    for (const std::string& library : scene.libraries)
        out << "material library: " << app::visible(library) << "\n";
    showTransform(*scene.root, "", out);
    out << boundsText(sceneBounds(scene)) << "\n";
    out << "objects: " << scene.root->children.size() << "\n";
    for (const Node* child : scene.root->children)
        showNode(*child, out);
}

void reportSound(const Document& document, std::ostream& out) {
    const DocumentOutline& outline = document.outline;
    out << app::visible(document.outline.name) << ": sound\n"
        << "  " << counted(static_cast<std::int64_t>(outline.packets.size()), "packet")
        << ", the last of them the end-of-file packet at byte " << outline.packets.back().position
        << "\n"
        << "  " << counted(document.references, "reference")
        << ", each to an object of the right kind, and every object referred to\n"
        << "  every index within the vertices, every coordinate a number\n"
        << "  as much as the document states: " << summary(document.scene) << "\n";
}

} // namespace scenefile
