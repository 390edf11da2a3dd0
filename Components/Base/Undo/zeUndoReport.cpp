// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoReport.h"

#include <cassert>
#include <cstdarg>
#include <cstdio>

#include "Base/Undo/zeUndoReportImpl.h"

namespace {

zeUndoReportFile reportFile;

/// Writes a text that is a format, whose conversions, if it has any, find zeros of either kind:
/// more of them than a name is likely to have.
void printAsFormat(std::FILE* file, const char* format) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-extra-args"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::fprintf(file, format, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, 0L, //
                 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
#pragma GCC diagnostic pop
}

} // namespace

std::FILE* zeUndoReportFile::s_file = nullptr;

void zeUndoReportFile::init(const char* path) {
    close();
    s_file = std::fopen(path, "ae"); // not for programs that this one starts
    assert(s_file && "the path of the undo trace must be writable");
    write("\n------------------------------\n\n");
}

void zeUndoReportFile::write(const char* text) {
    printAsFormat(s_file, text);
    std::fflush(s_file);
}

void zeUndoReportFile::close() {
    if (s_file)
        std::fclose(s_file);
    s_file = nullptr;
}

void zeUndoReportInit(const char* path) {
    reportFile.init(path);
}

void zeUndoReport(const char* format, ...) {
    if (!zeUndoReportFile::isOpen())
        return;
    char text[1024];
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    ZL_vsnprintf(text, sizeof text, format, arguments.list);
    text[sizeof text - 1] = '\0';
    reportFile.write(text);
}
