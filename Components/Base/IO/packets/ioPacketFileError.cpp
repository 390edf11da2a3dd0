// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileError.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "Base/Strings/zeStringPrintf.h"

namespace {

void (*s_errorHook)(char*) = nullptr;
void (*s_abortHook)() = nullptr;

} // namespace

void ioPacketFileErrorInit(void (*hook)(char* text)) {
    s_errorHook = hook;
}

void ioPacketFileError(const char* format, ...) {
    char text[1024];
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    std::vsnprintf(text, sizeof text, format, arguments.list);
    if (s_errorHook)
        s_errorHook(text);
    else
        std::fputs(text, stderr);
}

void ioPacketFileAbortInit(void (*hook)()) {
    s_abortHook = hook;
}

void ioPacketFileAbort() {
    if (s_abortHook)
        s_abortHook();
    std::abort();
}
