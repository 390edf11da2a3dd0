// SPDX-License-Identifier: MIT

// The walk of walks.cpp by others: the C library's, with each name decoded into the same string,
// and the standard library's, which decodes nothing.

#include <fts.h>
#include <sys/stat.h>

#include "Support/WalksWorkload.h"

namespace {

void walkByFts(State& s, std::string root) {
    char* roots[] = {root.data(), nullptr};
    for (auto _ : s) {
        bench::WalkResult result;
        FTS* walk = fts_open(roots, FTS_LOGICAL | FTS_NOCHDIR, nullptr);
        while (const FTSENT* entry = fts_read(walk))
            if (entry->fts_info != FTS_DP)
                result.add(zeString::IString(entry->fts_path, zeString::EncodingUTF8),
                           entry->fts_info == FTS_D);
        fts_close(walk);
        result.check(root);
    }
    bench::items(s, bench::entryCount);
}

void walkByStandard(State& s, const std::string& root) {
    namespace fs = std::filesystem;
    for (auto _ : s) {
        size_t files = 0;
        for (const auto& entry : fs::recursive_directory_iterator(
                 root, fs::directory_options::follow_directory_symlink))
            files += !entry.is_directory();
        bench::require(files == bench::entryCount, "each file once");
    }
    bench::items(s, bench::entryCount);
}

const bool registered = [] {
    bench::reg("walk/fts/flat", [](State& s) { walkByFts(s, bench::fullDirectory()); });
    bench::reg("walk/fts/tree", [](State& s) { walkByFts(s, bench::tree()); });
    bench::reg("walk/context_std/flat",
               [](State& s) { walkByStandard(s, bench::fullDirectory()); });
    bench::reg("walk/context_std/tree", [](State& s) { walkByStandard(s, bench::tree()); });
    return true;
}();

} // namespace
