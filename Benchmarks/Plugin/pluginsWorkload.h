// SPDX-License-Identifier: MIT

/// @file
/// Names to look up, and a folder of declarations, which a process can search once: each round has
/// a child process of its own, which takes the time.

#pragma once

#include <sys/wait.h>

#include <chrono>

#include "Support/FilesWorkload.h"

namespace bench {

inline constexpr size_t declarationCount = 500;

inline std::vector<std::string> serviceNames(size_t count) {
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i)
        names.push_back("exporter for files of kind " + std::to_string(i));
    return names;
}

/// A program's folder: "app", and beside it the declarations in "plug-ins".
inline const std::string& program() {
    static const std::string name = [] {
        const std::string path = folder().path("program");
        std::filesystem::create_directories(path + "/plug-ins");
        for (size_t i = 0; i < declarationCount; ++i)
            std::filesystem::copy_file(DECLARATION,
                                       path + "/plug-ins/serviceDecl_" + std::to_string(i) + ".so");
        std::ofstream(path + "/app");
        return path;
    }();
    return name;
}

/// Times `load`, which loads all declarations and returns whether it did.
template<class Load>
void regScan(const std::string& peer, Load load) {
    reg("scan/" + peer, [load](State& s) {
        program();
        for (auto _ : s) {
            int ends[2];
            require(pipe2(ends, O_CLOEXEC) == 0, "a pipe");
            const pid_t process = fork();
            if (process == 0) {
                const auto before = std::chrono::steady_clock::now();
                require(load(), "all declarations");
                const std::chrono::duration<double> took =
                    std::chrono::steady_clock::now() - before;
                const double seconds = took.count();
                _exit(write(ends[1], &seconds, sizeof seconds) == sizeof seconds ? 0 : 1);
            }
            close(ends[1]);
            double seconds = 0;
            require(read(ends[0], &seconds, sizeof seconds) == sizeof seconds, "the child's time");
            close(ends[0]);
            waitpid(process, nullptr, 0);
            s.SetIterationTime(seconds);
        }
        items(s, declarationCount);
    })->UseManualTime();
}

} // namespace bench
