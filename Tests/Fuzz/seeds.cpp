// SPDX-License-Identifier: MIT

// Writes the seeds of the corpora: zeBaseFuzzSeeds FOLDER makes FOLDER/<target>/<seed>.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "Base/IO/ioBuffer.h"

#include "Fuzz/FilterFuzz.h"
#include "Fuzz/PacketFuzz.h"
#include "IO/formats/PacketFileSupport.h"

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
    for (const auto& [target, filter] : {std::pair("Checksum", &ioBufferedStream::checksum),
                                         std::pair("Compression", &ioBufferedStream::compress),
                                         std::pair("Encryption", &ioBufferedStream::encrypt)}) {
        std::string text;
        for (int line = 0; line < 40; ++line)
            text += std::to_string(line * line) + " bottles of something\n";
        write(target, "text", fuzz::filtered(filter, text) + "plain");
        write(target, "zeros", fuzz::filtered(filter, std::string(3000, '\0')) + "plain");
        write(target, "one-block", fuzz::filtered(filter, std::string(4096, 'x')) + "plain");
        write(target, "one-byte", fuzz::filtered(filter, "x"));
    }
    write("Checksum", "large-frame", fuzz::largeFrame());
    write("BinaryPackets", "everything", fuzz::everything(ioWriteBinary));
    // Of the other byte order, which nothing here writes: a few values, an array, a chunk.
    write("BinaryPackets", "big-endian",
          packets::bigEndianHeader + packets::thingTypes +
              packets::bytes("00000002 00000000 00000017 05 00000001 0F 02 0001 0002"
                             "18 2C 0000000A 05 00000002 FF") +
              packets::bigEndianEnd);
    write("DebugPackets", "big-endian",
          "^@\n1\n0 3 1\n1 2 4 8 4 8 8\n@\n" + packets::thingTypes +
              packets::bytes("00000002 00000000 00000009 'C'05 'i'00000001 'C'FF") +
              packets::bigEndianEnd);
    write("TextPackets", "everything", fuzz::everything(ioWriteAscii));
    write("DebugPackets", "everything-binary", fuzz::everything(ioWriteBinaryDebug));
    write("DebugPackets", "everything-text", fuzz::everything(ioWriteAsciiDebug));
    return 0;
}
