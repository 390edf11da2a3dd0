// SPDX-License-Identifier: MIT

// load: a catalog of so many strings, of 100 bytes a line, into the empty table of the application.
// The time of a string may grow with the depth of the table alone. lookUp: all of them, in an order
// of their own.

#include <fstream>

#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringTableManager.h"
#include "Base/Strings/zeStringTableStringTable.h"
#include "Support/Workload.h"

namespace {

using zeString::IString;
using zeStringTable::appStringTable;

std::string key(size_t i) {
    return "set" + std::to_string(i / 50) + ".id" + std::to_string(i % 50);
}

/// A file of `count` entries, and its name.
std::string catalog(size_t count) {
    static const bench::ScratchFile file("catalog");
    std::ofstream out(file.path);
    const std::string words = bench::text(100 * count);
    for (size_t i = 0; i < count; ++i) {
        std::string value = words.substr(100 * i, 80 - i % 20);
        std::replace(value.begin(), value.end(), '\n', ' ');
        out << key(i) << " = \"" << value << "\\n\"\n";
    }
    return file.path;
}

void load(State& s) {
    const auto count = static_cast<size_t>(s.range());
    const zeOS::Filename name(IString(catalog(count).c_str()));
    for (auto _ : s) {
        appStringTable().clear();
        const zeUtil::Error error = zeStringTable::Manager::loadCatalog(name);
        bench::require(error.code() == 0 && appStringTable().size() == count, "each string once");
    }
    bench::items(s, count);
}

void lookUp(State& s) {
    const auto count = static_cast<size_t>(s.range());
    std::vector<zeStringTable::Key> keys;
    for (size_t i = 0; i < count; ++i) {
        keys.emplace_back(key(i).c_str());
        appStringTable().assign(keys.back(), L"value");
    }
    bench::shuffle(keys, 4);
    const IString fallback;
    for (auto _ : s)
        for (const zeStringTable::Key& each : keys)
            bench::require(appStringTable().getString(each, fallback).length() == 5, "the string");
    bench::items(s, count);
}

const bool registered = [] {
    bench::reg("load/ours", load)->Arg(1000)->Arg(10000)->Arg(100000);
    bench::reg("lookUp/ours", lookUp)->Arg(10000);
    return true;
}();

} // namespace
