// SPDX-License-Identifier: MIT

#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace scenefile {

Progress::Progress(const char* what, std::int64_t total)
    : what_(what),
      total_(total),
      start_(std::chrono::steady_clock::now()),
      active_(total > 0 && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (shown_)
        std::fputs("\r\033[K", stderr);
}

void Progress::show(std::int64_t done) {
    next_ = done + total_ / 100;
    if (std::chrono::steady_clock::now() - start_ < std::chrono::milliseconds(500))
        return;
    shown_ = true;
    const double percent =
        100.0 * static_cast<double>(std::min(done, total_)) / static_cast<double>(total_);
    std::fprintf(stderr, "\r%s %3.0f %%", what_, percent);
    std::fflush(stderr);
}

} // namespace scenefile
