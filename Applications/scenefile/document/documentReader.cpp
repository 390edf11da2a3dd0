// SPDX-License-Identifier: MIT

#include <deque>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "Base/IO/ioPacketFile.h"

#include "Shared/failure.h"
#include "document/document.h"
#include "document/documentFile.h"

namespace scenefile {

namespace {

/// An error after which the library cannot continue: a value in a debug document that has another
/// type than the reader expects.
class FatalError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// While it lives, such errors are exceptions, with the library's lines joined into one.
class FatalHooks {
public:
    FatalHooks() {
        s_lines.clear();
        ioPacketFileErrorInit([](char* text) { s_lines.push_back(text); });
        ioPacketFileAbortInit([] { throw FatalError(message()); });
    }
    FatalHooks(const FatalHooks&) = delete;
    FatalHooks& operator=(const FatalHooks&) = delete;
    ~FatalHooks() {
        ioPacketFileErrorInit(nullptr);
        ioPacketFileAbortInit(nullptr);
    }

private:
    static std::string message() {
        std::istringstream words;
        std::string result;
        for (const std::string& line : s_lines) {
            if (line.starts_with("ioPacketFile: Fatal error"))
                break;
            words = std::istringstream(line);
            for (std::string word; words >> word;)
                result += (result.empty() ? "" : " ") + word;
        }
        return result;
    }

    static inline std::vector<std::string> s_lines;
};

/// Carries a document through its reading: each packet type's read leads to one of its operations.
///
/// Nothing that a packet says is trusted. The first error is remembered and halts the reading; what
/// follows it in the packet is still read, but has no meaning.
class Loader : public ioClientReadContext {
public:
    Loader(ioReadContext* context, DocumentStream& stream, const DocumentOutline& outline)
        : ioClientReadContext(context), stream_(stream), outline_(outline) {}

    /// Reads the file and checks the scene; throws a Failure.
    void load();

    Scene takeScene() { return std::move(scene_); }
    int references() const { return static_cast<int>(links_.size()); }

    void readFilters();
    void readScene();
    void readNode();
    void readMesh();
    void readGroup();
    void readMaterial();
    void readVertices();
    void readString();

    void prePacketRead() override { room_ = outline_.packets[currentPacket()].size; }

    void failUnreferenced(const SceneObject& object) {
        fail(object.packet, "nothing refers to what it describes");
    }
    void failUnresolved(int link);

private:
    struct Name : SceneObject {
        std::string text;
    };

    /// A reference that was read. Its target is known at the end of the file at the latest; only
    /// then can its kind be checked.
    struct Link {
        int packet;
        int reference;
        const char* what;
        std::function<bool(SceneObject*)> assign; ///< False for the wrong kind of object.
        void* target = nullptr;                   ///< Filled in by the context.
    };

    template<class T, class Assign>
    void link(const char* what, bool optional, Assign assign);
    void linkName(const char* what, bool optional, std::string& text);
    void resolveLinks();
    void checkDocument();

    template<class T>
    T* define(std::vector<std::unique_ptr<T>>& owner);

    void readRun(Mesh& mesh, std::size_t place);
    void chunk(const char* what);
    std::size_t number();
    bool take(std::size_t number, std::size_t size);
    std::size_t referenceCount();
    void ints(std::vector<int>& list, std::size_t number);
    void doubles(std::vector<double>& list, std::size_t number);

    std::size_t currentPacket() const {
        return static_cast<std::size_t>(getContext().getPacketsRead());
    }
    bool failed() const { return !failure_.empty(); }
    void fail(const std::string& message) { fail(static_cast<int>(currentPacket()), message); }
    void fail(int packet, const std::string& message);

