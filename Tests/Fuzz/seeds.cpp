// SPDX-License-Identifier: MIT

// Writes the seeds of the corpora: zeBaseFuzzSeeds FOLDER makes FOLDER/<target>/<seed>.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "Fuzz/PacketFuzz.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: zeBaseFuzzSeeds FOLDER\n", stderr);
        return 2;
    }
    const auto write = [&](const std::string& target, const std::string& seed,
                           const std::string& bytes) {
        const std::filesystem::path folder = std::filesystem::path(argv[1]) / target;
        std::filesystem::create_directories(folder);
        std::ofstream(folder / seed, std::ios::binary) << bytes;
    };
    write("BinaryPackets", "everything", fuzz::everything(ioWriteBinary));
    write("TextPackets", "everything", fuzz::everything(ioWriteAscii));
    write("DebugPackets", "everything-binary", fuzz::everything(ioWriteBinaryDebug));
    write("DebugPackets", "everything-text", fuzz::everything(ioWriteAsciiDebug));
    return 0;
}
