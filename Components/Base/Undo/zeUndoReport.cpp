// SPDX-License-Identifier: MIT

#include "Base/Undo/zeUndoReport.h"

#include <cassert>
#include <cstdarg>
#include <cstdio>

namespace {

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

/// The trace. Its file outlives it, so that reports of objects that are destroyed later at exit
/// find it closed.
class zeUndoReportFile {
public:
    zeUndoReportFile() = default;
    zeUndoReportFile(const zeUndoReportFile&) = delete;
    zeUndoReportFile& operator=(const zeUndoReportFile&) = delete;
    ~zeUndoReportFile() { close(); }

    void init(const char* path) {
        close();
        s_file = std::fopen(path, "ae"); // not for programs that this one starts
        assert(s_file && "the path of the undo trace must be writable");
        write("\n------------------------------\n\n");
    }

    bool isOpen() const { return s_file != nullptr; }

    void write(const char* text) {
        printAsFormat(s_file, text);
        std::fflush(s_file);
    }

private:
    static void close() {
        if (s_file)
            std::fclose(s_file);
        s_file = nullptr;
    }

    static inline std::FILE* s_file = nullptr;
};

zeUndoReportFile reportFile;

} // namespace

void zeUndoReportInit(const char* path) {
    reportFile.init(path);
}

void zeUndoReport(const char* format, ...) {
    if (!reportFile.isOpen())
        return;
    char text[1024];
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    ZL_vsnprintf(text, sizeof text, format, arguments.list);
    text[sizeof text - 1] = '\0';
    reportFile.write(text);
}
