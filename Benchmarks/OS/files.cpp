// SPDX-License-Identifier: MIT

// copy: one large file in blocks of 4096 bytes (COPY_MIB mebibytes). exists: one look at a name,
// for a file that is there and one that is not. readDir: the names of a directory of 10,000 files.
// save: 4096 bytes over an existing document, protected, with all waiting for the disk.

#include <fcntl.h>
#include <unistd.h>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSProtectedWrite.h"
#include "Support/FilesWorkload.h"

namespace {

using zeOS::Filename;
using zeString::IString;

Filename filename(const std::string& path) {
    return Filename(IString(path.c_str()));
}

void copy(State& s) {
    const Filename from = filename(bench::largeFile());
    const Filename to = filename(bench::folder().path("copy"));
    for (auto _ : s)
        bench::require(zeOS::fileCopy(from, to, true).code() == 0, "the copy");
    bench::bytes(s, bench::copySize());
    bench::require(std::filesystem::file_size(to.path().asUTF8()) == bench::copySize(), "its size");
    zeOS::fileDelete(to);
}

void exists(State& s, const std::string& path, bool expected) {
    const Filename name = filename(path);
    for (auto _ : s)
        bench::require(zeOS::doesFileExist(name) == expected, "whether it exists");
    bench::items(s, 1);
}

void readDirectory(State& s) {
    zeOS::File directory(IString(bench::fullDirectory().c_str()));
    for (auto _ : s) {
        std::vector<IString> names;
        directory.readDir(names, false);
        bench::require(names.size() == bench::entryCount + 2, "all names");
    }
    bench::items(s, bench::entryCount);
}

void save(State& s) {
    const Filename name = filename(bench::folder().path("document.ze"));
    const std::string& content = bench::document();
    for (auto _ : s) {
        zeOS::ProtectedWrite save(name);
        bool good = save.init();
        const char* path = save.getTempFilename().path().asUTF8();
        const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
        good = good && write(fd, content.data(), content.size()) == ssize_t(content.size());
        good = close(fd) == 0 && good;
        bench::require(good && save.finalize(), "the save");
    }
    bench::items(s, 1);
}

const bool registered = [] {
    bench::reg("copy/ours", copy);
    const std::string& file = bench::folder().path("document.ze");
    std::ofstream(file) << bench::document();
    bench::reg("exists/ours/yes", [file](State& s) { exists(s, file, true); });
    bench::reg("exists/ours/no", [file](State& s) { exists(s, file + ".missing", false); });
    bench::reg("readDir/ours", readDirectory);
    bench::reg("save/ours", save);
    return true;
}();

} // namespace
