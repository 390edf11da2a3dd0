// SPDX-License-Identifier: MIT

/// @file
/// What a small command does, for ours and for the peers.

#pragma once

#include <malloc.h>

#include "Support/Workload.h"

namespace bench {

/// The change of one command: an exchange, so that doing and undoing cost the same.
struct Cell {
    bool exchange() {
        std::swap(*target, other);
        return true;
    }
    int* target;
    int other;
};

constexpr const char* CommandName = "assign a cell";

/// Reports what a million commands, which `make` returns in a history, cost in memory.
template<class Make>
void memory(State& s, Make make) {
    for (auto _ : s) {
        const auto inUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
        const std::size_t before = inUse();
        const auto history = make();
        s.counters["bytes_per_command"] = double(inUse() - before) / 1e6;
        keep(&history);
    }
}

} // namespace bench