    DocumentStream& stream_;
    const DocumentOutline& outline_;
    Scene scene_;
    std::vector<std::unique_ptr<Name>> names_;
    std::deque<Link> links_; // whose elements keep their addresses
    int sceneCount_ = 0;
    SceneCounts stated_;
    std::int64_t room_ = 0; // bytes of the packet that no array has claimed so far
    std::string failure_;
};

void Loader::load() {
    try {
        const FatalHooks hooks;
        const ioStatus status = readFile();
        if (status != ioOK)
            fail("the reader gave up (status " + std::to_string(status) + ")");
    } catch (const FatalError& error) {
        fail(error.what());
    }
    if (!failed())
        resolveLinks();
    if (!failed())
        checkDocument();
    if (failed())
        throw app::Failure(outline_.name + ": " + failure_);
}

void Loader::checkDocument() {
    const int end = static_cast<int>(outline_.packets.size()) - 1;
    if (sceneCount_ != 1)
        return fail(end, "the document holds " + std::to_string(sceneCount_) + " scenes");
    if (const SceneFault fault = checkScene(scene_); !fault.text.empty())
        return fail(fault.packet, fault.text);
    if (stated_ != countScene(scene_))
        fail(end, "the scene does not hold as much as the document states");
}

void Loader::fail(int packet, const std::string& message) {
    if (!failed())
        failure_ = outline_.describePacket(packet) + ": " + message;
    halt();
}

// References.

/// The new object that the packet describes. A packet whose reference cannot be right is declared
/// invalid, since the library requires a definition from all others.
template<class T>
T* Loader::define(std::vector<std::unique_ptr<T>>& owner) {
    T* object = addTo(owner);
    object->packet = static_cast<int>(currentPacket());
    const int reference = getPacketReference();
    if (reference < 1 || static_cast<std::size_t>(reference) > outline_.packets.size()) {
        invalidPacket();
        fail("it has no possible reference");
    } else if (getContext().isReferenceDefined(reference)) {
        invalidPacket();
        fail("its reference is that of a packet before it");
    } else {
        definePacketReference(static_cast<SceneObject*>(object));
    }
    return object;
}

/// Reads a reference to an object of type T; resolveLinks() calls `assign` with the object.
template<class T, class Assign>
void Loader::link(const char* what, bool optional, Assign assign) {
    const int reference = readReference();
    if (failed() || (reference == 0 && optional))
        return;
    if (reference < 1 || static_cast<std::size_t>(reference) > outline_.packets.size())
        return fail(std::string("its ") + what + " is reference " + std::to_string(reference) +
                    ", which cannot be");
    const auto assignChecked = [assign](SceneObject* object) {
        T* target = dynamic_cast<T*>(object);
        if (target != nullptr)
            assign(target);
        return target != nullptr;
    };
    links_.push_back({static_cast<int>(currentPacket()), reference, what, assignChecked});
    resolveReference(reference, &links_.back().target, static_cast<int>(links_.size()) - 1);
}

/// `text` must keep its address.
void Loader::linkName(const char* what, bool optional, std::string& text) {
    link<Name>(what, optional, [&text](const Name* name) { text = name->text; });
}

void Loader::failUnresolved(int link) {
    const Link& open = links_.at(static_cast<std::size_t>(link));
    fail(open.packet, std::string("its ") + open.what + " is reference " +
                          std::to_string(open.reference) + ", which no packet defines");
}

void Loader::resolveLinks() {
    for (Link& link : links_)
        if (!link.assign(static_cast<SceneObject*>(link.target)))
            return fail(link.packet, std::string("its ") + link.what + " is reference " +
                                         std::to_string(link.reference) +
                                         ", which is something else");
}

// Values.

void Loader::chunk(const char* what) {
    if (!nextChunk())
        fail(std::string("it lacks ") + what);
}

/// Reads a number that is not negative, and no more than the packet has bytes.
std::size_t Loader::number() {
    const int value = readInt();
    if (value < 0 || value > room_)
        fail("it cannot hold the " + std::to_string(value) + " values that it states");
    return failed() ? 0 : static_cast<std::size_t>(value);
}

/// Notes that `number` values of `size` bytes take their part of the packet, and fails if that is
/// used up: a number in a file never allocates memory that the file does not fill. In a text, a
/// value has at least a digit and a blank.
bool Loader::take(std::size_t number, std::size_t size) {
    const std::size_t bytes = outline_.form.isText() ? 2 : size;
    if (number > static_cast<std::size_t>(room_) / bytes)
        fail("it cannot hold the " + std::to_string(number) + " values that it states");
    else
        room_ -= static_cast<std::int64_t>(number * bytes);
    return !failed();
}

/// Reads the number of references that follow.
std::size_t Loader::referenceCount() {
    const std::size_t count = number();
    return take(count, sizeof(int)) ? count : 0;
}

void Loader::ints(std::vector<int>& list, std::size_t number) {
    if (!take(number, sizeof(int)))
        return;
    list.resize(number);
    readIntArray(list.data(), static_cast<int>(number));
}

void Loader::doubles(std::vector<double>& list, std::size_t number) {
    if (!take(number, sizeof(double)))
        return;
    list.resize(number);
    readDoubleArray(list.data(), static_cast<int>(number));
}

// Packets.

/// Everything behind this packet goes through the filters.
void Loader::readFilters() {
    const char* words = readCString();
    const auto filters = DocumentFilters::fromWords(words == nullptr ? "" : words);
    if (!filters)
        return fail("it announces no filters that scenefile knows");
    filters->push(stream_, outline_.form.isText());
}

void Loader::readScene() {
    if (++sceneCount_ > 1 || getPacketReference() != 0) {
        invalidPacket();
        return fail("it is a second scene, or has a reference");
    }
    chunk("its root");
    link<Node>("root node", false, [this](Node* node) { scene_.root = node; });
    link<Vertices>("vertices", false, [this](Vertices* found) { scene_.vertices = found; });
    chunk("its material libraries");
    scene_.libraries.resize(referenceCount());
    for (std::string& library : scene_.libraries)
        linkName("material library", false, library);
    chunk("its counts");
    stated_.nodes = readInt();
    stated_.meshes = readInt();
    stated_.groups = readInt();
    stated_.materials = readInt();
    stated_.runs = readInt();
    stated_.elements = readInt64();
    stated_.corners = readInt64();
}

void Loader::readNode() {
    Node* node = define(scene_.nodes);
    chunk("its name, parent and mesh");
    linkName("name", true, node->name);
    link<Node>("parent", true, [node](Node* parent) { node->parent = parent; });
    link<Mesh>("mesh", true, [node](Mesh* mesh) { node->mesh = mesh; });
    if (nextChunk())
        node->children.resize(referenceCount());
    for (std::size_t i = 0; i < node->children.size() && !failed(); ++i)
        link<Node>("child", false, [node, i](Node* child) { node->children[i] = child; });
    if (nextChunk()) {
        double entries[12] = {};
        readDoubleArray(entries, 12);
        node->transform.set(entries);
    }
}

void Loader::readMesh() {
    Mesh* mesh = define(scene_.meshes);
    chunk("its vertices and runs");
    link<Vertices>("vertices", false, [mesh](Vertices* found) { mesh->vertices = found; });
    const std::size_t runs = number();
    for (std::size_t i = 0; i < runs && !failed(); ++i) {
        mesh->runs.emplace_back();
        startSubPacket();
        readRun(*mesh, i);
        endSubPacket();
    }
}

void Loader::readRun(Mesh& mesh, std::size_t place) {
    Run& run = mesh.runs[place];
    chunk("the kind and the counts of a run");
    const unsigned char kind = readUChar();
    run.kind = static_cast<ElementKind>(kind);
    run.hasTexture = readBool();
    run.hasNormals = readBool();
    const std::size_t elements = number();
    const std::size_t corners = number();
    const std::size_t commonSize = number();
    if (kind < 1 || kind > 3 || (commonSize != 0 && corners != elements * commonSize))
        fail("a run is of no known kind, or its counts do not agree");

    chunk("the material, the group and the smoothing of a run");
    link<Material>("material", true,
                   [&mesh, place](Material* found) { mesh.runs[place].material = found; });
    link<Group>("group", true, [&mesh, place](Group* found) { mesh.runs[place].group = found; });
    run.smoothing = readInt();

    chunk("the elements of a run");
    if (commonSize == 0)
        ints(run.sizes, elements);
    ints(run.positions, corners);
    ints(run.texture, run.hasTexture ? corners : 0);
    ints(run.normals, run.hasNormals ? corners : 0);
    if (commonSize != 0 && !failed())
        run.sizes.assign(elements, static_cast<int>(commonSize));
}

void Loader::readGroup() {
    Group* group = define(scene_.groups);
    chunk("its names");
    group->names.resize(referenceCount());
    for (std::string& name : group->names)
        linkName("name", false, name);
}

void Loader::readMaterial() {
    Material* material = define(scene_.materials);
    chunk("its name");
    linkName("name", false, material->name);
}

void Loader::readVertices() {
    Vertices* vertices = define(scene_.vertexSets);
    chunk("its positions");
    const std::size_t positions = number();
    doubles(vertices->positions, 3 * positions);
    if (nextChunk()) {
        const std::size_t texture = number();
        vertices->textureSize = readUChar();
        if (vertices->textureSize < 1 || vertices->textureSize > 3)
            return fail("its texture coordinates have " + std::to_string(vertices->textureSize) +
                        " numbers");
        doubles(vertices->texture, texture * static_cast<std::size_t>(vertices->textureSize));
    }
    if (nextChunk())
        doubles(vertices->normals, 3 * number());
    if (nextChunk())
        doubles(vertices->weights, positions);
    if (nextChunk())
        doubles(vertices->colours, 3 * positions);
}

void Loader::readString() {
    Name* name = define(names_);
    const char* text = readCString();
    if (text == nullptr)
        fail("it holds no text");
    else
        name->text = text;
}

// Types.

/// A type whose packets are read by one of the loader's operations.
class ReadingType : public ioPacketType {
public:
    ReadingType(const char* name, void (Loader::*operation)())
        : ioPacketType(name), operation_(operation) {}

