// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileDebug.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PacketFileSupport.h"

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

template<class T>
void expectValue(T value, void (W::*write)(T), auto(R::*read)(), const char* little,
                 const char* big, const char* text) {
    expectForms(
        {bytes(little), bytes(big), text},
        [&](ioWriteContext& context) { (context.*write)(value); },
        [&](ioClientReadContext& client) { EXPECT_EQ(static_cast<T>((client.*read)()), value); });
}

TEST(DebugPackets, TagEachValue) {
    expectValue<bool>(true, &W::writeBool, &R::readBool, "'b'01", "'b'01", "b1 ");
    expectValue<char>(-56, &W::writeChar, &R::readChar, "'c'C8", "'c'C8", "c200 ");
    expectValue<unsigned char>(254, &W::writeUChar, &R::readUChar, "'C'FE", "'C'FE", "C254 ");
    expectValue<short>(-2, &W::writeShort, &R::readShort, "'h'FEFF", "'h'FFFE", "h-2 ");
    expectValue<unsigned short>(0x1234, &W::writeUShort, &R::readUShort, "'H'3412", "'H'1234",
                                "H4660 ");
    expectValue<int>(-3, &W::writeInt, &R::readInt, "'i'FDFFFFFF", "'i'FFFFFFFD", "i-3 ");
    expectValue<unsigned int>(0x89ABCDEF, &W::writeUInt, &R::readUInt, "'I'EFCDAB89", "'I'89ABCDEF",
                              "I2309737967 ");
    expectValue<std::int64_t>(-4, &W::writeInt64, &R::readInt64, "'l'FCFFFFFFFFFFFFFF",
                              "'l'FFFFFFFFFFFFFFFC", "l-4 ");
    expectValue<std::uint64_t>(0x0102030405060708, &W::writeUInt64, &R::readUInt64,
                               "'L'0807060504030201", "'L'0102030405060708", "L72623859790382856 ");
    expectValue<float>(1.5F, &W::writeFloat, &R::readFloat, "'f'0000C03F", "'f'3FC00000", "f1.5 ");
    expectValue<double>(-2.25, &W::writeDouble, &R::readDouble, "'d'00000000000002C0",
                        "'d'C002000000000000", "d-2.25 ");
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

/// Two elements, and then none: that is the tag alone.
template<class T>
void expectArray(const T (&values)[2], void (W::*write)(const T*, int), void (R::*read)(T*, int),
                 const char* little, const char* big, const char* text) {
    expectForms(
        {bytes(little), bytes(big), text},
        [&](ioWriteContext& context) {
            for (const int count : {2, 0, -1})
                (context.*write)(values, count);
        },
        [&](ioClientReadContext& client) {
            T found[2] = {};
            for (const int count : {2, 0, -1})
                (client.*read)(found, count);
            EXPECT_THAT(found, testing::ElementsAreArray(values));
        });
}

TEST(DebugPackets, TagArraysAndWhatIsWrittenElementByElement) {
    expectArray<bool>({true, false}, &W::writeBoolArray, &R::readBoolArray, "'Bb'01'b'00'BB'",
                      "'Bb'01'b'00'BB'", "Bb1 b0 BB");
    expectArray<char>({'a', -1}, &W::writeCharArray, &R::readCharArray, "'1'61FF'11'",
                      "'1'61FF'11'", "1c97 c255 11");
    expectArray<unsigned char>({0, 200}, &W::writeUCharArray, &R::readUCharArray, "'2'00C8'22'",
                               "'2'00C8'22'", "2C0 C200 22");
    expectArray<short>({-2, 258}, &W::writeShortArray, &R::readShortArray, "'3'FEFF0201'33'",
                       "'3'FFFE0102'33'", "3h-2 h258 33");
    expectArray<unsigned short>({65534, 258}, &W::writeUShortArray, &R::readUShortArray,
                                "'4'FEFF0201'44'", "'4'FFFE0102'44'", "4H65534 H258 44");
    expectArray<int>({-2, 7}, &W::writeIntArray, &R::readIntArray, "'5'FEFFFFFF07000000'55'",
                     "'5'FFFFFFFE00000007'55'", "5i-2 i7 55");
    expectArray<unsigned int>({4294967294, 7}, &W::writeUIntArray, &R::readUIntArray,
                              "'6'FEFFFFFF07000000'66'", "'6'FFFFFFFE00000007'66'",
                              "6I4294967294 I7 66");
    expectArray<std::int64_t>({-2, 7}, &W::writeInt64Array, &R::readInt64Array,
                              "'7'FEFFFFFFFFFFFFFF0700000000000000'77'",
                              "'7'FFFFFFFFFFFFFFFE0000000000000007'77'", "7l-2 l7 77");
    expectArray<std::uint64_t>({2, 7}, &W::writeUInt64Array, &R::readUInt64Array,
                               "'8'02000000000000000700000000000000'88'",
                               "'8'00000000000000020000000000000007'88'", "8L2 L7 88");
    expectArray<float>({1.5F, -2}, &W::writeFloatArray, &R::readFloatArray,
                       "'9'0000C03F000000C0'99'", "'9'3FC00000C0000000'99'", "9f1.5 f-2 99");
    expectArray<double>({-2.25, 1}, &W::writeDoubleArray, &R::readDoubleArray,
                        "'0'00000000000002C0000000000000F03F'00'",
                        "'0'C0020000000000003FF0000000000000'00'", "0d-2.25 d1 00");
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
                           [](ioClientReadContext& client) {
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
        oneShort.files(), [](R& client) { client.readUShort(); }, "Short (68)", "UShort (48)");
    expectMismatch(
        oneShort.files(), [](R& client) { client.readReference(); }, "Short (68)",
        "Reference (72)");
    expectMismatch(
        oneShort.files(), [](R& client) { client.readShortArray(nullptr, 0); }, "Short (68)",
        "ShortArray (33)");
    const Bodies reference = {bytes("'ri'01000000"), bytes("'ri'00000001"), "ri1 "};
    expectMismatch(
        reference.files(), [](R& client) { client.readReference(); }, "Int (69)", "UInt (49)");
    const Bodies bools = {bytes("'Bb'01'c'00"), bytes("'Bb'01'c'00"), "Bb1 c0 "};
    bool flags[2];
    expectMismatch(
        bools.files(), [&](R& client) { client.readBoolArray(flags, 2); }, "Char (63)",
        "Bool (62)");
    const Bodies elements = {bytes("'3'0700"), bytes("'3'0007"), "3i7 "};
    short number;
    expectMismatch(
        {elements.files()[2]}, [&](R& client) { client.readShortArray(&number, 1); }, "Int (69)",
        "Short (68)");
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
    const std::string message = "Packet file type mismatch:\n   got: Short \\(68\\)\n"
                                "   expected: Int \\(69\\)\n"
                                "ioPacketFile: Fatal error\\.  Aborting\\.\n";
    const auto read = [](R& client) { client.readInt(); };
    EXPECT_EXIT(readFile(file, read), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(
        {
            ioPacketFileErrorInit([](char* text) { std::fprintf(stderr, "(%s)", text); });
            ioPacketFileAbortInit([] { std::fputs("(gone)", stderr); }); // and then abort()
            readFile(file, read);
        },
        testing::KilledBySignal(SIGABRT), "Int \\(69\\)\n\\)\\(ioPacketFile.*\\)\\(gone\\)");
}

} // namespace
