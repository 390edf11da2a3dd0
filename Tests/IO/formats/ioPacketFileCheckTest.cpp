// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileCheck.h"

#include <gtest/gtest.h>

#include "Base/Strings/zeStringIString.h"

#include "IO/formats/PacketFileSupport.h"

namespace {

using namespace packets;

/// A small file with a reference, a string and structure in every format and byte order.
const std::string files[] = {
    binaryHeader + thingTypes +
        bytes("02000000 01000000 0D000000 01000000 2C 08000000 'a}' 00 00") + binaryEnd,
    bigEndianHeader + thingTypes +
        bytes("00000002 00000001 0000000D 00000001 2C 00000008 'a}' 00 00") + bigEndianEnd,
    textHeader + thingTypes + "{ 2 1 1 \n  [ \"a\\}\" ] }\n\n# by hand\n" + textEnd,
    "^@\n1\n1 3 1\n1 2 4 8 4 8 8\n@\n" + thingTypes +
        bytes("02000000 01000000 09000000 'rI' 01000000 's}' 00") + binaryEnd,
    "^@\n1\n1 2 1\n1 2 4 8 4 8 8\n@\n" + thingTypes + "{ 2 1 rI1 s\"\\}\" }\n" + textEnd,
};

/// In blocks of one size and another, which must not matter.
ioStatus check(const std::string& file) {
    Input small(file, 3);
    Input large(file);
    const ioStatus status = ioPacketFileCheck(small.stream);
    EXPECT_EQ(ioPacketFileCheck(large.stream), status);
    return status;
}

/// Every packet as "thing at 77, 20 bytes; ".
struct Listing : ioPacketFileVisitor {
    bool start(const ioHeader& header, const ioPacketRegistry& types) override {
        text = std::to_string(header.method) + " " + types.lookup(2)->getName() + ": ";
        return true;
    }
    bool packet(ioReadContext&, const ioPacketType& type, const ioPacketFilePlace& place) override {
        text += std::string(type.getName()) + " at " + std::to_string(place.position) + ", " +
                std::to_string(place.size) + " bytes, " + std::to_string(place.hasReference) + "; ";
        return text.size() < limit;
    }
    std::string text;
    std::size_t limit = 1000;
};

} // namespace

TEST(PacketFileCheck, PassesWholeFilesAloneAndAlwaysEnds) {
    for (const std::string& file : files) {
        EXPECT_EQ(check(file), ioOK);
        const std::size_t needed = file.ends_with('\n') ? file.size() - 1 : file.size();
        for (std::size_t size = 0; size < needed; ++size)
            ASSERT_EQ(check(file.substr(0, size)), ioBadFile) << size << "\n" << file;
        for (std::size_t size = file.find("@\n", 6) + 2; size < needed && needed == file.size();
             ++size)
            EXPECT_EQ(readFile(file.substr(0, size), nullptr), ioBadFile) << size; // binary ones
        for (std::size_t at = 0; at < file.size(); ++at)
            for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
                std::string damaged = file;
                damaged[at] = static_cast<char>(damaged[at] ^ change);
                // What passes keeps no reader waiting (but a value of a debug file may end it).
                if (check(damaged) == ioOK && file != files[3] && file != files[4])
                    Reader<>(damaged, {{"packetFile_string", nullptr}}).client.readFile();
            }
    }
    EXPECT_EQ(check(textHeader + "@\n" + std::string(100000, '#')), ioBadFile);
    Input unknown("^@\n1\n1 4 1\n1 2 4 8 4 8 8\n@\n" + thingTypes); // a method of its own
    Listing listing;
    EXPECT_EQ(ioPacketFileCheck(unknown.stream, &listing), ioBadFile);
    EXPECT_FALSE(listing.text.empty());                      // the visitor hears of the method
    EXPECT_EQ(listing.text.find(" at "), std::string::npos); // and of no packet
    EXPECT_EQ(check(files[0].substr(0, files[0].size() - 4) + bytes("FFFFFF7F")), ioBadFile);
}

TEST(PacketFileCheck, TellsWherePacketsLie) {
    const char* const expected[] = {
        "1 thing: thing at 83, 25 bytes, 1; packetFile_EOF at 108, 12 bytes, 0; ",
        "1 thing: thing at 83, 25 bytes, 1; packetFile_EOF at 108, 12 bytes, 0; ",
        "0 thing: thing at 83, 22 bytes, 1; packetFile_EOF at 117, 7 bytes, 0; ",
    };
    for (const int blockSize : {1, 5, 4096})
        for (std::size_t i = 0; i < std::size(expected); ++i) {
            Input input(files[i] + "behind", blockSize);
            Listing listing;
            EXPECT_EQ(ioPacketFileCheck(input.stream, &listing), ioOK);
            EXPECT_EQ(listing.text, expected[i]);
            char rest[16] = {};
            input.stream.readData(rest, sizeof rest);
            EXPECT_STREQ(rest, i == 2 ? "\nbehind" : "behind");
        }
    Input input(files[0]);
    Listing listing;
    listing.limit = 30;
    EXPECT_EQ(ioPacketFileCheck(input.stream, &listing), ioHalted);
}

TEST(PacketFileCheck, NeedsTheReadersRegistryWhereTheFileHasNoList) {
    const std::string file = textHeader + "@\n{ 2 0 }\n" + textEnd;
    Registry registry(false, {{"thing", [](ioClientReadContext&) { FAIL(); }}});
    Input input(file);
    EXPECT_EQ(ioPacketFileCheck(input.stream, nullptr, &registry), ioOK);
    EXPECT_EQ(check(file), ioBadFile);
}

TEST(PacketFileCheck, TellsAStreamThatDidNotOpen) {
    EXPECT_EQ(ioPacketFileCheck(L"no/such/file"), ioOpenError);
    ioBufferedStreamInput closed;
    EXPECT_EQ(ioPacketFileCheck(closed), ioBadFile);
}
