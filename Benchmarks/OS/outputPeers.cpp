// SPDX-License-Identifier: MIT

// What one would write by hand for the work of output.cpp.

#include <cstdarg>

#include "OS/outputWorkload.h"

namespace {

/// What a function with a format costs that tests two integers and returns.
struct Hidden {
    __attribute__((noinline)) void operator()(int level, const char* format, ...) const {
        if (!isOpen || level > shown)
            return;
        va_list arguments;
        va_start(arguments, format);
        std::vprintf(format, arguments);
        va_end(arguments);
    }
    int isOpen = 1;
    int shown = 1;
};

void hide(State& s) {
    const Hidden hidden;
    bench::keep(&hidden);
    output::print(s, [&](auto... arguments) { hidden(2, output::format, arguments...); });
}

void write(State& s, const char* format) {
    std::FILE* const device = std::fopen("/dev/null", "we");
    bench::require(device, "the device is open");
    output::print(s, [&](auto... arguments) {
        std::fprintf(device, format, arguments...);
        std::fflush(device);
    });
    std::fclose(device);
}

const bool registered = [] {
    bench::reg("off/two_integers", hide);
    bench::reg("on/fprintf", [](State& s) { write(s, output::format); });
    bench::reg("on/fprintf/indented", [](State& s) { write(s, "        %s %d of %d (%.1f)\n"); });
    return true;
}();

} // namespace
