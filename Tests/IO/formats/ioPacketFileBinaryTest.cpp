// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileBinary.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <climits>
#include <new>
#include <tuple>

#include <gtest/gtest.h>

#include "Support/AllocationCount.h"

#include "IO/formats/PacketFileSupport.h"

using namespace packets;

namespace {

/// A context with ways of its own to read a head and a value.
template<class Base>
struct Overriding : Base {
    using Base::Base;
    int readUnbufferedInt(ioBufferedStreamInput& stream) override {
        ++headNumbers;
        return Base::readUnbufferedInt(stream);
    }
    unsigned int readUInt() override {
        ++values;
        return Base::readUInt();
    }
    static inline int headNumbers = 0, values = 0;
};

std::string readValues(ioClientReadContext& client) {
    std::string values;
    const auto note = [&](auto value) {
        values.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    note(client.readBool()), note(client.readChar()), note(client.readUChar());
    note(client.readShort()), note(client.readUShort()), note(client.readInt());
    note(client.readUInt()), note(client.readInt64()), note(client.readUInt64());
    note(client.readFloat()), note(client.readDouble());
    return values;
}

/// What a program sees of a file: statuses, values, and what its progress hook is passed.
using Seen = std::tuple<ioStatus, ioStreamStatus, std::string, std::vector<int>>;

template<class Context>
Seen readBy(const std::string& packets, int blockSize) {
    static std::vector<int> totals;
    totals.clear();
    std::string values;
    Input input(thingTypes + packets, blockSize);
    input.stream.associateProgressFunction([](int total) { totals.push_back(total); });
    Registry registry(true, {{"thing", [&](ioClientReadContext& client) {
                                  values += readValues(client);
                                  client.startSubPacket();
                                  client.endSubPacket(); // goes to where the length points
                                  values += readValues(client);
                              }}});
    Context context(input.stream);
    context.associateRegistry(&registry);
    const ioStatus status = ioClientReadContext(&context).readFile();
    return {status, input.stream.getStatus(), values, totals};
}

/// Wherever the file ends, and whatever blocks it comes in. The values are 43 bytes; behind them
/// stands a damaged length, and behind the second packet what the first has left.
template<class Context>
void expectTheSameOfAnOverridingContext(const Form& form) {
    using Twin = Overriding<Context>;
    std::string packets =
        form.thing('\2' + randomData(42) + bytes("'.'7FFFFF7F")) + form.thing("five!") + form.end();
    EXPECT_EQ(std::get<ioStatus>(readBy<Twin>(packets, 4096)), ioOK);
    EXPECT_EQ(Twin::headNumbers, 9); // of three heads
    EXPECT_EQ(Twin::values, 4);
    for (; !packets.empty(); packets.pop_back())
        for (const int blockSize : {1, 2, 3, 5, 8, 13, 4096})
            EXPECT_EQ(readBy<Context>(packets, blockSize), readBy<Twin>(packets, blockSize))
                << packets.size() << ' ' << blockSize;
}

} // namespace

TEST(BinaryPackets, AreReadAsByAContextWhoseOperationsAreAllCalled) {
    expectTheSameOfAnOverridingContext<ioReadContextBinarySameEndian>(forms[0]);
    expectTheSameOfAnOverridingContext<ioReadContextBinarySwapped>(forms[1]);
}

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
    const char* const lengths[] = {"FFFFFF7F", "00000080", "FFFFFFFF", "00000000"};
    for (int trial = 0; trial < 8; ++trial) {
        const char* const length = lengths[trial / 2];
        const Form& form = forms[trial % 2];
        std::string number = bytes(length);
        if (form.big)
            std::reverse(number.begin(), number.end());
        const std::string body = '.' + number + "\1\2";
        int packets = 0;
        EXPECT_EQ(readFile(form.file(form.thing(body) + form.thing(body)),
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

TEST(BinaryPackets, CanBeLeftAndReadOnWhereMemoryRunsOutInASubPacket) {
    const Form& form = forms[0];
    int failures = 0, packets = 0;
    const auto read = [&](ioClientReadContext& client) {
        ++packets;
        int levels = 0;
        for (; levels < 60; ++levels) {
            failAllocation(1);
            try {
                client.startSubPacket();
            } catch (const std::bad_alloc&) {
                ++failures;
                failAllocation(0);
                client.startSubPacket();
            }
            failAllocation(0);
        }
        for (; levels >= -failures; --levels) // those that failed, too
            client.endSubPacket();
    };
    const std::string thing = form.thing(std::string(600, '\0'));
    EXPECT_EQ(readFile(form.file(thing + thing), read), ioOK);
    EXPECT_GT(failures, 3); // of the state of chunks, and of the frames
    EXPECT_EQ(packets, 2);
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
