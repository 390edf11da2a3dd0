// SPDX-License-Identifier: MIT

// Saves objects that point at one another as a packet file, and loads them again. The file is
// checked before it is read, since it may have been cut off or be something else.
//
//     $ saveload save tree.zp
//     tree.zp: 3 nodes saved
//     $ saveload load tree.zp
//     wheel, part of car, part of toys
//     car, part of toys
//     toys
//     $ head --bytes=150 tree.zp > cut.zp
//     $ saveload load cut.zp
//     saveload: cut.zp: not a complete packet file

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Base/IO/ioPacketFile.h"
#include "Base/Strings/zeStringIString.h"

namespace {

struct Node {
    std::string name;
    Node* parent = nullptr;
};
using Tree = std::vector<std::unique_ptr<Node>>;

constexpr const char* nodeType = "node";

Tree makeTree() {
    Tree tree;
    for (const char* name : {"wheel", "car", "toys"})
        tree.push_back(std::make_unique<Node>(Node{name, nullptr}));
    tree[0]->parent = tree[1].get();
    tree[1]->parent = tree[2].get();
    return tree;
}

/// Writes one packet for each node. The address of a node becomes its number in the file; a pointer
/// to it is written as that number, before or after its packet.
bool save(const Tree& tree, const zeString::IString& path) {
    ioSimplePacketRegistry types(false);
    types.add(nodeType);
    ioBufferedStreamOutput file;
    file.openFile(path);
    const std::unique_ptr<ioWriteContext> out(ioWriteContextAlloc(file, ioWriteBinary, &types));
    out->startFile();
    for (const auto& node : tree) {
        out->startPacket(nodeType, node.get());
        out->writeCString(node->name.c_str());
        out->writeReference(node->parent, false);
        out->endPacket();
    }
    out->endFile();
    file.close(); // Only now is it known whether all writes went well.
    return out->good() && file.getStatus() == streamOK;
}

/// The client of a reader carries what is loaded to the operations that load it.
struct Loader : ioClientReadContext {
    using ioClientReadContext::ioClientReadContext;
    Tree tree;
};

/// Reads what save() wrote, in the same order and with the same types.
void readNode(ioClientReadContext& in) {
    Node* node = static_cast<Loader&>(in).tree.emplace_back(std::make_unique<Node>()).get();
    in.definePacketReference(node);
    if (const char* name = in.readCString())
        node->name = name;
    in.readReferenceUsage(&node->parent, 0); // Filled in as soon as the parent is known.
}

/// Null with a message if the file cannot be loaded completely.
const char* load(const zeString::IString& path, Tree& tree) {
    ioBufferedStreamInput file;
    file.openFile(path);
    if (file.getStatus() != streamOK)
        return "cannot be opened";
    // The reader would wait for the rest of a file that was cut off.
    if (ioPacketFileCheck(file) != ioOK || !file.seek(0))
        return "not a complete packet file";

    ioSimplePacketRegistry types(true);
    types.supportedType(new ioReadPacketByFunction(nodeType, readNode)); // The registry owns it.
    const std::unique_ptr<ioReadContext> in(ioReadContextAlloc(file, &types));
    if (!in)
        return "not a packet file of a known form";
    Loader loader(in.get());
    const bool isComplete = loader.readFile() == ioOK;
    file.close();
    tree = std::move(loader.tree);
    return isComplete ? nullptr : "cannot be read";
}

void print(const Tree& tree) {
    for (const auto& node : tree) {
        std::printf("%s", node->name.c_str());
        for (const Node* above = node->parent; above != nullptr; above = above->parent)
            std::printf(", part of %s", above->name.c_str());
        std::printf("\n");
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string command = argc == 3 ? argv[1] : "";
    if (command != "save" && command != "load") {
        std::fputs("usage: saveload save FILE\n       saveload load FILE\n", stderr);
        return 2;
    }
    const zeString::IString path(argv[2], zeString::EncodingUTF8);
    const char* failure = nullptr;
    Tree tree = makeTree();
    if (command == "load")
        failure = load(path, tree);
    else if (!save(tree, path))
        failure = "cannot be written";
    if (failure != nullptr) {
        std::fprintf(stderr, "saveload: %s: %s\n", argv[2], failure);
        return 1;
    }
    if (command == "load")
        print(tree);
    else
        std::printf("%s: %zu nodes saved\n", argv[2], tree.size());
    return 0;
}
