// SPDX-License-Identifier: MIT

/// @file
/// Starting a program and waiting for its end, from a process of a few megabytes and from one that
/// has written to a gigabyte: `fork` copies its page tables.

#pragma once

#include <chrono>

#include "Support/Workload.h"

namespace bench {

inline constexpr const char* startedProgram = "/bin/true";

/// Times `start`, which returns whether the program ended with 0, on the clock of the wall: the
/// work is the system's.
template<class Start>
void regStart(const std::string& peer, Start start) {
    const auto measure = [start](State& s, size_t memory) {
        const std::vector<char> touched(memory, 1);
        keep(touched.data());
        require(start(), startedProgram);
        for (auto _ : s) {
            const auto before = std::chrono::steady_clock::now();
            keep(start());
            s.SetIterationTime(
                std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count());
        }
    };
    reg("start/" + peer + "/small", [measure](State& s) { measure(s, 4096); })->UseManualTime();
    reg("start/" + peer + "/GiB", [measure](State& s) {
        measure(s, size_t(1) << 30);
    })->UseManualTime();
}

} // namespace bench
