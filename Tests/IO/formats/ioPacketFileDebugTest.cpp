// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileDebug.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "IO/formats/PacketFileSupport.h"

namespace {

using namespace packets;
using W = ioWriteContext;
using R = ioClientReadContext;

const std::string binaryDebugHeader = "^@\n1\n1 3 1\n1 2 4 8 4 8 8\n@\n";
const std::string bigEndianDebugHeader = "^@\n1\n0 3 1\n1 2 4 8 4 8 8\n@\n";
const std::string textDebugHeader = "^@\n1\n1 2 1\n1 2 4 8 4 8 8\n@\n";

/// A packet of type "thing" with this body.
std::string binaryThing(const std::string& body) {
    return bytes("02000000 00000000") + static_cast<char>(body.size()) + bytes("000000") + body;
}
std::string bigEndianThing(const std::string& body) {
    return bytes("00000002 00000000 000000") + static_cast<char>(body.size()) + body;
}
std::string textThing(const std::string& body) {
    return "{ 2 0 " + body + "}\n";
}

/// The three forms of a file with one such packet.
struct Bodies {
    std::string little, big, text;

    std::vector<std::string> files() const {
        return {binaryDebugHeader + thingTypes + binaryThing(little) + binaryEnd,
                bigEndianDebugHeader + thingTypes + bigEndianThing(big) + bigEndianEnd,
                textDebugHeader + thingTypes + textThing(text) + textEnd};
    }
};

Write inThing(const Write& write) {
    return [write](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        write(context);
        context.endPacket();
    };
}

/// `write` makes these bodies, and `read` reads each of them.
void expectForms(const Bodies& bodies, const Write& write, const Read& read) {
    SCOPED_TRACE(bodies.text);
    EXPECT_EQ(written(ioWriteBinaryDebug, inThing(write)), binaryThing(bodies.little) + binaryEnd);
    EXPECT_EQ(written(ioWriteAsciiDebug, inThing(write)), textThing(bodies.text) + textEnd);
    int packets = 0;
    for (const std::string& file : bodies.files())
        EXPECT_EQ(readFile(file,
                           [&](ioClientReadContext& client) {
                               ++packets;
                               read(client);
                               client.readRawByte(); // of the next value, or what follows the last
                           }),
                  ioOK);
    EXPECT_EQ(packets, 3);
}

TEST(DebugPackets, SayInTheHeaderWhatTheyAre) {
    for (const auto& [method, header] : {std::pair(ioWriteBinaryDebug, binaryDebugHeader),
                                         std::pair(ioWriteAsciiDebug, textDebugHeader)}) {
        Output output;
        Registry registry(false);
        const std::unique_ptr<ioWriteContext> context(
            ioWriteContextAlloc(output.stream, method, &registry));
        context->startFile();
        EXPECT_EQ(output.bytes(), header + "   0 packetFile_string\n   1 packetFile_EOF\n@\n");
    }
}

/// A type's tags, and two of its values as they lie in a file, here in little-endian order: one
/// value, an array of both, and two arrays without elements, which are their tags alone.
template<class T>
void expectType(char tag, char arrayTag, const T (&values)[2], const char* const (&hex)[2],
                const std::string (&text)[2], void (W::*write)(T), auto(R::*read)(),
                void (W::*writeArray)(const T*, int), void (R::*readArray)(T*, int)) {
    const std::string one(1, tag);
    const std::string array(1, arrayTag);
    const std::string each = std::is_same_v<T, bool> ? one : ""; // written one by one, as in text
    const auto binary = [&](const std::string& first, const std::string& second) {
        return one + first + array + each + first + each + second + array + array;
    };
    const auto swapped = [](const std::string& bytes) {
        return std::string(bytes.rbegin(), bytes.rend());
    };
    const std::string first = bytes(hex[0]);
    const std::string second = bytes(hex[1]);
    expectForms(
        {binary(first, second), binary(swapped(first), swapped(second)),
         one + text[0] + " " + array + one + text[0] + " " + one + text[1] + " " + array + array},
        [&](ioWriteContext& context) {
            (context.*write)(values[0]);
            for (const int count : {2, 0, -1})
                (context.*writeArray)(values, count);
        },
        [&](ioClientReadContext& client) {
            EXPECT_EQ(static_cast<T>((client.*read)()), values[0]);
            T found[2] = {};
            for (const int count : {2, 0, -1})
                (client.*readArray)(found, count);
            EXPECT_THAT(found, testing::ElementsAreArray(values));
        });
}

TEST(DebugPackets, TagEachValueAndArray) {
    expectType<bool>('b', 'B', {true, false}, {"01", "00"}, {"1", "0"}, &W::writeBool, &R::readBool,
                     &W::writeBoolArray, &R::readBoolArray);
    expectType<char>('c', '1', {-56, 'a'}, {"C8", "61"}, {"200", "97"}, &W::writeChar, &R::readChar,
                     &W::writeCharArray, &R::readCharArray);
    expectType<unsigned char>('C', '2', {254, 0}, {"FE", "00"}, {"254", "0"}, &W::writeUChar,
                              &R::readUChar, &W::writeUCharArray, &R::readUCharArray);
    expectType<short>('h', '3', {-2, 258}, {"FEFF", "0201"}, {"-2", "258"}, &W::writeShort,
                      &R::readShort, &W::writeShortArray, &R::readShortArray);
    expectType<unsigned short>('H', '4', {0x1234, 65534}, {"3412", "FEFF"}, {"4660", "65534"},
                               &W::writeUShort, &R::readUShort, &W::writeUShortArray,
                               &R::readUShortArray);
    expectType<int>('i', '5', {-3, 7}, {"FDFFFFFF", "07000000"}, {"-3", "7"}, &W::writeInt,
                    &R::readInt, &W::writeIntArray, &R::readIntArray);
    expectType<unsigned int>('I', '6', {0x89ABCDEF, 7}, {"EFCDAB89", "07000000"},
                             {"2309737967", "7"}, &W::writeUInt, &R::readUInt, &W::writeUIntArray,
                             &R::readUIntArray);
    expectType<std::int64_t>('l', '7', {-4, 7}, {"FCFFFFFFFFFFFFFF", "0700000000000000"},
                             {"-4", "7"}, &W::writeInt64, &R::readInt64, &W::writeInt64Array,
                             &R::readInt64Array);
    expectType<std::uint64_t>('L', '8', {0x0102030405060708, 7},
                              {"0807060504030201", "0700000000000000"}, {"72623859790382856", "7"},
                              &W::writeUInt64, &R::readUInt64, &W::writeUInt64Array,
                              &R::readUInt64Array);
    expectType<float>('f', '9', {1.5F, -2}, {"0000C03F", "000000C0"}, {"1.5", "-2"}, &W::writeFloat,
                      &R::readFloat, &W::writeFloatArray, &R::readFloatArray);
    expectType<double>('d', '0', {-2.25, 1}, {"00000000000002C0", "000000000000F03F"},
                       {"-2.25", "1"}, &W::writeDouble, &R::readDouble, &W::writeDoubleArray,
                       &R::readDoubleArray);
}

TEST(DebugPackets, TagStringsOnceAndRawBytesNever) {
    expectForms(
        {bytes("'so]'00 's'00 '['"), bytes("'so]'00 's'00 '['"), "s\"o\\]\" s\"\" \\["},
        [](ioWriteContext& context) {
            context.writeCString("o]");
            context.writeCString("");
            context.writeRawByte('[');
        },
        [](ioClientReadContext& client) {
            EXPECT_STREQ(client.readCString(), "o]");
            EXPECT_STREQ(client.readCString(), "");
            EXPECT_EQ(client.readRawByte(), '[');
        });
}

/// A reference is the unsigned number that the format makes of it, with the tags of both.
TEST(DebugPackets, TagReferencesTwice) {
    int object;
    const char name[] = "n";
    const Write write = [&](ioWriteContext& context) {
        context.startPacket("thing", &object);
        context.writeReference(nullptr, false);
        context.writeReference(name, false);
        context.endPacket();
        context.writeCStringPacket(name);
    };
    const std::string binary = bytes("02000000 01000000 12000000 'rI'01000000 'rI'00000000"
                                     "'rI'02000000 00000000 01000000 09000000 'rI'02000000 'sn'00");
    const std::string text = "{ 2 1 rI1 rI0 rI2 }\n{ 0 1 rI2 s\"n\" }\n";
    EXPECT_EQ(written(ioWriteBinaryDebug, write), binary + binaryEnd);
    EXPECT_EQ(written(ioWriteAsciiDebug, write), text + textEnd);

    for (const std::string& file : {binaryDebugHeader + thingTypes + binary + binaryEnd,
                                    textDebugHeader + thingTypes + text + textEnd}) {
        char* read = nullptr;
        void* null = &object;
        EXPECT_EQ(readFile(file,
                           [&](ioClientReadContext& client) {
                               EXPECT_EQ(client.getPacketReference(), 1);
                               client.definePacketReference(&object);
                               client.readReferenceUsage(&null, 0);
                               client.readReferenceUsage(&read, 0);
                           }),
                  ioOK);
        EXPECT_EQ(null, nullptr);
        EXPECT_STREQ(read, "n");
        std::free(read);
    }
}

/// The length of a chunk or sub-packet is an Int, counted from its tag.
TEST(DebugPackets, TagTheLengthsOfChunksAndSubPackets) {
    const Bodies bodies = {bytes("','69 16000000 'i'07000000 '.'69 0B000000 ','69 05000000"
                                 "','69 09000000 's''hi'00"),
                           bytes("','69 00000016 'i'00000007 '.'69 0000000B ','69 00000005"
                                 "','69 00000009 's''hi'00"),
                           "\n  [ i7 \n  < \n  [ ] > ] \n  [ s\"hi\" ] "};
    const Write write = [](ioWriteContext& context) {
        context.startChunk();
        context.writeInt(7);
        context.startSubPacket();
        context.startChunk();
        context.endSubPacket();
        context.startChunk();
        context.writeCString("hi");
    };
    expectForms(bodies, write, [](ioClientReadContext& client) {
        EXPECT_TRUE(client.nextChunk());
        EXPECT_EQ(client.readInt(), 7);
        client.startSubPacket();
        EXPECT_FALSE(client.nextChunk());
        client.endSubPacket();
        EXPECT_TRUE(client.nextChunk());
        EXPECT_STREQ(client.readCString(), "hi");
        EXPECT_FALSE(client.nextChunk());
    });
    expectForms(bodies, write, [](ioClientReadContext& client) { // that knows less
        EXPECT_TRUE(client.nextChunk());
        EXPECT_TRUE(client.nextChunk());
        EXPECT_STREQ(client.readCString(), "hi");
    });
}

TEST(DebugPackets, LetTagsBelowZeroPass) {
    for (const std::string& file :
         Bodies{bytes("80 07000000 FF 0800"), bytes("80 00000007 FF 0008"),
                "\x80"
                "7 \xFF"
                "8 "}
             .files())
        EXPECT_EQ(readFile(file,
                           [](R& client) {
                               EXPECT_EQ(client.readInt(), 7);
                               EXPECT_EQ(client.readShort(), 8);
                           }),
                  ioOK);
}

TEST(DebugPackets, FollowOneAnotherInAStream) {
    const std::string file = binaryDebugHeader + thingTypes + binaryEnd;
    Input input(file + file + binaryHeader + thingTypes + binaryEnd);
    Registry registry(true);
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    ioClientReadContext client(context.get());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_TRUE(context->reusePacketFile());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_FALSE(context->reusePacketFile()); // without tags
}

TEST(DebugPackets, NameEveryTypeOfATag) {
    std::string names;
    for (const char tag : std::string_view("bcChHiIlLfdsB1234567890r"))
        names += std::string(ioPacketFileDebugType(static_cast<ioDebugType>(tag))) + " ";
    EXPECT_EQ(names, "Bool Char UChar Short UShort Int UInt Int64 UInt64 Float Double CString "
                     "BoolArray CharArray UCharArray ShortArray UShortArray IntArray UIntArray "
                     "Int64Array UInt64Array FloatArray DoubleArray Reference ");
    for (const int other : {0, 97, 125, -1, -128, 127})
        EXPECT_STREQ(ioPacketFileDebugType(static_cast<ioDebugType>(other)), "(invalid type)");
}

// Readers out of step with their writers.

struct Ended {};

/// What a reader tells before it ends, by hooks that come back from there.
class Mismatches : public testing::Test {
protected:
    Mismatches() {
        s_messages.clear();
        ioPacketFileErrorInit([](char* text) { s_messages += text; });
        ioPacketFileAbortInit([] { throw Ended(); });
    }
    ~Mismatches() override {
        ioPacketFileErrorInit(nullptr);
        ioPacketFileAbortInit(nullptr);
    }

