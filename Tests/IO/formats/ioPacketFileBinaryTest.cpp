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

} // namespace

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
