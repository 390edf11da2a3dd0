// SPDX-License-Identifier: MIT

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Base/IO/ioPacketFile.h"
#include "Base/Linear/zeLinearMatrix.h"

#include "Shared/failure.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "document/document.h"

namespace scenefile {

namespace {

/// A type that is only written needs nothing but its name.
class WritingRegistry : public ioPacketRegistry {
public:
    explicit WritingRegistry(bool withFilters)
        : ioPacketRegistry(false), withFilters_(withFilters) {}

    void registerAllTypes() override {
        for (const char* name : {packetType::scene, packetType::node, packetType::mesh,
                                 packetType::group, packetType::material, packetType::vertices})
            supportedType(new ioPacketType(name));
        if (withFilters_)
            supportedType(new ioPacketType(packetType::filters));
    }

private:
    bool withFilters_;
};

/// The announcement stands ahead of the filters, so that a reader finds it in plain bytes.
void startFilters(const DocumentFilters& filters, ioWriteContext& out,
                  ioBufferedStreamOutput& stream) {
    if (!filters.any())
        return;
    out.startPacket(packetType::filters, nullptr);
    out.writeCString(filters.words().c_str());
    out.endPacket();
    filters.push(stream);
}

/// The names of a scene, each once. The address of a text is its reference.
class Names {
public:
    /// Null for the empty name.
    const char* address(const std::string& name) {
        if (name.empty())
            return nullptr;
        const auto [place, isNew] = known_.insert(name);
        if (isNew)
            inOrder_.push_back(place->c_str());
        return place->c_str();
    }

    const std::vector<const char*>& inOrder() const { return inOrder_; }

private:
    std::set<std::string> known_; // its elements keep their addresses
    std::vector<const char*> inOrder_;
};

int sizeOf(const auto& list) {
    return static_cast<int>(list.size());
}

/// How many numbers are in the arrays of a scene.
std::int64_t numberCount(const Scene& scene) {
    const Vertices& all = *scene.vertices;
    std::size_t count = 0;
    for (const auto* list :
         {&all.positions, &all.weights, &all.colours, &all.texture, &all.normals})
        count += list->size();
    for (const auto& mesh : scene.meshes)
        for (const Run& run : mesh->runs)
            count += run.positions.size() + run.texture.size() + run.normals.size();
    return static_cast<std::int64_t>(count);
}

/// Every packet refers to packets behind it: a reader meets the whole before its parts.
class Writer {
public:
    Writer(ioWriteContext& out, const Scene& scene, bool isDebug)
        : out_(out), progress_("writing", numberCount(scene)), isDebug_(isDebug) {}

    void write(const Scene& scene);

private:
    void writeScene(const Scene& scene);
    void writeNode(const Node& node);
    void writeMesh(const Mesh& mesh);
    void writeRun(const Run& run);
    void writeGroup(const Group& group);
    void writeMaterial(const Material& material);
    void writeVertices(const Vertices& vertices);

    void reference(const void* object) { out_.writeReference(object, false); }
    void name(const std::string& text) { reference(names_.address(text)); }
    void ints(const std::vector<int>& list) { array(list, &ioWriteContext::writeIntArray); }
    void doubles(const std::vector<double>& list) {
        array(list, &ioWriteContext::writeDoubleArray);
    }
    template<class T>
    void array(const std::vector<T>& list, void (ioWriteContext::*writePiece)(const T*, int));