    void read(ioClientReadContext& client) override { (loader(client).*operation_)(); }
    void memoryNotReferenced(ioClientReadContext& client, void* memory) override {
        loader(client).failUnreferenced(*static_cast<SceneObject*>(memory));
    }
    void hasUnresolvedPointer(ioClientReadContext& client, void*, int link) override {
        loader(client).failUnresolved(link);
    }

private:
    static Loader& loader(ioClientReadContext& client) { return static_cast<Loader&>(client); }

    void (Loader::*operation_)();
};

class ReadingRegistry : public ioPacketRegistry {
public:
    ReadingRegistry() : ioPacketRegistry(true) {}

    /// The type of strings takes the place of the built-in one, whose strings the program would
    /// have to free one by one.
    void registerAllTypes() override {
        supportedType(new ReadingType(packetType::filters, &Loader::readFilters));
        supportedType(new ReadingType(packetType::scene, &Loader::readScene));
        supportedType(new ReadingType(packetType::node, &Loader::readNode));
        supportedType(new ReadingType(packetType::mesh, &Loader::readMesh));
        supportedType(new ReadingType(packetType::group, &Loader::readGroup));
        supportedType(new ReadingType(packetType::material, &Loader::readMaterial));
        supportedType(new ReadingType(packetType::vertices, &Loader::readVertices));
        supportedType(new ReadingType(packetType::string, &Loader::readString));
    }
};

} // namespace

Document loadDocument(const std::string& path) {
    const DocumentFile file(path);
    Document document;
    document.outline = outlineDocument(file);

    // The file that was checked is the one that is read: its descriptor is the same.
    DocumentStream stream(file, "reading");
    ReadingRegistry registry;
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(stream, &registry));
    if (!context)
        throw app::Failure(file.name() + ": this is no document of a known form");
    Loader loader(context.get(), stream, document.outline);
    loader.load();
    document.scene = loader.takeScene();
    document.references = loader.references();
    return document;
}

} // namespace scenefile
