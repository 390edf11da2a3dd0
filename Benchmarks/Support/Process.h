// SPDX-License-Identifier: MIT

/// @file
/// Whole programs as benchmarks.

#pragma once

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>

#include "Support/Workload.h"

namespace bench {

/// The time of a process: on the processor, user and system, or until it has ended, which is less
/// where it starts others that run beside it.
enum class Clock { processor, wall };

/// Runs a program from file to file, and returns its time in seconds, from its start on.
inline double runProcess(std::vector<const char*> arguments, const std::string& in,
                         const std::string& out, Clock clock = Clock::processor) {
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    pid_t process;
    const auto start = std::chrono::steady_clock::now();
    require(posix_spawnp(&process, arguments[0], &files, nullptr,
                         const_cast<char**>(arguments.data()), environ) == 0,
            arguments[0]);
    posix_spawn_file_actions_destroy(&files);
    int status = 0;
    rusage usage;
    require(wait4(process, &status, 0, &usage) == process && status == 0, arguments[0]);
    if (clock == Clock::wall)
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const auto seconds = [](timeval t) { return double(t.tv_sec) + double(t.tv_usec) * 1e-6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    FILE* const file = fopen(path.c_str(), "wb");
    require(file && fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size(), path.c_str());
    fclose(file);
}

} // namespace bench
