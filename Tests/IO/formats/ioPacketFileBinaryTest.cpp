// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBinary.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <climits>
#include <deque>

#include <gtest/gtest.h>

#include "IO/formats/PacketFileSupport.h"

namespace {

using namespace packets;

std::string file(const std::string& packets) {
    return binaryHeader + thingTypes + packets;
}

/// A packet of type "thing" with this body.
std::string thing(const std::string& body) {
    std::string packet = bytes("02000000 00000000 00000000");
    packet[8] = static_cast<char>(body.size());
    return packet + body;
}

TEST(BinaryPackets, LayOutChunksAndSubPackets) {
    const std::string expected = bytes("02000000 00000000 1D000000"
                                       "',' 14000000 07000000"
                                       "'.' 0B000000 0201 ',' 04000000"
                                       "',' 07000000 'hi'00");
    const std::string swapped = bytes("00000002 00000000 0000001D"
                                      "',' 00000014 00000007"
                                      "'.' 0000000B 0102 ',' 00000004"
                                      "',' 00000007 'hi'00");
    EXPECT_EQ(written(ioWriteBinary,
                      [](ioWriteContext& context) {
                          context.startPacket("thing", nullptr);
                          context.startChunk();
                          context.writeInt(7);
                          context.startSubPacket();
                          context.writeShort(0x0102);
                          context.startChunk();
                          context.endSubPacket();
                          context.startChunk();
                          context.writeCString("hi");
                          context.endPacket();
                      }),
              expected + binaryEnd);

    int packets = 0;
    const Read read = [&](ioClientReadContext& client) {
        ++packets;
        EXPECT_TRUE(client.nextChunk());
        EXPECT_EQ(client.readInt(), 7);
        client.startSubPacket();
        EXPECT_EQ(client.readShort(), 0x0102);
        EXPECT_FALSE(client.isValidChunk()); // a sub-packet has chunks of its own
        EXPECT_FALSE(client.nextChunk());    // empty
        client.endSubPacket();
        EXPECT_TRUE(client.isValidChunk());
        EXPECT_TRUE(client.nextChunk());
        EXPECT_STREQ(client.readCString(), "hi");
        EXPECT_FALSE(client.nextChunk());
        EXPECT_FALSE(client.isValidChunk());
    };
    for (const int blockSize : {1, 5, 4096}) {
        EXPECT_EQ(readFile(file(expected + binaryEnd), read, nullptr, blockSize), ioOK);
        EXPECT_EQ(readFile(bigEndianHeader + thingTypes + swapped + bigEndianEnd, read, nullptr,
                           blockSize),
                  ioOK);
    }
    EXPECT_EQ(packets, 6);
}

TEST(BinaryPackets, SkipWhatTheReaderDoesNotKnow) {
    const Write write = [](ioWriteContext& context) {
        for (int i = 0; i < 2; ++i) {
            context.startPacket("thing", nullptr);
            context.startChunk();
            context.writeInt(1);
            context.writeInt(2); // added by a later version
            context.startSubPacket();
            context.startChunk();
            context.writeInt(3);
            context.endSubPacket();
            context.startChunk();
            context.writeInt(4);
            context.startChunk(); // added by a later version
            context.writeInt(5);
            context.endPacket();
        }
    };
    int packets = 0;
    EXPECT_EQ(readFile(file(written(ioWriteBinary, write)),
                       [&](ioClientReadContext& client) {
                           ++packets;
                           EXPECT_TRUE(client.nextChunk());
                           EXPECT_EQ(client.readInt(), 1);
                           EXPECT_TRUE(client.nextChunk());
                           EXPECT_EQ(client.readInt(), 4);
                       }),
              ioOK);
    EXPECT_EQ(readFile(file(written(ioWriteBinary, write)),
                       [&](ioClientReadContext& client) {
                           ++packets;
                           EXPECT_TRUE(client.nextChunk());
                           EXPECT_EQ(client.readInt64(), 0x200000001);
                           client.startSubPacket();
                           EXPECT_TRUE(client.nextChunk());
                           EXPECT_FALSE(client.nextChunk()); // held at the end of the sub-packet
                           client.endSubPacket();
                           EXPECT_TRUE(client.nextChunk());
                           EXPECT_TRUE(client.nextChunk());
                           EXPECT_FALSE(client.nextChunk());
                           EXPECT_FALSE(client.nextChunk());
                       }),
              ioOK);
    EXPECT_EQ(packets, 4);
}

TEST(BinaryPackets, PassOverReservedAndUnknownPackets) {
    const std::string reserved = bytes("02000000 02000000 01000000 FF");
    const std::string negative = bytes("02000000 FEFFFFFF 01000000 FF");
    int packets = 0;
    const Read count = [&](ioClientReadContext& client) { packets += client.readInt(); };
    EXPECT_EQ(readFile(file(reserved + negative + thing(bytes("01000000")) + binaryEnd), count),
              ioOK);
    EXPECT_EQ(packets, 1);

    const std::string strangers = "   0 packetFile_EOF\n   1 stranger\n@\n";
    const std::string packet = bytes("01000000 01000000 05000000 07000000 FF");
    EXPECT_EQ(
        readFile(binaryHeader + strangers + packet + bytes("00000000 00000000 00000000"), count),
        ioOK);
}

TEST(BinaryPackets, RefuseWhatTheyCannotUnderstand) {
    const char* packets[] = {
        "FFFFFFFF 00000000 00000000",    // a negative id
        "02000000 00000000 FFFFFFFF",    // a negative length
        "03000000 00000000 01000000 FF", // an id beyond the list
    };
    for (const char* packet : packets)
        EXPECT_EQ(readFile(file(bytes(packet) + binaryEnd), nullptr), ioBadFile) << packet;
}

TEST(BinaryPackets, TakeMemoryByWhatArrivesAndNotByWhatIsClaimed) {
    const auto peakMegabytes = [] {
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss / 1024;
    };
    const long before = peakMegabytes();
    for (const char* length : {"FFFFFF7F", "01000040"})
        EXPECT_EQ(readFile(file(bytes(std::string("02000000 00000000 ") + length + "FF")), nullptr),
                  ioBadFile);
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST(BinaryPackets, ReadZerosWhereverDamagedLengthsLead) {
    for (const char* length : {"FFFFFF7F", "00000080", "FFFFFFFF", "00000000"}) {
        const std::string body = bytes(std::string("'.'") + length + "0102");
        int packets = 0;
        EXPECT_EQ(readFile(file(thing(body) + thing(body) + binaryEnd),
                           [&](ioClientReadContext& client) {
                               ++packets;
                               client.startSubPacket();
                               client.endSubPacket(); // goes to where the length points
                               for (int i = 0; i < 3; ++i)
                                   client.nextChunk();
                               std::array<double, 100> values;
                               values.fill(1);
                               client.readDoubleArray(values.data(), 100);
                               EXPECT_GE(std::count(values.begin(), values.end(), 0.0), 95);
                               EXPECT_LE(std::strlen(client.readCString()), 14U);
                               client.readInt64();
                               client.readRawByte();
                           }),
                  ioOK)
            << length;
        EXPECT_EQ(packets, 2);
    }

    ioPacketFileBinaryBuffer buffer;
    for (const int position : {INT_MAX, INT_MIN, -1, 50000, 49999}) {
        buffer.seekPos(position);
        char read[16];
        std::memset(read, 'x', sizeof read);
        buffer.readBuffer(read, sizeof read);
        EXPECT_EQ(std::string(read, 16), std::string(16, '\0')) << position;
        buffer.seekPos(position);
        EXPECT_EQ(buffer.readBuffer(2), nullptr) << position;
        buffer.seekPos(position);
        EXPECT_STREQ(buffer.readText(), "");
    }
}

/// One object with everything that a packet can hold, read without trust in any of it.
void readAnything(ioClientReadContext& client, std::deque<void*>& pointers) {
    client.definePacketReference(&client);
    for (int i = 0; i < 2; ++i) {
        client.nextChunk();
        client.readCString();
        client.startSubPacket();
        double values[4];
        client.readDoubleArray(values, 3);
        client.nextChunk();
        client.readReferenceUsage(&pointers.emplace_back(), 0);
        client.readReferenceUsage();
        client.endSubPacket();
    }
    client.readReferenceDefinition(&pointers);
    bool flags[3];
    client.readBoolArray(flags, 3);
}

TEST(BinaryPackets, EndInAStatusWhereverTheFileIsCutOrFlipped) {
    int objects[3];
    const std::string whole = file(written(ioWriteBinary, [&](ioWriteContext& context) {
        for (int& object : objects) {
            context.startPacket("thing", &object);
            for (int i = 0; i < 2; ++i) {
                context.startChunk();
                context.writeCString("text");
                context.startSubPacket();
                const double values[] = {1, 2, 3};
                context.writeDoubleArray(values, 3);
                context.startChunk();
                context.writeReference(&objects[2], false);
                context.writeReference(&objects[0], false);
                context.endSubPacket();
            }
            context.endPacket();
        }
    }));
    const auto read = [](const std::string& damaged) {
        std::deque<void*> pointers;
        const Read anything = [&](ioClientReadContext& client) { readAnything(client, pointers); };
        // Strings are read like everything else, so that nobody has to own them.
        Reader<> reader(damaged, {{"thing", anything}, {"packetFile_string", anything}});
        return reader.client.readFile();
    };
    ASSERT_EQ(read(whole), ioOK);
    for (std::size_t size = binaryHeader.size(); size < whole.size(); ++size)
        EXPECT_EQ(read(whole.substr(0, size)), ioBadFile) << size;
    for (std::size_t at = binaryHeader.size(); at < whole.size(); ++at)
        for (const int flip : {1, 6, 128, 255}) {
            std::string damaged = whole;
            damaged[at] = static_cast<char>(damaged[at] ^ flip);
            const ioStatus status = read(damaged);
            EXPECT_TRUE(status == ioOK || status == ioBadFile) << at << ' ' << flip;
        }
}

TEST(BinaryPackets, GrowWithTheirContents) {
    const std::string text(120000, 't');
    const std::vector<double> values(300000, 2.5); // more than is believed before it arrives
    const std::string packets = written(ioWriteBinary, [&](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        context.writeCString(text.c_str());
        context.startChunk();
        for (const double value : values)
            context.writeDouble(value);
        context.writeDoubleArray(values.data(), static_cast<int>(values.size()));
        context.endPacket();
    });
    EXPECT_EQ(packets.size(), 12 + 120001 + 5 + 2 * 2400000 + 12U);
    std::vector<double> read(600000);
    EXPECT_EQ(readFile(file(packets),
                       [&](ioClientReadContext& client) {
                           EXPECT_EQ(client.readCString(), text);
                           EXPECT_TRUE(client.nextChunk());
                           client.readDoubleArray(read.data(), 600000);
                           EXPECT_FALSE(client.nextChunk());
                       }),
              ioOK);
    EXPECT_EQ(read, std::vector<double>(600000, 2.5));
}

TEST(BinaryPackets, AreDroppedIfTheyExceedTheirLength) {
    const double value = 1;
    EXPECT_EQ(written(
                  ioWriteBinary,
                  [&](ioWriteContext& context) {
                      context.startPacket("thing", nullptr);
                      context.writeInt(1);
                      context.writeDoubleArray(&value, INT_MAX); // not a byte of it is read
                      context.endPacket();
                  },
                  ioError),
              "");
}

TEST(BinaryPackets, KeepStructureOpenToOverridesOfTheTypedOperations) {
    struct Tagging : ioWriteContextBinary {
        using ioWriteContextBinary::ioWriteContextBinary;
        void writeInt(int value) override {
            writeRawByte('i');
            ioWriteContextBinary::writeInt(value);
        }
        void writeUInt(unsigned int value) override {
            writeRawByte('I');
            ioWriteContextBinary::writeUInt(value);
        }
        void writeBool(bool value) override {
            writeRawByte('b');
            ioWriteContextBinary::writeBool(value);
        }
    };
    Output output;
    Registry registry(false, {{"thing", nullptr}});
    Tagging context(output.stream);
    context.associateRegistry(&registry);
    registry.init();
    int object;
    context.startPacket("thing", &object);
    context.startChunk();
    const bool flags[] = {true, false};
    context.writeBoolArray(flags, 2);
    const int numbers[] = {9};
    context.writeIntArray(numbers, 1);
    context.endPacket();
    EXPECT_EQ(output.bytes(), bytes("02000000 01000000 13000000 'I'01000000"
                                    "',' 'i'0D000000 'b'01 'b'00 09000000"));
}

} // namespace
