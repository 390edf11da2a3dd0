// SPDX-License-Identifier: MIT

#pragma once

#include "Support/Workload.h"

namespace output {

inline constexpr const char* format = "%s %d of %d (%.1f)\n";

/// off: a message that its level hides. on: one that is shown, written out at once to a device that
/// takes everything.
template<class Print>
void print(State& s, Print print) {
    int i = 0;
    for (auto _ : s) {
        print("packet", i, 1000, i * 0.5);
        i = (i + 1) % 1000;
    }
    bench::items(s, 1);
}

} // namespace output
