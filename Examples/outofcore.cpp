// SPDX-License-Identifier: MIT

// Sorts and sums a data set of eight times the memory that may be mapped at a time.
//
// The numbers lie in moveable memory: a region has an address only between map() and unmap(). The
// program sorts each region by itself and then merges all of them, with a window of each mapped, so
// that neither step ever has more than the budget in its address space. What is mapped is what can
// be touched; the rest is in files without a name, which the system writes out as it likes.

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

/// A region that is mapped as long as this lives.
class Mapped {
public:
    explicit Mapped(zeOS::MoveableMapping& mapping) : mapping_(mapping), numbers_(mapping.map()) {}
    Mapped(const Mapped&) = delete;
    Mapped& operator=(const Mapped&) = delete;
    ~Mapped() { mapping_.unmap(); }

    Number* begin() const { return static_cast<Number*>(numbers_); }

private:
    zeOS::MoveableMapping& mapping_;
    void* numbers_;
};

/// A sorted run: regions of one window each.
struct Run {
    std::vector<ze::Reference<zeOS::MoveableMapping>> windows;
    std::size_t next = 0; // number to merge next, in the whole run
};

/// What the process has mapped of its data, and what is resident of its whole address space.
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

/// Fills a run with random numbers and sorts it; adds them to `sum`. Empty if memory ran out.
Run makeRun(zeOS::MoveableMemory& memory, std::mt19937_64& random, Number& sum) {
    std::vector<Number> numbers(runBytes / sizeof(Number));
    for (Number& number : numbers)
        sum += number = random();
    std::sort(numbers.begin(), numbers.end());
    Run run;
    for (std::size_t at = 0; at < numbers.size(); at += windowNumbers) {
        run.windows.push_back(memory.allocate(windowBytes));
        if (!run.windows.back())
            return {};
        const Mapped window(*run.windows.back());
        if (!window.begin())
            return {};
        std::memcpy(window.begin(), numbers.data() + at, windowBytes);
    }
    return run;
}

/// Reads all runs in order, a window of each mapped at a time. Returns whether they were in order.
bool merge(std::vector<Run>& runs, Number& sum, Peak& peak, zeOS::MoveableMemory& memory) {
    using Head = std::pair<Number, Run*>;
    std::priority_queue<Head, std::vector<Head>, std::greater<>> heads;
    const auto advance = [&](Run& run) {
        const std::size_t window = run.next / windowNumbers;
        const std::size_t place = run.next++ % windowNumbers;
        if (place == 0 && window > 0) {
            run.windows[window - 1]->unmap();
            run.windows[window - 1] = nullptr; // used up: its space is free
        }
        if (window < run.windows.size())
            heads.emplace(static_cast<Number*>(run.windows[window]->map())[place], &run);
        if (place == 0)
            peak.update(memory);
    };
    for (Run& run : runs)
        advance(run);
    Number last = 0;
    bool inOrder = true;
    while (!heads.empty()) {
        const auto [number, run] = heads.top();
        heads.pop();
        inOrder = inOrder && last <= number;
        last = number;
        sum += number;
        advance(*run);
    }
    return inOrder;
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
    Peak peak;
    std::vector<Run> runs;
    for (std::size_t i = 0; i < runCount; ++i) {
        runs.push_back(makeRun(memory, random, before));
        if (runs.back().windows.empty()) {
            std::fprintf(stderr, "outofcore: no room for run %zu\n", i);
            return 1;
        }
        peak.update(memory);
    }
    const bool inOrder = merge(runs, after, peak, memory);
    std::printf("data %zu MiB, mapped at most %zu MiB, resident at most %zu MiB\n",
                runCount * runBytes >> 20, peak.mapped >> 20, peak.resident >> 20);
    return inOrder && before == after && peak.mapped <= budget ? 0 : 1;
}
