// SPDX-License-Identifier: MIT

// Sorts and sums a data set of eight times the memory that may be mapped at a time. The numbers lie
// in moveable memory, which has an address only between map() and unmap(): the program sorts them
// in runs, and then merges the runs with one window of each mapped.
//
//     $ outofcore | cut -d , -f 1,2
//     data 32 MiB, mapped at most 4 MiB

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <queue>
#include <random>
#include <utility>
#include <vector>

#include "Base/OS/zeOSMoveableMemory.h"
#include "Base/Strings/zeStringIString.h"

namespace {

using Number = std::uint64_t;

constexpr std::size_t budget = 4 << 20; // bytes mapped at any time
constexpr std::size_t runBytes = budget / 2;
constexpr std::size_t runCount = 8 * budget / runBytes;
constexpr std::size_t windowBytes = 256 << 10;
constexpr std::size_t windowNumbers = windowBytes / sizeof(Number);

/// A sorted run: regions of one window each.
struct Run {
    std::vector<ze::Reference<zeOS::MoveableMapping>> windows;
    std::size_t next = 0; // number to merge next, in the whole run
};

/// The highest values so far: bytes of the data mapped, and bytes of the process resident.
struct Peak {
    std::size_t mapped = 0;
    std::size_t resident = 0;

    void update(zeOS::MoveableMemory& memory) {
        mapped = std::max(mapped, memory.getStats().mappedBytes);
        std::size_t pages = 0, residentPages = 0;
        if (std::FILE* statm = std::fopen("/proc/self/statm", "re")) {
            if (std::fscanf(statm, "%zu %zu", &pages, &residentPages) == 2)
                resident = std::max(resident, residentPages * 4096);
            std::fclose(statm);
        }
    }
};

/// A run of random numbers, sorted in `numbers`; adds them to `sum`. Empty if memory ran out.
Run makeRun(zeOS::MoveableMemory& memory, std::mt19937_64& random, std::vector<Number>& numbers,
            Number& sum) {
    for (Number& number : numbers)
        sum += number = random();
    std::sort(numbers.begin(), numbers.end());
    Run run;
    for (std::size_t at = 0; at < numbers.size(); at += windowNumbers) {
        run.windows.push_back(memory.allocate(windowBytes));
        if (!run.windows.back())
            return {};
        void* const window = run.windows.back()->map();
        if (!window)
            return {};
        std::memcpy(window, numbers.data() + at, windowBytes);
        run.windows.back()->unmap();
    }
    return run;
}

/// Reads all runs in order, with one window of each mapped at a time. Returns whether the numbers
/// were in order and every window could be mapped.
bool merge(std::vector<Run>& runs, Number& sum, Peak& peak, zeOS::MoveableMemory& memory) {
    using Head = std::pair<Number, Run*>;
    std::priority_queue<Head, std::vector<Head>, std::greater<>> heads;
    bool isGood = true;
    const auto advance = [&](Run& run) {
        const std::size_t window = run.next / windowNumbers;
        const std::size_t place = run.next++ % windowNumbers;
        if (place == 0 && window > 0) {
            run.windows[window - 1]->unmap();
            run.windows[window - 1] = nullptr; // used up: its space is free
        }
        if (window < run.windows.size()) {
            const void* const bytes = run.windows[window]->map();
            isGood = isGood && bytes;
            if (bytes)
                heads.emplace(static_cast<const Number*>(bytes)[place], &run);
        }
        if (place == 0)
            peak.update(memory);
    };
    for (Run& run : runs)
        advance(run);
    Number last = 0;
    while (!heads.empty()) {
        const auto [number, run] = heads.top();
        heads.pop();
        isGood = isGood && last <= number;
        last = number;
        sum += number;
        advance(*run);
    }
    return isGood;
}

} // namespace

int main() {
    zeOS::MoveableMemory memory;
    if (!memory.initializeFiles(L".", L"outofcore")) {
        std::fprintf(stderr, "outofcore: cannot make files here\n");
        return 1;
    }
    std::mt19937_64 random(1);
    Number before = 0, after = 0;
    std::vector<Number> numbers(runBytes / sizeof(Number));
    Peak peak;
    peak.update(memory);
    const std::size_t residentBefore = peak.resident;
    std::vector<Run> runs;
    while (runs.size() < runCount) {
        runs.push_back(makeRun(memory, random, numbers, before));
        if (runs.back().windows.empty()) {
            std::fprintf(stderr, "outofcore: no room for run %zu\n", runs.size());
            return 1;
        }
        peak.update(memory);
    }
    const bool isGood = merge(runs, after, peak, memory);
    std::printf("data %zu MiB, mapped at most %zu MiB, resident at most %zu MiB\n",
                runCount * runBytes >> 20, peak.mapped >> 20, peak.resident >> 20);
    const bool isBounded = peak.mapped <= budget && peak.resident - residentBefore <= 2 * budget;
    return isGood && before == after && isBounded ? 0 : 1;
}
