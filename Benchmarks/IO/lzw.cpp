// SPDX-License-Identifier: MIT

/// @file
/// Compresses standard input to standard output, or expands it with -d: what the benchmarks run as
/// a whole process beside other programs.

#include <cstring>
#include <memory>

#include "Base/IO/ioBuffer.h"

int main(int argc, char** argv) {
    const bool expand = argc > 1 && std::strcmp(argv[1], "-d") == 0;
    constexpr int size = 65536;
    const auto bytes = std::make_unique<char[]>(size);
    ioBufferedStreamInput in;
    ioBufferedStreamOutput out;
    in.openStdin();
    out.openStdout();
    if (expand)
        in.compress(true);
    else
        out.compress(true);
    while (in.getStatus() == streamOK && out.getStatus() == streamOK)
        out.writeData(bytes.get(), in.readData(bytes.get(), size));
    if (!expand)
        out.compress(false);
    out.close();
    const bool complete = in.getStatus() == (expand ? streamCompressEnd : streamEOF);
    return complete && out.getStatus() == streamOK ? 0 : 1;
}
