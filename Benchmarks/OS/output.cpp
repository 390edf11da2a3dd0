// SPDX-License-Identifier: MIT

// off: a message with four arguments that its level hides; the limit is a function with the same
// arguments that tests two integers. on: the same message, written out at once, and with an indent.

#include "Base/OS/zeOSAppOutput.h"

#include "OS/outputWorkload.h"

namespace {

void print(State& s, int level, int indent) {
    zeOS::AppOutputStream stream(false);
    bench::require(stream.open("/dev/null", false), "the device is open");
    stream.setLevel(1);
    stream.setIndentLevel(indent);
    bench::keep(&stream);
    output::print(s, [&](auto... arguments) { stream(level, output::format, arguments...); });
}

const bool registered = [] {
    bench::reg("off/ours", [](State& s) { print(s, 2, 0); });
    bench::reg("on/ours", [](State& s) { print(s, 1, 0); });
    bench::reg("on/ours/indented", [](State& s) { print(s, 1, 8); });
    return true;
}();

} // namespace
