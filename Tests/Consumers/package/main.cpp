// SPDX-License-Identifier: MIT
// Saves two objects, one of which points at the other, and loads them again.

#include <clocale>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "Base/IO/ioPacketFile.h"
#include "Base/Strings/zeStringIString.h"

struct Node {
    double x = 0;
    double y = 0;
    Node* parent = nullptr;
};
using Scene = std::vector<std::unique_ptr<Node>>;

bool save(const Scene& scene, const zeString::IString& path) {
    ioSimplePacketRegistry types(false);
    types.add("node");
    ioBufferedStreamOutput file;
    file.openFile(path);
    std::unique_ptr<ioWriteContext> out(ioWriteContextAlloc(file, ioWriteBinary, &types));
    out->startFile();
    for (const auto& node : scene) {
        out->startPacket("node", node.get());
        out->writeDouble(node->x);
        out->writeDouble(node->y);
        out->writeReference(node->parent, false);
        out->endPacket();
    }
    out->endFile();
    file.close();
    return out->good() && file.getStatus() == streamOK; // an error anywhere on the way ends here
}

struct Loader : ioClientReadContext {
    using ioClientReadContext::ioClientReadContext;
    Scene scene;
};

struct NodeType : ioPacketType {
    NodeType() : ioPacketType("node") {}

    void read(ioClientReadContext& in) override {
        Node* node = static_cast<Loader&>(in).scene.emplace_back(new Node).get();
        in.definePacketReference(node);
        node->x = in.readDouble();
        node->y = in.readDouble();
        in.readReferenceUsage(&node->parent, 0); // filled in later if the parent comes later
    }
};

Scene load(const zeString::IString& path) {
    ioSimplePacketRegistry types(true);
    types.supportedType(new NodeType); // the registry owns it
    ioBufferedStreamInput file;
    file.openFile(path);
    if (ioPacketFileCheck(file) != ioOK || !file.seek(0)) // readers wait for the end of a cut file
        return {};
    std::unique_ptr<ioReadContext> in(ioReadContextAlloc(file, &types)); // binary or text
    Loader loader(in.get());
    const bool complete = loader.readFile() == ioOK;
    file.close();
    return complete ? std::move(loader.scene) : Scene();
}

int main() {
    std::setlocale(LC_ALL, ""); // file names are in the user's encoding
    Scene scene(2);
    scene[1] = std::make_unique<Node>(Node{10, 20, nullptr});
    scene[0] = std::make_unique<Node>(Node{1.5, -2.5, scene[1].get()});

    if (!save(scene, L"scene.zp"))
        return 1;
    const Scene loaded = load(L"scene.zp");
    if (loaded.size() != 2 || loaded[0]->parent != loaded[1].get())
        return 1;
    std::printf("The first node stands at %g, %g below %g, %g.\n", loaded[0]->x, loaded[0]->y,
                loaded[0]->parent->x, loaded[0]->parent->y);
    return std::remove("scene.zp");
}
