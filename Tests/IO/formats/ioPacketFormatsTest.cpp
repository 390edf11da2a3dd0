// SPDX-License-Identifier: MIT

// What all formats have in common: the same scenarios in every form of a file, against literal
// bytes.

#include <cstdlib>
#include <deque>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/IO/ioPacketFile.h"

#include "IO/formats/PacketFileSupport.h"

namespace {

using namespace packets;
using W = ioWriteContext;
using R = ioReadContext;

/// In each form: `write` makes that body (but for the other byte order, which nothing here writes),
/// and `read` reads it, in blocks of whatever size.
template<class BodyOf>
void expectForms(BodyOf bodyOf, const Write& write, const Read& read) {
    int packets = 0;
    for (const Form& form : forms) {
        SCOPED_TRACE(testing::Message() << "form " << &form - forms);
        const std::string thing = form.thing(bodyOf(form));
        if (!form.big) {
            const Write packet = [&](ioWriteContext& context) {
                context.startPacket("thing", nullptr);
                write(context);
                context.endPacket();
            };
            EXPECT_EQ(written(form.writes(), packet), thing + form.end());
        }
        for (const int blockSize : {1, 7, 4096})
            EXPECT_EQ(readFile(
                          form.file(thing),
                          [&](ioClientReadContext& client) {
                              ++packets;
                              read(client);
                          },
                          nullptr, blockSize),
                      ioOK);
    }
    EXPECT_EQ(packets, 18);
}

/// Three values of one kind, with the bytes, the text and the tags that they have in a file: each
/// alone, all as an array, and two arrays without elements.
template<class T>
void expectKind(char tag, char arrayTag, const T (&values)[3], const char* const (&hex)[3],
                const char* const (&text)[3], void (W::*write)(T), auto(R::*read)(),
                void (W::*writeArray)(const T*, int), void (R::*readArray)(T*, int)) {
    SCOPED_TRACE(tag);
    const auto bodyOf = [&](const Form& form) {
        const std::string one(form.debug ? 1 : 0, tag);
        const std::string array(form.debug ? 1 : 0, arrayTag);
        const bool oneByOne = form.text || std::is_same_v<T, bool>;
        std::string alone, together = array;
        for (int i = 0; i < 3; ++i) {
            std::string value = form.text ? text[i] + std::string(" ") : bytes(hex[i]);
            if (form.big)
                value.assign(value.rbegin(), value.rend());
            alone += one + value;
            together += (oneByOne ? one : "") + value;
        }
        return alone + together + array + array;
    };
    expectForms(
        bodyOf,
        [&](ioWriteContext& context) {
            for (const T value : values)
                (context.*write)(value);
            for (const int count : {3, 0, -1})
                (context.*writeArray)(values, count);
        },
        [&](ioClientReadContext& client) {
            for (const T value : values)
                EXPECT_EQ(static_cast<T>((client.getContext().*read)()), value);
            T found[3] = {};
            for (const int count : {3, 0, -1})
                (client.getContext().*readArray)(found, count);
            EXPECT_THAT(found, testing::ElementsAreArray(values));
            client.readRawByte(); // what follows the last value
        });
}

} // namespace