    ioWriteContext& out_;
    Names names_;
    app::Progress progress_;
    std::int64_t written_ = 0; // numbers in arrays
    bool isDebug_;
};

/// In pieces, so that progress goes on. An array in a debug document has one tag, so it is written
/// as a whole, even if it is empty.
template<class T>
void Writer::array(const std::vector<T>& list, void (ioWriteContext::*writePiece)(const T*, int)) {
    int at = 0;
    do {
        const int piece = isDebug_ ? sizeOf(list) : std::min(65536, sizeOf(list) - at);
        (out_.*writePiece)(list.data() + at, piece);
        at += piece;
        progress_.report(written_ += piece);
    } while (at < sizeOf(list));
}

void Writer::write(const Scene& scene) {
    writeScene(scene);
    for (const auto& node : scene.nodes)
        writeNode(*node);
    for (const auto& mesh : scene.meshes)
        writeMesh(*mesh);
    for (const auto& group : scene.groups)
        writeGroup(*group);
    for (const auto& material : scene.materials)
        writeMaterial(*material);
    writeVertices(*scene.vertices);
    for (const char* text : names_.inOrder())
        out_.writeCStringPacket(text);
}

void Writer::writeScene(const Scene& scene) {
    out_.startPacket(packetType::scene, nullptr);
    out_.startChunk();
    reference(scene.root);
    reference(scene.vertices);
    out_.startChunk();
    out_.writeInt(sizeOf(scene.libraries));
    for (const std::string& library : scene.libraries)
        name(library);
    out_.startChunk();
    const SceneCounts counts = countScene(scene);
    out_.writeInt(counts.nodes);
    out_.writeInt(counts.meshes);
    out_.writeInt(counts.groups);
    out_.writeInt(counts.materials);
    out_.writeInt(counts.runs);
    out_.writeInt64(counts.elements);
    out_.writeInt64(counts.corners);
    out_.endPacket();
}

void Writer::writeNode(const Node& node) {
    out_.startPacket(packetType::node, &node);
    out_.startChunk();
    name(node.name);
    reference(node.parent);
    reference(node.mesh);
    out_.startChunk();
    if (!node.children.empty()) {
        out_.writeInt(sizeOf(node.children));
        for (const Node* child : node.children)
            reference(child);
    }
    if (node.transform != zeLinear::AffineMatrix::Identity) {
        double entries[12];
        node.transform.get(entries);
        out_.startChunk();
        out_.writeDoubleArray(entries, 12);
    }
    out_.endPacket();
}

void Writer::writeMesh(const Mesh& mesh) {
    out_.startPacket(packetType::mesh, &mesh);
    out_.startChunk();
    reference(mesh.vertices);
    out_.writeInt(sizeOf(mesh.runs));
    for (const Run& run : mesh.runs)
        writeRun(run);
    out_.endPacket();
}

void Writer::writeRun(const Run& run) {
    const int commonSize = run.commonSize();
    out_.startSubPacket();
    out_.startChunk();
    out_.writeUChar(static_cast<unsigned char>(run.kind));
    out_.writeBool(run.hasTexture);
    out_.writeBool(run.hasNormals);
    out_.writeInt(sizeOf(run.sizes));
    out_.writeInt(sizeOf(run.positions));
    out_.writeInt(commonSize);
    out_.startChunk();
    reference(run.material);
    reference(run.group);
    out_.writeInt(run.smoothing);
    out_.startChunk();
    if (commonSize == 0)
        ints(run.sizes);
    ints(run.positions);
    ints(run.texture);
    ints(run.normals);
    out_.endSubPacket();
}

void Writer::writeGroup(const Group& group) {
    out_.startPacket(packetType::group, &group);
    out_.startChunk();
    out_.writeInt(sizeOf(group.names));
    for (const std::string& text : group.names)
        name(text);
    out_.endPacket();
}

void Writer::writeMaterial(const Material& material) {
    out_.startPacket(packetType::material, &material);
    out_.startChunk();
    name(material.name);
    out_.endPacket();
}

/// A chunk for each kind of number; chunks of what the model lacks are empty.
void Writer::writeVertices(const Vertices& vertices) {
    out_.startPacket(packetType::vertices, &vertices);
    out_.startChunk();
    out_.writeInt(vertices.positionCount());
    doubles(vertices.positions);
    out_.startChunk();
    if (vertices.textureCount() > 0) {
        out_.writeInt(vertices.textureCount());
        out_.writeUChar(static_cast<unsigned char>(vertices.textureSize));
        doubles(vertices.texture);
    }
    out_.startChunk();
    if (vertices.normalCount() > 0) {
        out_.writeInt(vertices.normalCount());
        doubles(vertices.normals);
    }
    for (const auto* list : {&vertices.weights, &vertices.colours}) {
        out_.startChunk();
        if (!list->empty()) // no array of none: in a debug document it would be a tag
            doubles(*list);
    }
    out_.endPacket();
}

} // namespace

int roundForText(Scene& scene) {
    int changed = 0;
    const auto round = [&](double& number) {
        char text[32];
        std::snprintf(text, sizeof text, "%.16g", number);
        const double rounded = std::strtod(text, nullptr);
        changed += rounded != number;
        number = rounded;
    };
    Vertices& all = *scene.vertices;
    for (auto* numbers : {&all.positions, &all.weights, &all.colours, &all.texture, &all.normals})
        std::for_each(numbers->begin(), numbers->end(), round);
    for (const auto& node : scene.nodes)
        for (auto& row : node->transform.m)
            std::for_each(std::begin(row), std::end(row), round);
    return changed;
}

void saveDocument(const Scene& scene, const DocumentForm& form, int descriptor) {
    ioBufferedStreamOutput stream;
    auto sink = std::make_unique<ioBufferFD>(false);
    sink->useFD(app::duplicate(descriptor).release());
    stream.addBufferToChain(sink.release());

    WritingRegistry registry(form.filters.any());
    const std::unique_ptr<ioWriteContext> context(
        ioWriteContextAlloc(stream, form.method, &registry));
    context->startFile();
    startFilters(form.filters, *context, stream);
    Writer(*context, scene, form.isDebug()).write(scene);
    context->endFile();
    stream.close(); // writes what is left: only then does the status cover all writes
    context->promoteStreamStatus(stream);
    if (context->getStatus() == ioDiskFull)
        throw app::Failure("the disk is full");
    if (!context->good())
        throw app::Failure("a write failed");
}

} // namespace scenefile
