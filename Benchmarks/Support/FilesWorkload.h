// SPDX-License-Identifier: MIT

/// @file
/// What the benchmarks of files and their peers work on. TMPDIR points to a memory file system in
/// run.sh; elsewhere the disk is measured with them.

#pragma once

#include <filesystem>
#include <fstream>

#include "Support/Workload.h"

namespace bench {

/// A directory of its own, which goes with all that it holds when the program ends.
struct ScratchFolder {
    ScratchFolder()
        : root(std::filesystem::temp_directory_path() /
               ("zebase-bench." + std::to_string(getpid()) + ".files")) {
        std::filesystem::create_directory(root);
    }
    ~ScratchFolder() { std::filesystem::remove_all(root); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path(const std::string& name) const { return root + "/" + name; }

    const std::string root;
};

inline const ScratchFolder& folder() {
    static const ScratchFolder folder;
    return folder;
}

/// In bytes; two files of this size must fit. COPY_MIB (256) sets it.
inline size_t copySize() {
    const char* mib = std::getenv("COPY_MIB");
    return (mib ? std::strtoul(mib, nullptr, 10) : 256) << 20;
}

/// The file that is copied.
inline const std::string& largeFile() {
    static const std::string name = [] {
        std::string path = folder().path("large");
        std::ofstream file(path, std::ios::binary);
        const std::string block = text(1 << 20);
        for (size_t size = 0; size < copySize(); size += block.size())
            file << block;
        require(file.flush().good(), "there is room for the file that is copied");
        return path;
    }();
    return name;
}

constexpr size_t entryCount = 10000;

/// A directory of entryCount files.
inline const std::string& fullDirectory() {
    static const std::string name = [] {
        std::string path = folder().path("full");
        std::filesystem::create_directory(path);
        for (size_t i = 0; i < entryCount; ++i)
            std::ofstream(path + "/texture-" + std::to_string(i * 7919 % 100000) + ".exr");
        return path;
    }();
    return name;
}

/// What a save writes.
inline const std::string& document() {
    static const std::string content = text(4096);
    return content;
}

} // namespace bench