TEST(PacketFormats, HoldEachKindOfValue) {
    expectKind<bool>('b', 'B', {true, false, true}, {"01", "00", "01"}, {"1", "0", "1"},
                     &W::writeBool, &R::readBool, &W::writeBoolArray, &R::readBoolArray);
    expectKind<char>('c', '1', {'a', -56, 0}, {"61", "C8", "00"}, {"97", "200", "0"}, &W::writeChar,
                     &R::readChar, &W::writeCharArray, &R::readCharArray);
    expectKind<unsigned char>('C', '2', {0, 200, 255}, {"00", "C8", "FF"}, {"0", "200", "255"},
                              &W::writeUChar, &R::readUChar, &W::writeUCharArray,
                              &R::readUCharArray);
    expectKind<short>('h', '3', {-2, 258, 0}, {"FEFF", "0201", "0000"}, {"-2", "258", "0"},
                      &W::writeShort, &R::readShort, &W::writeShortArray, &R::readShortArray);
    expectKind<unsigned short>('H', '4', {65534, 258, 0}, {"FEFF", "0201", "0000"},
                               {"65534", "258", "0"}, &W::writeUShort, &R::readUShort,
                               &W::writeUShortArray, &R::readUShortArray);
    expectKind<int>('i', '5', {-2, 66051, 0}, {"FEFFFFFF", "03020100", "00000000"},
                    {"-2", "66051", "0"}, &W::writeInt, &R::readInt, &W::writeIntArray,
                    &R::readIntArray);
    expectKind<unsigned int>('I', '6', {4294967294, 66051, 0}, {"FEFFFFFF", "03020100", "00000000"},
                             {"4294967294", "66051", "0"}, &W::writeUInt, &R::readUInt,
                             &W::writeUIntArray, &R::readUIntArray);
    expectKind<std::int64_t>('l', '7', {-2, 72623859790382856, 0},
                             {"FEFFFFFFFFFFFFFF", "0807060504030201", "0000000000000000"},
                             {"-2", "72623859790382856", "0"}, &W::writeInt64, &R::readInt64,
                             &W::writeInt64Array, &R::readInt64Array);
    expectKind<std::uint64_t>('L', '8', {18446744073709551614U, 7, 0},
                              {"FEFFFFFFFFFFFFFF", "0700000000000000", "0000000000000000"},
                              {"18446744073709551614", "7", "0"}, &W::writeUInt64, &R::readUInt64,
                              &W::writeUInt64Array, &R::readUInt64Array);
    expectKind<float>('f', '9', {-1.5F, 0.25F, 1e10F}, {"0000C0BF", "0000803E", "F9021550"},
                      {"-1.5", "0.25", "1e+10"}, &W::writeFloat, &R::readFloat, &W::writeFloatArray,
                      &R::readFloatArray);
    expectKind<double>('d', '0', {-2.25, 0.25, 1e100},
                       {"00000000000002C0", "000000000000D03F", "7DC39425AD49B254"},
                       {"-2.25", "0.25", "1e+100"}, &W::writeDouble, &R::readDouble,
                       &W::writeDoubleArray, &R::readDoubleArray);
}

TEST(PacketFormats, HoldStringsAndRawBytes) {
    const std::string text = "a\"b\\c[d]e{f}g<h>i\n\x01\xFF;";
    const std::string escaped = "\"a\\\"b\\\\c\\[d\\]e\\{f\\}g\\<h\\>i\n\x01\xFF;\" ";
    const auto bodyOf = [&](const Form& form) {
        const std::string tag(form.debug ? 1 : 0, 's');
        return form.text ? tag + escaped + tag + "\"\" \\}x"
                         : tag + text + '\0' + tag + '\0' + "}x";
    };
    expectForms(
        bodyOf,
        [&](ioWriteContext& context) {
            context.writeCString(text.c_str());
            context.writeCString(nullptr); // as the empty text
            context.writeRawByte('}');
            context.writeRawByte('x');
        },
        [&](ioClientReadContext& client) {
            EXPECT_EQ(client.readCString(), text);
            EXPECT_STREQ(client.readCString(), "");
            EXPECT_EQ(client.readRawByte(), '}');
            EXPECT_EQ(client.readRawByte(), 'x');
        });
}

