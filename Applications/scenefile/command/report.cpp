// SPDX-License-Identifier: MIT

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <vector>

#include "Base/Linear/zeLinearMatrix.h"

#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/terminal.h"
#include "command/command.h"
#include "scene/scene.h"

namespace scenefile {

namespace {

using Stream = zeOS::AppOutputStream;

std::string triple(const double* numbers) {
    char text[80];
    std::snprintf(text, sizeof text, "(%.9g %.9g %.9g)", numbers[0], numbers[1], numbers[2]);
    return text;
}

/// The rows: images of the axes, and the translation. Nothing for the identity.
void showTransform(const Node& node, const Stream& out) {
    if (node.transform == zeLinear::AffineMatrix::Identity)
        return;
    std::string rows;
    for (const auto& row : node.transform.m)
        rows += " " + triple(row);
    out("transform%s\n", rows.c_str());
}

std::int64_t documentSize(const DocumentOutline& outline) {
    return outline.packets.back().position + outline.packets.back().size;
}

void showPackets(const DocumentOutline& outline, Stream& out) {
    out("packets: %zu, and the header of %" PRId64 " bytes\n", outline.packets.size(),
        outline.packets.front().position);
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
    const app::Indent indent(out);
    for (std::size_t type = 0; type < sums.size(); ++type)
        out("%-20s%8d%12" PRId64 " bytes\n", app::visible(outline.types[type]).c_str(),
            sums[type].count, sums[type].bytes);
}

void showVertices(const Vertices& vertices, const Stream& out) {
    std::string text = counted(vertices.positionCount(), "position");
    if (!vertices.weights.empty())
        text += " with weights";
    if (!vertices.colours.empty())
        text += " with colours";
    if (vertices.textureCount() > 0)
        text += ", " + counted(vertices.textureCount(), "texture coordinate") + " of " +
                counted(vertices.textureSize, "number");
    text += ", " + counted(vertices.normalCount(), "normal");
    out("vertices: %s\n", text.c_str());
}

void showRun(const Run& run, const Stream& out) {
    const char* noun = run.kind == ElementKind::face   ? "face"
                       : run.kind == ElementKind::line ? "line"
                                                       : "point";
    std::string text = counted(static_cast<std::int64_t>(run.sizes.size()), noun) + ", " +
                       counted(static_cast<std::int64_t>(run.positions.size()), "corner") +
                       " of v" +
                       (run.hasTexture   ? "/vt"
                        : run.hasNormals ? "/"
                                         : "") +
                       (run.hasNormals ? "/vn" : "");
    if (run.material != nullptr)
        text += "; material " + app::visible(run.material->name);
    if (run.group != nullptr) {
        text += "; group";
        for (const std::string& name : run.group->names)
            text += " " + app::visible(name);
    }
    if (run.smoothing != 0)
        text += "; smoothing " + std::to_string(run.smoothing);
    out("%s\n", text.c_str());
}

void showNode(const Node& node, Stream& out) {
    const std::string name = node.name.empty() ? "(no name)" : app::visible(node.name);
    const std::string mesh =
        node.mesh == nullptr
            ? "no mesh"
            : "mesh of " + counted(static_cast<std::int64_t>(node.mesh->runs.size()), "run") +
                  ", " + boundsText(meshBounds(node));
    out("node %s: %s\n", name.c_str(), mesh.c_str());
    const app::Indent indent(out);
    showTransform(node, out);
    if (node.mesh != nullptr)
        for (const Run& run : node.mesh->runs)
            showRun(run, out);
}

} // namespace

std::string counted(std::int64_t count, const char* noun) {
    std::string key = (count == 1 ? "scenefile.one_" : "scenefile.many_") + std::string(noun);
    std::replace(key.begin(), key.end(), ' ', '_');
    const std::string english = std::string("{1} ") + noun + (count == 1 ? "" : "s");
    return app::message(key.c_str(), english, {std::to_string(count)});
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

void showDocument(const Document& document, Stream& out) {
    const DocumentOutline& outline = document.outline;
    const char* const form = outline.form.isText()  ? "text"
                             : outline.littleEndian ? "binary, little-endian"
                                                    : "binary, big-endian";
    out("%s: %s%s, %" PRId64 " bytes\n", app::visible(outline.name).c_str(), form,
        outline.form.isDebug() ? " with debug tags" : "", documentSize(outline));
    if (outline.form.filters.any())
        out("filters: %s, %" PRId64 " bytes in the file\n", outline.form.filters.words().c_str(),
            outline.fileSize);
    showPackets(outline, out);
    const Scene& scene = document.scene;
    out("scene: %s\n", summary(scene).c_str());
    showVertices(*scene.vertices, out);
    for (const std::string& library : scene.libraries)
        out("material library: %s\n", app::visible(library).c_str());
    showTransform(*scene.root, out);
    out("%s\n", boundsText(sceneBounds(scene)).c_str());
    out("objects: %zu\n", scene.root->children.size());
    const app::Indent indent(out);
    for (const Node* child : scene.root->children)
        showNode(*child, out);
}

void reportSound(const Document& document, Stream& out) {
    const DocumentOutline& outline = document.outline;
    const auto say = [&](const std::string& text) { out(app::normal, "%s\n", text.c_str()); };
    say(app::visible(outline.name) + ": " + app::message("scenefile.sound", "sound"));
    const app::Indent indent(out);
    say(app::message("scenefile.sound_packets",
                     "{1}, the last of them the end-of-file packet at byte {2}",
                     {counted(static_cast<std::int64_t>(outline.packets.size()), "packet"),
                      std::to_string(outline.packets.back().position)}));
    say(app::message("scenefile.sound_references",
                     "{1}, each to an object of the right kind, and every object referred to",
                     {counted(document.references, "reference")}));
    say(app::message("scenefile.sound_values",
                     "every index within the vertices, every coordinate a number"));
    say(app::message("scenefile.sound_summary", "as much as the document states: {1}",
                     {summary(document.scene)}));
}

} // namespace scenefile