    static void expectMismatch(const std::vector<std::string>& files, const Read& read,
                               const std::string& got, const std::string& expected) {
        for (const std::string& file : files) {
            s_messages.clear();
            EXPECT_THROW(readFile(file, read), Ended);
            EXPECT_EQ(s_messages, "Packet file type mismatch:\n   got: " + got + "\n   expected: " +
                                      expected + "\nioPacketFile: Fatal error.  Aborting.\n");
        }
    }

    static inline std::string s_messages;
};

TEST_F(Mismatches, NameBothTypes) {
    const Bodies oneShort = {bytes("'h'0700"), bytes("'h'0007"), "h7 "};
    expectMismatch(
        oneShort.files(), [](R& client) { client.readInt(); }, "Short (68)", "Int (69)");
    expectMismatch(
        oneShort.files(), [](R& client) { client.readReference(); }, "Short (68)",
        "Reference (72)");
    const Bodies reference = {bytes("'ri'01000000"), bytes("'ri'00000001"), "ri1 "};
    expectMismatch(
        reference.files(), [](R& client) { client.readReference(); }, "Int (69)", "UInt (49)");
    const Bodies bools = {bytes("'Bb'01'c'00"), bytes("'Bb'01'c'00"), "Bb1 c0 "};
    bool flags[2];
    expectMismatch(
        bools.files(), [&](R& client) { client.readBoolArray(flags, 2); }, "Char (63)",
        "Bool (62)");
}

/// What stands where no value was written.
TEST_F(Mismatches, NameWhatIsNoTag) {
    const Bodies nothing;
    const auto read = [](R& client) { client.readCString(); };
    expectMismatch({nothing.files()[0], nothing.files()[1]}, read, "(invalid type) (00)",
                   "CString (73)");
    expectMismatch({nothing.files()[2]}, read, "(invalid type) (7d)", "CString (73)");
    const Bodies chunk = {bytes("','04000000"), bytes("','00000004"), ""}; // without its tag
    expectMismatch(
        {chunk.files()[0]}, [](R& client) { client.nextChunk(); }, "(invalid type) (04)",
        "Int (69)");
}

TEST(DebugPacketsDeathTest, EndTheProcessAtAMismatch) {
    const std::string file = Bodies{"", "", "h7 "}.files()[2];
    const auto read = [](R& client) { client.readInt(); };
    EXPECT_EXIT(
        {
            ioPacketFileAbortInit([] { std::fputs("(gone)", stderr); });
            readFile(file, read);
        },
        testing::KilledBySignal(SIGABRT),
        "mismatch:\n   got: Short \\(68\\)\n   expected: Int \\(69\\)\n"
        "ioPacketFile: Fatal error\\.  Aborting\\.\n\\(gone\\)");
}

} // namespace