TEST(PacketFormats, LayOutChunksAndSubPackets) {
    const std::string bodies[] = {
        bytes("',' 15000000 07000000 '.' 0B000000 0201 ',' 04000000 'x,' 07000000 'hi'00"),
        bytes("',' 00000015 00000007 '.' 0000000B 0102 ',' 00000004 'x,' 00000007 'hi'00"),
        "\n  [ 7 \n  < 258 \n  [ ] > x] \n  [ \"hi\" ] ",
        bytes("',i'1A000000 'i'07000000 '.i'0E000000 'h'0201 ',i'05000000 'x,i'09000000 'shi'00"),
        bytes("',i'0000001A 'i'00000007 '.i'0000000E 'h'0102 ',i'00000005 'x,i'00000009 'shi'00"),
        "\n  [ i7 \n  < h258 \n  [ ] > x] \n  [ s\"hi\" ] "};
    const auto bodyOf = [&](const Form& form) { return bodies[&form - forms]; };
    const Write write = [](ioWriteContext& context) {
        context.startChunk();
        context.writeInt(7);
        context.startSubPacket();
        context.writeShort(258);
        context.startChunk();
        context.endSubPacket();
        context.writeRawByte('x');
        context.startChunk();
        context.writeCString("hi");
    };
    expectForms(bodyOf, write, [](ioClientReadContext& client) {
        EXPECT_TRUE(client.nextChunk());
        EXPECT_EQ(client.readInt(), 7);
        client.startSubPacket();
        EXPECT_EQ(client.readShort(), 258);
        EXPECT_FALSE(client.nextChunk()); // empty
        client.endSubPacket();
        EXPECT_TRUE(client.nextChunk());
        EXPECT_STREQ(client.readCString(), "hi");
        EXPECT_FALSE(client.nextChunk());
        EXPECT_FALSE(client.isValidChunk());
    });
    expectForms(bodyOf, write, [](ioClientReadContext& client) { // that knows less
        EXPECT_TRUE(client.nextChunk());
        EXPECT_EQ(client.readInt(), 7);
        client.startSubPacket();
        client.endSubPacket();
        EXPECT_EQ(client.readRawByte(), 'x');
        EXPECT_TRUE(client.nextChunk());
        EXPECT_STREQ(client.readCString(), "hi");
    });
    expectForms(bodyOf, write, [](ioClientReadContext& client) { // and still less
        EXPECT_TRUE(client.nextChunk());
        EXPECT_TRUE(client.nextChunk());
        EXPECT_STREQ(client.readCString(), "hi");
    });
}

/// A number of its own for each object, forward and back; in debug files with the tags of the
/// reference and of the unsigned number that it is.
TEST(PacketFormats, HoldReferencesAsNumbers) {
    int object;
    const char name[] = "n";
    const Write write = [&](ioWriteContext& context) {
        context.startPacket("thing", &object);
        context.writeReference(nullptr, false);
        context.writeReference(name, false);
        context.writeReference(&object, false);
        context.endPacket();
        context.writeCStringPacket(name);
    };
    const std::string packets[] = {
        bytes("02000000 01000000 10000000 01000000 00000000 02000000 01000000"
              "00000000 01000000 06000000 02000000 'n'00"),
        bytes("00000002 00000001 00000010 00000001 00000000 00000002 00000001"
              "00000000 00000001 00000006 00000002 'n'00"),
        "{ 2 1 1 0 2 1 }\n{ 0 1 2 \"n\" }\n",
        bytes("02000000 01000000 18000000 'rI'01000000 'rI'00000000 'rI'02000000 'rI'01000000"
              "00000000 01000000 09000000 'rI'02000000 'sn'00"),
        bytes("00000002 00000001 00000018 'rI'00000001 'rI'00000000 'rI'00000002 'rI'00000001"
              "00000000 00000001 00000009 'rI'00000002 'sn'00"),
        "{ 2 1 rI1 rI0 rI2 rI1 }\n{ 0 1 rI2 s\"n\" }\n"};
    struct Client : ioClientReadContext {
        using ioClientReadContext::ioClientReadContext;
        void prePacketRead() override { ++before; }
        void postPacketRead() override { ++after; }
        int before = 0, after = 0;
    };
    for (const Form& form : forms) {
        SCOPED_TRACE(testing::Message() << "form " << &form - forms);
        if (!form.big) {
            EXPECT_EQ(written(form.writes(), write), packets[&form - forms] + form.end());
        }
        char* text = nullptr;
        void* null = &object;
        void* self = nullptr;
        Reader<Client> reader(form.file(packets[&form - forms]),
                              {{"thing", [&](ioClientReadContext& client) {
                                    EXPECT_EQ(client.getPacketReference(), 1);
                                    client.definePacketReference(&object);
                                    client.readReferenceUsage(&null, 0);
                                    client.readReferenceUsage(&text, 0);
                                    self = client.readReferenceUsage();
                                    EXPECT_EQ(static_cast<Client&>(client).before, 1);
                                }}});
        EXPECT_EQ(reader.client.readFile(), ioOK);
        EXPECT_EQ(reader.client.after, 2);
        EXPECT_EQ(null, nullptr);
        EXPECT_EQ(self, &object);
        EXPECT_STREQ(text, "n");
        std::free(text);
    }
}

