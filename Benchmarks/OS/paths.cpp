// SPDX-License-Identifier: MIT

// 1000 paths of 3 to 12 components; a third have doubled separators, a third "/../", a third are
// plain. normalise: from a wide text to a normal path. join: a directory and a name, normalised.
// split: a path from a normal text, then its directory, base name, trunk and suffix.

#include <filesystem>

#include "Base/OS/zeOSFilename.h"
#include "Support/Workload.h"

namespace {

using zeOS::Filename;
using zeString::IString;

std::vector<IString> texts() {
    std::vector<IString> result;
    for (const std::string& path : bench::paths())
        result.emplace_back(path.c_str());
    return result;
}

std::vector<IString> normalTexts() {
    std::vector<IString> result;
    for (const std::string& path : bench::paths()) {
        result.push_back(Filename(path.c_str()).path());
        bench::require(result.back().asUTF8() ==
                           std::filesystem::path(path).lexically_normal().string(),
                       "the normal form");
    }
    return result;
}

void normalise(State& s) {
    const std::vector<IString> paths = texts();
    for (auto _ : s)
        for (const IString& text : paths) {
            const Filename path(text);
            bench::keep(path);
        }
    bench::items(s, paths.size());
}

void join(State& s) {
    const std::vector<IString> paths = normalTexts();
    for (auto _ : s)
        for (const IString& path : paths)
            bench::keep(Filename::join(path, L"sub/name.dat"));
    bench::items(s, paths.size());
}

void split(State& s) {
    const std::vector<IString> paths = normalTexts();
    bench::require(Filename(paths[0]).baseSuffix() == L"txt", "the suffix");
    for (auto _ : s)
        for (const IString& text : paths) {
            const Filename path(text);
            bench::keep(path.dirname());
            bench::keep(path.basename());
            bench::keep(path.baseTrunk());
            bench::keep(path.baseSuffix());
        }
    bench::items(s, paths.size());
}

const bool registered = [] {
    bench::reg("normalise/ours", normalise);
    bench::reg("join/ours", join);
    bench::reg("split/ours", split);
    return true;
}();

} // namespace
