// SPDX-License-Identifier: MIT

/// @file
/// The files that the benchmarks of packages put into one and take out again: fileCount of them, of
/// 1 to 64 KiB, as small packets lie in files.

#pragma once

#include "Support/Corpus.h"
#include "Support/FilesWorkload.h"
#include "Support/Process.h"

namespace bench {

constexpr size_t fileCount = 1000;

inline std::string readFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY);
    require(file >= 0, path.c_str());
    std::string bytes(size_t(lseek(file, 0, SEEK_END)), '\0');
    require(pread(file, bytes.data(), bytes.size(), 0) == ssize_t(bytes.size()), path.c_str());
    close(file);
    return bytes;
}

/// Written with as few calls as there can be.
inline void spillFile(const std::string& path, const void* data, size_t size) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    require(write(file, data, size) == ssize_t(size), path.c_str());
    close(file);
}

struct PackageFiles {
    PackageFiles() : source(folder().path("source")), target(folder().path("target")) {
        std::filesystem::create_directory(source);
        const std::string& bytes = corpus("records", 1 << 20);
        Rng random(90);
        for (size_t i = 0; i < fileCount; ++i) {
            names.push_back("file" + std::to_string(i) + ".dat");
            const size_t size = 1024 + random.below(63 * 1024);
            spillFile(path(i), &bytes[random.below(uint32_t(bytes.size() - size))], size);
            total += size;
        }
    }

    std::string path(size_t i) const { return source + '/' + names[i]; }
    std::string targetPath(size_t i) const { return target + '/' + names[i]; }

    /// An empty folder at `target`.
    void clearTarget() const {
        std::filesystem::remove_all(target);
        std::filesystem::create_directory(target);
    }

    /// That what lies at `target` is what lies at `source`.
    void verifyTarget() const {
        for (size_t i = 0; i < fileCount; ++i)
            require(readFile(path(i)) == readFile(targetPath(i)), names[i].c_str());
    }

    const std::string source;
    const std::string target;
    std::vector<std::string> names;
    size_t total = 0; ///< Of their bytes.
};

inline const PackageFiles& packageFiles() {
    static const PackageFiles files;
    return files;
}

/// Where the package lies, whatever its format.
inline std::string packagePath() {
    return folder().path("package");
}

/// Registers add/NAME, which makes the package, and extract/NAME, which makes the files again.
template<class Add, class Extract>
void registerPackage(const std::string& name, Add add, Extract extract) {
    reg("add/" + name, [=](State& s) {
        packageFiles();
        for (auto _ : s) {
            s.PauseTiming();
            unlink(packagePath().c_str());
            s.ResumeTiming();
            add();
        }
        bytes(s, packageFiles().total);
    });
    reg("extract/" + name, [=](State& s) {
        unlink(packagePath().c_str());
        add();
        packageFiles().clearTarget();
        extract();
        packageFiles().verifyTarget();
        for (auto _ : s)
            extract();
        bytes(s, packageFiles().total);
    });
}

/// Registers process_add/NAME and process_extract/NAME: whole programs, by the clock, from folder
/// to package and from package to an empty folder. "PACKAGE", "SOURCE" and "TARGET" among the words
/// stand for the paths.
inline void registerPackers(const std::string& name, std::vector<const char*> add,
                            std::vector<const char*> extract) {
    static const std::string package = packagePath() + ".packed";
    const auto run = [](std::vector<const char*> words) {
        for (const char*& word : words)
            word = word == std::string("PACKAGE")  ? package.c_str()
                   : word == std::string("SOURCE") ? packageFiles().source.c_str()
                   : word == std::string("TARGET") ? packageFiles().target.c_str()
                                                   : word;
        return runProcess(words, "/dev/null", "/dev/null", Clock::wall);
    };
    reg("process_add/" + name, [=](State& s) {
        packageFiles();
        for (auto _ : s) {
            unlink(package.c_str());
            s.SetIterationTime(run(add));
        }
        bytes(s, packageFiles().total);
    })->UseManualTime();
    reg("process_extract/" + name, [=](State& s) {
        packageFiles().clearTarget();
        unlink(package.c_str());
        run(add);
        run(extract);
        packageFiles().verifyTarget();
        for (auto _ : s) {
            packageFiles().clearTarget();
            s.SetIterationTime(run(extract));
        }
        bytes(s, packageFiles().total);
    })->UseManualTime();
}

} // namespace bench
