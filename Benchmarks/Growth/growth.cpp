// SPDX-License-Identifier: MIT

// How the time an item follows the size, from 1,000 to 5 million: report.py draws it. Only ours, as
// what matters is the shape of the lines.
// references, tree: insert and find in two shuffled orders, resolve as in references.cpp.
// packets: the small records of Workload.h, to and from one file. arrays: one array of doubles in
// one packet. directory: every name of one directory of empty files.

#include <memory>

#include "Base/IO/ioPacketFile.h"
#include "Base/OS/zeOSDirectoryIterator.h"
#include "Base/Utility/zeRBTree.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Support/FilesWorkload.h"
#include "Support/RecordFile.h"

namespace {

const bench::ScratchFile scratch("growth");

using References = ze::Reference<ioReferenceMap>;

References numbered(const std::vector<void*>& pointers) {
    References map(ioPacketFileNewReferenceMap());
    for (void* pointer : pointers)
        if (map->findReference(pointer) < 0)
            map->newReference(pointer);
    return map;
}

void insertReferences(State& s, size_t n) {
    const std::vector<void*> pointers = bench::ptrs(n, 11);
    for (auto _ : s) {
        References map = numbered(pointers);
        s.PauseTiming();
        bench::require(map->findReference(pointers.back()) == int(n), "numbers rise by one");
        map = References();
        s.ResumeTiming();
    }
}

void findReferences(State& s, size_t n) {
    const References map = numbered(bench::ptrs(n, 11));
    const std::vector<void*> pointers = bench::ptrs(n, 12);
    for (auto _ : s) {
        int64_t sum = 0;
        for (void* pointer : pointers)
            sum += map->findReference(pointer);
        bench::require(sum == int64_t(n) * int64_t(n + 1) / 2, "each number was found once");
    }
}

void resolveReferences(State& s, size_t n) {
    ioPacketType type("object");
    std::vector<void*> locations(n);
    for (auto _ : s) {
        References map(ioPacketFileNewReferenceMap());
        for (size_t i = 1; i <= n; ++i)
            map->resolveReferenceUsage(int(i), &locations[i - 1], &type, 0);
        for (size_t i = 1; i <= n; ++i) {
            map->associatePtrWithReference(int(i), reinterpret_cast<void*>(i * 64), false);
            map->defineReference(int(i), &type);
        }
    }
    bench::require(locations.back() == reinterpret_cast<void*>(n * 64),
                   "every location was filled");
}

using Tree = ze::RBTreeMap<int64_t, int64_t>;

std::unique_ptr<Tree> makeTree(const std::vector<int64_t>& keys) {
    auto tree = std::make_unique<Tree>();
    for (int64_t key : keys)
        tree->insert(key, key);
    return tree;
}

void insertIntoTree(State& s, size_t n) {
    const std::vector<int64_t> keys = bench::keys(n, 21);
    for (auto _ : s) {
        auto tree = makeTree(keys);
        s.PauseTiming();
        tree.reset();
        s.ResumeTiming();
    }
}

void findInTree(State& s, size_t n) {
    const auto tree = makeTree(bench::keys(n, 21));
    const std::vector<int64_t> keys = bench::keys(n, 22);
    for (auto _ : s) {
        int64_t difference = 0;
        for (int64_t key : keys)
            difference |= *tree->getValuePtr(key) ^ key;
        bench::require(difference == 0, "each key has its value");
    }
}

void writePackets(State& s, size_t n) {
    const std::vector<bench::Rec>& records = bench::recs(n);
    for (auto _ : s)
        bench::writeFile<bench::RecordType>(scratch.path, ioWriteBinary,
                                            [&](ioWriteContext& context, const ioPacketType* type) {
                                                for (const bench::Rec& record : records)
                                                    bench::RecordType::write(context, type, record);
                                            });
}

void readPackets(State& s, size_t n) {
    for (auto _ : s)
        bench::readFile<bench::RecordType>(scratch.path, [n](const bench::RecordType& type) {
            bench::require(type.count == n, "all records came back");
        });
}

class ArrayType : public ioPacketType {
public:
    ArrayType() : ioPacketType("array") {}

    void read(ioClientReadContext& context) override {
        values.resize(size_t(context.readInt()));
        context.readDoubleArray(values.data(), int(values.size()));
    }

    std::vector<double> values;
};

void writeArray(State& s, size_t n) {
    const std::vector<double> values = bench::doubles(n);
    for (auto _ : s)
        bench::writeFile<ArrayType>(scratch.path, ioWriteBinary,
                                    [&](ioWriteContext& context, const ioPacketType* type) {
                                        context.startPacket(type, nullptr);
                                        context.writeInt(int(n));
                                        context.writeDoubleArray(values.data(), int(n));
                                        context.endPacket();
                                    });
}

void readArray(State& s, size_t n) {
    for (auto _ : s)
        bench::readFile<ArrayType>(scratch.path, [n](const ArrayType& type) {
            bench::require(type.values.size() == n, "the array came back");
        });
}

/// One directory, to which each size adds what it lacks. False if the file system has no room: one
/// in memory has as many names as half of the machine's pages unless it is mounted with more.
bool growDirectory(const std::string& path, size_t n) {
    static size_t count = 0;
    std::filesystem::create_directory(path);
    for (; count < n; ++count) {
        const std::string name = path + "/texture-" + std::to_string(count) + ".exr";
        const int file = open(name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        if (file < 0)
            return false;
        close(file);
    }
    return true;
}

void readDirectory(State& s, size_t n) {
    const std::string path = bench::folder().path("growth");
    if (!growDirectory(path, n)) {
        s.SkipWithError("the file system has no room for so many names");
        return;
    }
    for (auto _ : s) {
        size_t count = 0;
        for (zeOS::DirectoryIterator it(zeString::IString(path.c_str())); it.valid(); it.next())
            ++count;
        bench::require(count == n + 1, "the directory and each name");
    }
}

struct Line {
    const char* name; ///< <panel>_<line>
    void (*run)(State&, size_t);
};

// Each reading line finds the file that the writing line above it left.
constexpr Line lines[] = {
    {"references_insert", insertReferences},
    {"references_find", findReferences},
    {"references_resolve", resolveReferences},
    {"tree_insert", insertIntoTree},
    {"tree_find", findInTree},
    {"packets_write", writePackets},
    {"packets_read", readPackets},
    {"arrays_write", writeArray},
    {"arrays_read", readArray},
    {"directory_read", readDirectory},
};

constexpr size_t sizes[] = {1000, 3000, 10000, 30000, 100000, 300000, 1000000, 2000000, 5000000};

const bool registered = [] {
    for (size_t n : sizes)
        for (const Line& line : lines)
            bench::reg(std::string(line.name) + "/ours/" + std::to_string(n), [&line, n](State& s) {
                line.run(s, n);
                bench::items(s, n);
            })->MinTime(0.02);
    return true;
}();

} // namespace