TEST(PacketFormats, GrowWithTheirContents) {
    const std::string text(130000, '<');
    const std::vector<double> values(300000, 2.5); // more than is believed before it arrives
    const std::pair<ioWriteMethod, std::size_t> cases[] = {
        {ioWriteBinary, 12 + 130001 + 5 + 2400000 + 12},
        {ioWriteAscii, 6 + 260003 + 5 + 1200000 + 2 + 2 + 8}};
    for (const auto& [method, size] : cases) {
        const std::string packets = written(method, [&](ioWriteContext& context) {
            context.startPacket("thing", nullptr);
            context.writeCString(text.c_str());
            context.startChunk();
            for (int i = 0; i < 150000; ++i)
                context.writeDouble(2.5);
            context.writeDoubleArray(values.data(), 150000);
            context.endPacket();
        });
        EXPECT_EQ(packets.size(), size);
        std::vector<double> read(300000);
        EXPECT_EQ(
            readFile((method == ioWriteAscii ? textHeader : binaryHeader) + thingTypes + packets,
                     [&](ioClientReadContext& client) {
                         EXPECT_EQ(client.readCString(), text);
                         EXPECT_TRUE(client.nextChunk());
                         client.readDoubleArray(read.data(), 300000);
                         EXPECT_FALSE(client.nextChunk());
                     }),
            ioOK);
        EXPECT_EQ(read, values);
    }
}

TEST(PacketFormats, SwapArraysOfAnyLength) {
    for (const int count : {1023, 1024, 1025, 3000}) {
        std::vector<std::uint16_t> values(static_cast<std::size_t>(count)), read(values);
        std::string body;
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<std::uint16_t>(7 * i);
            body += {static_cast<char>(values[i] >> 8), static_cast<char>(values[i])};
        }
        EXPECT_EQ(readFile(forms[1].file(forms[1].thing(body)),
                           [&](ioClientReadContext& client) {
                               client.readUShortArray(read.data(), count);
                           }),
                  ioOK);
        EXPECT_EQ(read, values);
    }
}

/// Files by hand, with what a reader makes of them: the status, and how often it is
/// called.
TEST(PacketFormats, PassOverReservedPacketsAndRefuseWhatCannotBe) {
    const struct {
        std::string file;
        ioStatus status;
        int packets;
    } cases[] = {
        {binaryHeader + thingTypes + bytes("02000000 02000000 01000000 FF") + binaryEnd, ioOK, 0},
        {binaryHeader + thingTypes + bytes("02000000 FEFFFFFF 01000000 FF") + binaryEnd, ioOK, 0},
        {binaryHeader + thingTypes + bytes("02000000 00000000 00000000") + binaryEnd, ioOK, 1},
        {binaryHeader + thingTypes + bytes("FFFFFFFF 00000000 00000000") + binaryEnd, ioBadFile, 0},
        {binaryHeader + thingTypes + bytes("02000000 00000000 FFFFFFFF") + binaryEnd, ioBadFile, 0},
        {binaryHeader + thingTypes + bytes("03000000 00000000 00000000") + binaryEnd, ioBadFile, 0},
        {textHeader + thingTypes + "{ 2 3 }\n{ 2 -1 }\n" + textEnd, ioOK, 0},
        {textHeader + thingTypes + "{ -1 0 }\n" + textEnd, ioBadFile, 0},
        {textHeader + "   0 packetFile_EOF\n   1 stranger\n@\n{ 1 1 7 }\n{ 0 0 }\n", ioOK, 0},
    };
    for (const auto& [file, status, packets] : cases) {
        int read = 0;
        EXPECT_EQ(readFile(file, [&](ioClientReadContext&) { ++read; }), status) << file;
        EXPECT_EQ(read, packets) << file;
    }
}
