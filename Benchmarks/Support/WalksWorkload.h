// SPDX-License-Identifier: MIT

/// @file
/// What the benchmarks of directory walks and their peers work on.

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Support/FilesWorkload.h"

namespace bench {

/// A directory of 100 directories, with entryCount files in them.
inline const std::string& tree() {
    static const std::string name = [] {
        std::string path = folder().path("tree");
        for (size_t i = 0; i < entryCount; ++i) {
            const std::string below = path + "/shot-" + std::to_string(i / 100);
            std::filesystem::create_directories(below);
            std::ofstream(below + "/texture-" + std::to_string(i) + ".exr");
        }
        return path;
    }();
    return name;
}

/// What a walk met: the root, its files, and in the tree the directories above them.
struct WalkResult {
    void add(const zeString::IString& name, bool isDirectory) {
        ++(isDirectory ? directories : files);
        characters += name.length();
    }

    void check(const std::string& root) const {
        require(files == entryCount, "each file once");
        require(directories == (root == fullDirectory() ? 1 : 101), "each directory once");
        require(characters > entryCount * root.size(), "full names");
    }

    size_t files = 0;
    size_t directories = 0;
    size_t characters = 0;
};

} // namespace bench
