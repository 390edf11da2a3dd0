// SPDX-License-Identifier: MIT

/// @file
/// The sizes of the benchmark of references, and how often each is run.

#pragma once

#include <initializer_list>
#include <string>

#include "Support/Workload.h"

namespace bench {

/// In memory's reach, at its limit and far beyond. What five million give stands beside a million:
/// they are run once.
inline constexpr std::initializer_list<size_t> referenceCounts = {200000, 1000000, 5000000};
inline constexpr size_t countRunOnce = 5000000;

/// Registers a benchmark of `n` references, each run of which takes long enough to be timed alone.
template<class F>
void regReferences(const std::string& workload, const std::string& peer, size_t n, F run) {
    auto* benchmark = reg(workload + '/' + peer + '/' + std::to_string(n), run)->Iterations(1);
    if (n == countRunOnce)
        benchmark->Repetitions(1);
}

} // namespace bench
