// SPDX-License-Identifier: MIT

/// @file
/// A folder of a test's own, which goes with all that it holds.

#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class TempFolder {
public:
    /// Where folders lie in memory, if the system has such a place: for tests with many files, or
    /// that would wait long for a disk.
    static std::filesystem::path memory() {
        const char* place = "/dev/shm";
        return std::filesystem::is_directory(place) ? place
                                                    : std::filesystem::temp_directory_path();
    }

    explicit TempFolder(
        const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string name = parent / "zeBase-XXXXXX";
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make a temporary folder");
        path_ = name;
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() { std::filesystem::remove_all(path_); }

    /// The full name of a file in the folder; the folder's own if `name` is empty.
    std::string path(const std::string& name = {}) const {
        return (name.empty() ? path_ : path_ / name).string();
    }

    /// Makes a file and returns its full name.
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    std::string read(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path path_;
};
