// SPDX-License-Identifier: MIT

#include "Shared/terminal.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace app {

std::size_t printableSize(std::string_view text) {
    const auto byte = [&](std::size_t i) -> unsigned int {
        return static_cast<unsigned char>(text[i]);
    };
    if (byte(0) < 0x80)
        return byte(0) >= 0x20 && byte(0) != 0x7F ? 1 : 0;
    const std::size_t size = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || size > text.size())
        return 0;
    unsigned int code = byte(0) & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (byte(i) & 0x3F);
    }
    constexpr unsigned int least[] = {0, 0, 0xA0, 0x800, 0x10000}; // from 0x80 to 0x9F are controls
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code >= least[size] && code <= 0x10FFFF && !isSurrogate ? size : 0;
}

std::string visible(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t size = printableSize(text);
        if (size > 0) {
            result += text.substr(0, size);
        } else {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(text[0]));
            result += escape;
        }
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return result;
}

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

} // namespace app
