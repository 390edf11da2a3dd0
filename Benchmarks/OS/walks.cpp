// SPDX-License-Identifier: MIT

// walk: every name of a directory of 10,000 files (flat), or of a tree of 100 directories with 100
// files each (tree), with whether it is a directory.

#include "Base/OS/zeOSDirectoryIterator.h"
#include "Support/WalksWorkload.h"

namespace {

void walk(State& s, const std::string& root) {
    const zeString::IString name(root.c_str());
    for (auto _ : s) {
        bench::WalkResult result;
        for (zeOS::DirectoryIterator it(name); it.valid(); it.next())
            result.add(it.getName(), it.onDirectory());
        result.check(root);
    }
    bench::items(s, bench::entryCount);
}

const bool registered = [] {
    bench::reg("walk/ours/flat", [](State& s) { walk(s, bench::fullDirectory()); });
    bench::reg("walk/ours/tree", [](State& s) { walk(s, bench::tree()); });
    return true;
}();

} // namespace
