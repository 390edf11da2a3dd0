// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBinary.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <climits>

#include <gtest/gtest.h>

#include "IO/formats/PacketFileSupport.h"

using namespace packets;

TEST(BinaryPackets, TakeMemoryByWhatArrivesAndNotByWhatIsClaimed) {
    const auto peakMegabytes = [] {
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss / 1024;
    };
    const long before = peakMegabytes();
    for (const char* length : {"FFFFFF7F", "01000040"})
        EXPECT_EQ(readFile(binaryHeader + thingTypes +
                               bytes(std::string("02000000 00000000 ") + length + "FF"),
                           nullptr),
                  ioBadFile);
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST(BinaryPackets, ReadZerosWhereverDamagedLengthsLead) {
    for (const char* length : {"FFFFFF7F", "00000080", "FFFFFFFF", "00000000"}) {
        const std::string body = bytes(std::string("'.'") + length + "0102");
        int packets = 0;
        EXPECT_EQ(readFile(forms[0].file(forms[0].thing(body) + forms[0].thing(body)),
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
