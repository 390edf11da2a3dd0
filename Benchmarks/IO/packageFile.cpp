// SPDX-License-Identifier: MIT

// Packages of the 1000 files of PackageWorkload.h, 32 MB in all, and of many small entries.
// add, extract: one new package, stored as they are, and back to files.
// process_add, process_extract: whole programs, from folder to package and back, by the clock; /z:
// compressed.
// read_one: a package of 1000 is opened, and one entry read.
// open, look_up: a package of n entries of 16 bytes; the time of each entry, and of each name.

#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioPackageFile.h"
#include "Support/PackageWorkload.h"

namespace {

using zeString::IString;

IString wide(const std::string& text) {
    return IString(text.c_str(), zeString::EncodingUTF8);
}

void require(const zeUtil::Error& error) {
    bench::require(error.code() == 0, error.message());
}

void add() {
    const bench::PackageFiles& files = bench::packageFiles();
    ioPackageFile package;
    require(package.open(wide(bench::packagePath())));
    for (size_t i = 0; i < bench::fileCount; ++i)
        require(package.addEntry(wide(files.path(i)), wide(files.names[i]), false));
    require(package.update());
}

void extract() {
    ioPackageFile package;
    require(package.open(wide(bench::packagePath())));
    require(package.expand(wide(bench::packageFiles().target)));
}

void readOne(State& s) {
    unlink(bench::packagePath().c_str());
    add();
    const std::string expected = bench::readFile(bench::packageFiles().path(700));
    std::string content;
    for (auto _ : s) {
        ioPackageFile package;
        require(package.open(wide(bench::packagePath())));
        const ioPackageFileEntry* const entry = package.getEntry(L"file700.dat");
        content.resize(size_t(entry->getSize()));
        ioBufferedStreamInput stream;
        stream.openPackageFileEntry(entry);
        stream.readData(content.data(), int(content.size()));
        stream.close();
    }
    bench::require(content == expected, "the entry came back");
}

std::string smallName(size_t i) {
    return "folder" + std::to_string(i % 97) + "/entry" + std::to_string(i * 7919 % 1000003);
}

/// Made once for each size: with n entries in it, under names in no order.
const std::string& smallPackage(size_t n) {
    static std::vector<std::pair<size_t, std::string>> made;
    for (const auto& [size, path] : made)
        if (size == n)
            return path;
    made.reserve(8); // references stay valid
    const std::string source = bench::folder().path("small");
    bench::spillFile(source, "sixteen bytes...", 16);
    made.emplace_back(n, bench::folder().path("small." + std::to_string(n)));
    ioPackageFile package;
    require(package.open(wide(made.back().second)));
    for (size_t i = 0; i < n; ++i)
        require(package.addEntry(wide(source), wide(smallName(i)), false));
    require(package.update());
    bench::require(size_t(package.size()) == n, "all entries are there");
    return made.back().second;
}

void registerSizes(size_t n) {
    const std::string size = std::to_string(n);
    bench::reg("open/ours/" + size, [n](State& s) {
        const IString path = wide(smallPackage(n));
        for (auto _ : s) {
            ioPackageFile package;
            require(package.open(path));
            bench::keep(package.size());
        }
        bench::items(s, n);
    });
    bench::reg("look_up/ours/" + size, [n](State& s) {
        ioPackageFile package;
        require(package.open(wide(smallPackage(n))));
        std::vector<IString> names;
        for (size_t i = 0; i < 1000; ++i)
            names.push_back(wide(smallName(i * 7907 % n)));
        for (auto _ : s)
            for (const IString& name : names)
                bench::require(package.getEntry(name) != nullptr, "it is there");
        bench::items(s, names.size());
    });
}

const bool registered = [] {
    bench::registerPackage("ours", add, extract);
    bench::registerPackers("ours", {ZEPACKAGE, "create", "PACKAGE", ".", "-C", "SOURCE"},
                           {ZEPACKAGE, "extract", "PACKAGE", "-C", "TARGET"});
    bench::registerPackers("ours/z", {ZEPACKAGE, "create", "-c", "PACKAGE", ".", "-C", "SOURCE"},
                           {ZEPACKAGE, "extract", "PACKAGE", "-C", "TARGET"});
    bench::reg("read_one/ours", readOne);
    for (const size_t n : {1000, 10000, 100000})
        registerSizes(n);
    return true;
}();

} // namespace
