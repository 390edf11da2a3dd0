// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFile.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <typeinfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PacketFileSupport.h"

namespace {

using namespace packets;

// Values: one of each kind, in the three forms that a reader can meet.

void writeValues(ioWriteContext& context) {
    context.writeBool(true);
    context.writeChar(static_cast<char>(200));
    context.writeUChar(254);
    context.writeShort(-2);
    context.writeUShort(0x1234);
    context.writeInt(-3);
    context.writeUInt(0x89ABCDEF);
    context.writeInt64(-4);
    context.writeUInt64(0x0102030405060708);
    context.writeFloat(1.5F);
    context.writeDouble(-2.25);
    context.writeCString("ok");
    context.writeRawByte('[');
}

void readValues(ioClientReadContext& client) {
    EXPECT_EQ(client.readBool(), true);
    EXPECT_EQ(client.readChar(), 200);
    EXPECT_EQ(client.readUChar(), 254);
    EXPECT_EQ(client.readShort(), -2);
    EXPECT_EQ(client.readUShort(), 0x1234);
    EXPECT_EQ(client.readInt(), -3);
    EXPECT_EQ(client.readUInt(), 0x89ABCDEF);
    EXPECT_EQ(client.readInt64(), -4);
    EXPECT_EQ(client.readUInt64(), 0x0102030405060708U);
    EXPECT_EQ(client.readFloat(), 1.5F);
    EXPECT_EQ(client.readDouble(), -2.25);
    EXPECT_STREQ(client.readCString(), "ok");
    EXPECT_EQ(client.readRawByte(), '[');
}

TEST(PacketFile, WritesAndReadsEachKindOfValue) {
    const std::string binary =
        bytes("02000000 00000000 2F000000 01 C8 FE FEFF 3412 FDFFFFFF EFCDAB89"
              "FCFFFFFFFFFFFFFF 0807060504030201 0000C03F 00000000000002C0"
              "'ok'00 '['");
    const std::string swapped =
        bytes("00000002 00000000 0000002F 01 C8 FE FFFE 1234 FFFFFFFD 89ABCDEF"
              "FFFFFFFFFFFFFFFC 0102030405060708 3FC00000 C002000000000000"
              "'ok'00 '['");
    const std::string text = "{ 2 0 1 200 254 -2 4660 -3 2309737967 -4 72623859790382856 1.5 -2.25 "
                             "\"ok\" \\[}\n";
    const Write write = [](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        writeValues(context);
        context.endPacket();
    };
    EXPECT_EQ(written(ioWriteBinary, write), binary + binaryEnd);
    EXPECT_EQ(written(ioWriteAscii, write), text + textEnd);
    int packets = 0;
    for (const std::string& file : {binaryHeader + thingTypes + binary + binaryEnd,
                                    bigEndianHeader + thingTypes + swapped + bigEndianEnd,
                                    textHeader + thingTypes + text + textEnd})
        EXPECT_EQ(readFile(file,
                           [&](ioClientReadContext& client) {
                               ++packets;
                               readValues(client);
                           }),
                  ioOK);
    EXPECT_EQ(packets, 3);
}

/// The one array that `Write` and `Read` exchange, in each form; `text` is its text.
template<class T>
void expectArray(const T (&values)[3], void (ioWriteContext::*writeArray)(const T*, int),
                 void (ioReadContext::*readArray)(T*, int), const std::string& text) {
    SCOPED_TRACE(text);
    const Write write = [&](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        for (const int count : {3, 0, -1})
            (context.*writeArray)(values, count);
        context.endPacket();
    };
    constexpr char size = 3 * sizeof(T);
    const std::string body(reinterpret_cast<const char*>(values), sizeof values);
    std::string swappedBody;
    for (std::size_t i = 0; i < body.size(); i += sizeof(T)) {
        const std::string element = body.substr(i, sizeof(T));
        swappedBody.append(element.rbegin(), element.rend());
    }
    const std::string binary = bytes("02000000 00000000") + std::string({size, 0, 0, 0}) + body;
    const std::string swapped =
        bytes("00000002 00000000") + std::string({0, 0, 0, size}) + swappedBody;
    const std::string packet = "{ 2 0 " + text + " }\n";
    EXPECT_EQ(written(ioWriteBinary, write), binary + binaryEnd);
    EXPECT_EQ(written(ioWriteAscii, write), packet + textEnd);
    for (const std::string& file : {binaryHeader + thingTypes + binary + binaryEnd,
                                    bigEndianHeader + thingTypes + swapped + bigEndianEnd,
                                    textHeader + thingTypes + packet + textEnd})
        EXPECT_EQ(readFile(file,
                           [&](ioClientReadContext& client) {
                               T read[3] = {};
                               for (const int count : {0, -1, 3})
                                   (client.getContext().*readArray)(read, count);
                               EXPECT_THAT(read, testing::ElementsAreArray(values));
                           }),
                  ioOK);
}

TEST(PacketFile, WritesAndReadsEachKindOfArray) {
    using W = ioWriteContext;
    using R = ioReadContext;
    expectArray<bool>({true, false, true}, &W::writeBoolArray, &R::readBoolArray, "1 0 1");
    expectArray<char>({'a', -1, 0}, &W::writeCharArray, &R::readCharArray, "97 255 0");
    expectArray<unsigned char>({0, 200, 255}, &W::writeUCharArray, &R::readUCharArray, "0 200 255");
    expectArray<short>({-2, 258, 0}, &W::writeShortArray, &R::readShortArray, "-2 258 0");
    expectArray<unsigned short>({65534, 258, 0}, &W::writeUShortArray, &R::readUShortArray,
                                "65534 258 0");
    expectArray<int>({-2, 66051, 0}, &W::writeIntArray, &R::readIntArray, "-2 66051 0");
    expectArray<unsigned int>({4294967294, 66051, 0}, &W::writeUIntArray, &R::readUIntArray,
                              "4294967294 66051 0");
    expectArray<std::int64_t>({-2, 72623859790382856, 0}, &W::writeInt64Array, &R::readInt64Array,
                              "-2 72623859790382856 0");
    expectArray<std::uint64_t>({18446744073709551614U, 7, 0}, &W::writeUInt64Array,
                               &R::readUInt64Array, "18446744073709551614 7 0");
    expectArray<float>({-1.5F, 0.25F, 1e10F}, &W::writeFloatArray, &R::readFloatArray,
                       "-1.5 0.25 1e+10");
    expectArray<double>({-1.5, 0.25, 1e100}, &W::writeDoubleArray, &R::readDoubleArray,
                        "-1.5 0.25 1e+100");
}

// The life of a file.

TEST(PacketFile, PutsPacketsThatAreStartedInsideOthersFirst) {
    int outer, inner;
    const std::string packets = written(ioWriteAscii, [&](ioWriteContext& context) {
        context.startPacket("thing", &outer);
        context.writeInt(1);
        context.startChunk();
        for (int i = 0; i < 2; ++i) {
            context.startPacket("other", i == 0 ? &inner : nullptr);
            context.writeInt(2);
            context.endPacket();
        }
        context.writeReference(&inner, false);
        context.writeReference(nullptr, false);
        context.endPacket();
    });
    EXPECT_EQ(packets, "{ 3 1 2 2 }\n{ 3 0 2 }\n{ 2 1 1 1 \n  [ 2 0 ] }\n" + textEnd);
}

TEST(PacketFile, NestsAsDeepAsAClientLikes) {
    const std::string packets = written(ioWriteBinary, [](ioWriteContext& context) {
        for (int i = 0; i < 25; ++i) {
            context.startPacket("thing", nullptr);
            for (int level = 0; level < 25; ++level) {
                context.startChunk();
                context.startSubPacket();
            }
        }
        for (int i = 0; i < 25; ++i) {
            context.writeInt(i);
            for (int level = 0; level < 25; ++level)
                context.endSubPacket();
            context.endSubPacket(); // one too many: nothing
            context.endPacket();
        }
        context.endPacket(); // likewise
        context.startChunk();
        context.endChunk();
        context.invalidPacket();
    });
    int packetsRead = 0;
    EXPECT_EQ(
        readFile(binaryHeader + "0 packetFile_string\n1 packetFile_EOF\n2 thing\n@\n" + packets,
                 [&](ioClientReadContext& client) {
                     for (int level = 0; level < 25; ++level) {
                         EXPECT_TRUE(client.nextChunk());
                         client.startSubPacket();
                     }
                     EXPECT_EQ(client.readInt(), packetsRead++);
                 }),
        ioOK);
    EXPECT_EQ(packetsRead, 25);
}

TEST(PacketFile, DropsPacketsThatAreGivenUpOrUnknown) {
    const Write write = [](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        context.invalidPacket();
        context.endPacket();
        context.writeCStringPacket(nullptr);
    };
    EXPECT_EQ(written(ioWriteBinary, write), binaryEnd);
    EXPECT_EQ(written(ioWriteAscii, write), textEnd);

    for (const ioWriteMethod method : {ioWriteAscii, ioWriteBinary}) {
        int object;
        const Write stranger = [&](ioWriteContext& context) {
            context.startPacket("stranger", &object);
            context.startChunk();
            context.writeInt(1);
            context.endPacket();
            EXPECT_FALSE(context.isReferenceDefined(&object));
        };
        EXPECT_EQ(written(method, stranger, ioError), ""); // endFile() does nothing any more
    }
}

TEST(PacketFile, EndsAFileWithAPacketOpen) {
    EXPECT_EQ(written(
                  ioWriteAscii,
                  [](ioWriteContext& context) { context.startPacket("thing", nullptr); }, ioError),
              textEnd);
}

TEST(PacketFile, NeedsARegistry) {
    Output output;
    const std::unique_ptr<ioWriteContext> writer(
        ioWriteContextAlloc(output.stream, ioWriteBinary, nullptr));
    writer->startFile();
    EXPECT_TRUE(writer->isInFile());
    EXPECT_EQ(writer->getStatus(), ioError);
    EXPECT_EQ(output.bytes(), "");

    Input input(binaryHeader + thingTypes + binaryEnd);
    const std::unique_ptr<ioReadContext> reader(ioReadContextAlloc(input.stream, nullptr));
    ioClientReadContext client(reader.get());
    EXPECT_EQ(client.readFile(), ioError);
}

TEST(PacketFile, MakesTheContextThatTheHeaderAsksFor) {
    for (const int method : {-1, 4}) {
        Output output;
        EXPECT_EQ(ioWriteContextAlloc(output.stream, static_cast<ioWriteMethod>(method), nullptr),
                  nullptr);
    }
    const struct {
        const char* header;
        const std::type_info* type;
    } cases[] = {
        {"^@\n1\n1 1 1\n1 2 4 8 4 8 8\n@\n", &typeid(ioReadContextBinarySameEndian)},
        {"^@\n1\n0 1 1\n1 2 4 8 4 8 8\n@\n", &typeid(ioReadContextBinarySwapped)},
        {"^@\n1\n1 0 1\n1 2 4 8 4 8 8\n@\n", &typeid(ioReadContextAscii)},
        {"^@\n1\n1 1 0\n1 2 4 8 4 8 8\n@\n", nullptr},
        {"^@\n1\n1 2 1\n1 2 4 8 4 8 8\n@\n", &typeid(ioReadContextDebug<ioReadContextAscii>)},
        {"^@\n1\n1 3 1\n1 2 4 8 4 8 8\n@\n",
         &typeid(ioReadContextDebug<ioReadContextBinarySameEndian>)},
        {"^@\n1\n0 3 1\n1 2 4 8 4 8 8\n@\n",
         &typeid(ioReadContextDebug<ioReadContextBinarySwapped>)},
        {"^@\n1\n1 3 0\n1 2 4 8 4 8 8\n@\n", nullptr},
        {"^@\n1\n1 7 1\n1 2 4 8 4 8 8\n@\n", nullptr},
        {"PK\3\4", nullptr},
    };
    for (const auto& [header, type] : cases) {
        Input input(header);
        const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, nullptr));
        ASSERT_EQ(context != nullptr, type != nullptr) << header;
        if (type) {
            const ioReadContext& made = *context;
            EXPECT_EQ(typeid(made), *type);
        }
    }
}

TEST(PacketFile, TakesOverTheStatusOfTheStream) {
    const std::pair<ioStreamStatus, ioStatus> cases[] = {
        {streamOK, ioHalted},         {streamOpenError, ioOpenError},
        {streamEOF, ioBadFile},       {streamCompressEnd, ioBadFile},
        {streamDiskFull, ioDiskFull}, {streamChecksumError, ioChecksumError},
        {streamIOError, ioError},     {static_cast<ioStreamStatus>(77), ioError},
    };
    for (const auto& [streamStatus, status] : cases) {
        Output output;
        ioWriteContextBinary context(output.stream);
        context.setStatus(ioHalted);
        output.stream.setStatus(streamStatus);
        context.promoteStreamStatus(output.stream);
        EXPECT_EQ(context.getStatus(), status) << streamStatus;
    }

    Output output;
    Registry registry(false);
    ioWriteContextBinary writer(output.stream);
    writer.associateRegistry(&registry);
    output.stream.setStatus(streamDiskFull);
    writer.startFile();
    EXPECT_EQ(writer.getStatus(), ioDiskFull);
    writer.setStatus(ioOK);
    writer.endFile();
    EXPECT_EQ(writer.getStatus(), ioDiskFull);

    int packets = 0;
    Input input(textHeader + thingTypes + "{ 2 0 }\n{ 2 0 }\n" + textEnd);
    Registry known(true, {{"thing", [&](auto&) {
                               ++packets;
                               input.stream.setStatus(streamChecksumError);
                           }}});
    const std::unique_ptr<ioReadContext> reader(ioReadContextAlloc(input.stream, &known));
    ioClientReadContext client(reader.get());
    EXPECT_EQ(client.readFile(), ioChecksumError);
    EXPECT_EQ(packets, 1);
}

TEST(PacketFile, GoesWithoutAListOfTypesIfTheReaderNumbersAlike) {
    const std::string packets =
        written(ioWriteBinary, [](ioWriteContext& context) { // leaves the list out
            context.startPacket("other", nullptr);
            context.endPacket();
        });
    int others = 0;
    Registry registry(false, {{"thing", nullptr}, {"other", [&](auto&) { ++others; }}});
    Input input(binaryHeader + "@\n" + packets);
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    ioClientReadContext client(context.get());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_EQ(others, 1);
}

TEST(PacketFile, StopsWhereItIsTold) {
    struct Halting : ioPacketType {
        Halting() : ioPacketType("thing") {}
        void read(ioClientReadContext& client) override {
            client.readReferenceUsage(&location, 0);
            if (client.readInt() == 2)
                client.halt();
        }
        void* location = nullptr;
    };
    Registry registry(true);
    auto* type = new Halting;
    registry.supportedType(type);
    Input input(textHeader + thingTypes + "{ 2 0 9 1 }\n{ 2 0 9 2 }\n{ 2 0 9 3 }\n" + textEnd);
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    ioClientReadContext client(context.get());
    EXPECT_EQ(client.readFile(), ioHalted);
    EXPECT_EQ(context->getPacketsRead(), 2);
    EXPECT_FALSE(type->isUnresolved()); // what is open is not told

    ioClientReadContext outside(context.get());
    context->setStatus(ioOK);
    context->readPacket(outside);
    EXPECT_EQ(context->getStatus(), ioError);
}

TEST(PacketFile, ReadsFurtherFilesOfTheSameStream) {
    const auto oneThing = [](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        context.endPacket();
    };
    const std::string file = binaryHeader + thingTypes + written(ioWriteBinary, oneThing);
    int packets = 0;
    Registry registry(true, {{"thing", [&](auto&) { ++packets; }}});
    Input input(file + file + textHeader + thingTypes + textEnd);
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    ioClientReadContext client(context.get());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_TRUE(context->reusePacketFile());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_EQ(packets, 2);
    EXPECT_FALSE(context->reusePacketFile()); // another format
    EXPECT_EQ(client.readFile(), ioHalted);

    // The newline behind the last packet of a text file stands before the next header.
    Input text(textHeader + thingTypes + textEnd + textHeader + thingTypes + textEnd);
    Registry fresh(true);
    const std::unique_ptr<ioReadContext> textContext(ioReadContextAlloc(text.stream, &fresh));
    ioClientReadContext textClient(textContext.get());
    EXPECT_EQ(textClient.readFile(), ioOK);
    EXPECT_FALSE(textContext->reusePacketFile());
}

// References between packets.

struct Node {
    int value = 0;
    Node* next = nullptr;
    const char* name = nullptr;
};

class ReferencesInBothFormats : public testing::TestWithParam<ioWriteMethod> {};

TEST_P(ReferencesInBothFormats, BringPointersBack) {
    Node nodes[3];
    const char name[] = "shared";
    const std::string packets = written(GetParam(), [&](ioWriteContext& context) {
        for (int i = 0; i < 3; ++i) { // a ring: forward and backward references
            context.startPacket("thing", &nodes[i]);
            context.writeInt(i);
            context.writeReference(&nodes[(i + 1) % 3], false);
            context.writeReference(i == 1 ? nullptr : name, false);
            context.endPacket();
        }
        context.writeCStringPacket(name);
    });
    struct Client : ioClientReadContext {
        using ioClientReadContext::ioClientReadContext;
        void prePacketRead() override { ++before; }
        void postPacketRead() override { ++after; }
        int before = 0, after = 0;
    };
    Node read[3];
    Registry registry(true, {{"thing", [&](ioClientReadContext& client) {
                                  Node& node = read[static_cast<Client&>(client).after];
                                  client.definePacketReference(&node);
                                  node.value = client.readInt();
                                  client.readReferenceUsage(&node.next, 0);
                                  client.readReferenceUsage(&node.name, 0);
                              }}});
    Input input((GetParam() == ioWriteAscii ? textHeader : binaryHeader) + thingTypes + packets);
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    Client client(context.get());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_EQ(client.before, 4);
    EXPECT_EQ(client.after, 4);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(read[i].value, i);
        EXPECT_EQ(read[i].next, &read[(i + 1) % 3]);
    }
    EXPECT_STREQ(read[0].name, "shared");
    EXPECT_EQ(read[1].name, nullptr);
    EXPECT_EQ(read[2].name, read[0].name);
    std::free(const_cast<char*>(read[0].name));
}

INSTANTIATE_TEST_SUITE_P(, ReferencesInBothFormats, testing::Values(ioWriteAscii, ioWriteBinary),
                         [](const auto& method) { return method.param ? "Binary" : "Text"; });

TEST(References, AreReadByNumberAndByPointer) {
    const std::string packet = "{ 2 1 5 6 7 5 0 5 }\n";
    int object, part, alias;
    EXPECT_EQ(readFile(textHeader + thingTypes + packet + textEnd,
                       [&](ioClientReadContext& client) {
                           EXPECT_EQ(client.getPacketReference(), 5);
                           client.defineReference(5, &object); // by number is as good
                           client.readReferenceDefinition(&part);
                           client.defineReferenceAlias(client.readReference(), &alias);
                           EXPECT_EQ(client.readReferenceUsage(), &object);
                           int number = -1;
                           EXPECT_EQ(client.readReferenceUsage(number), nullptr);
                           EXPECT_EQ(number, 0);
                           const ioContext& context = client.getContext();
                           EXPECT_EQ(context.getReference(&part), 6);
                           EXPECT_EQ(context.getReferenceDefinition(7), &alias);
                           EXPECT_TRUE(context.isReferenceDefined(&part));
                           client.undefineReference(&part);
                           EXPECT_FALSE(context.isReferenceDefined(6));
                           EXPECT_EQ(context.getReference(&part), -1);
                           void* late = &object;
                           client.resolveReference(7, &late, 0);
                           EXPECT_EQ(late, &alias);
                           client.useReference(&object);
                       }),
              ioOK);
}

TEST(References, ReportWhatStaysOpenAtTheEnd) {
    struct Reporting : ioPacketType {
        Reporting() : ioPacketType("thing") {}
        void read(ioClientReadContext& client) override {
            client.definePacketReference(this);
            client.readReferenceUsage(&location, 44);
        }
        void memoryNotReferenced(ioClientReadContext&, void* memory) override { unused = memory; }
        void hasUnresolvedPointer(ioClientReadContext&, void*, int where) override {
            offset = where;
        }
        void* location = this;
        void* unused = nullptr;
        int offset = 0;
    };
    Registry registry(true);
    auto* type = new Reporting;
    registry.supportedType(type);
    Input input(textHeader + thingTypes + "{ 2 1 5 6 }\n" + textEnd);
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    ioClientReadContext client(context.get());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_TRUE(type->isUnresolved());
    EXPECT_TRUE(type->isUnreferenced());
    EXPECT_EQ(type->offset, 44);
    EXPECT_EQ(type->unused, type);
    EXPECT_EQ(type->location, nullptr);
    static void* reported;
    context->reportUnresolvedPtrs(type, [](void* location, int) { reported = location; });
    EXPECT_EQ(reported, &type->location);
}

TEST(References, OfDamagedFilesAreDefinedWithoutEffect) {
    const char* packets[] = {
        "{ 0 1 4294967295 \"lost\" }\n", // negative as a number of the map
        "{ 0 1 2147483648 }\n",
        "{ 0 1 5 }\n", // no string
        "{ 0 1 0 \"lost\" }\n",
        "{ 0 0 \"lost\" }\n",
        "{ 2 1 4294967295 }\n",
    };
    for (const char* packet : packets)
        EXPECT_EQ(readFile(textHeader + thingTypes + packet + textEnd,
                           [](ioClientReadContext& client) {
                               client.definePacketReference(&client);
                               EXPECT_EQ(client.getContext().getReference(&client), -1);
                           }),
                  ioOK)
            << packet;
}

// What ends the process.

TEST(PacketFileDeathTest, EndsAtAnUndefinedPacketReference) {
    const std::string file = textHeader + thingTypes + "{ 2 1 5 }\n" + textEnd;
    EXPECT_EXIT(readFile(file, [](ioClientReadContext&) {}), testing::KilledBySignal(SIGABRT),
                "^ioPacketFile: A packet type: 'thing'\n"
                "  had a reference associated with it but no \n"
                "  definition was provided by the client code.\n"
                "  The undefined reference is: 0.\n"
                "ioPacketFile: Fatal error.  Aborting.\n$");
    EXPECT_EQ(readFile(file, [](ioClientReadContext& client) { client.invalidPacket(); }), ioOK);
}

TEST(PacketFileDeathTest, TellsTheEnclosingPacketsAndCallsBothHooks) {
    const auto fail = [] {
        ioPacketFileErrorInit([](char* text) { std::fprintf(stderr, "hook: %s", text); });
        ioPacketFileAbortInit([] { std::fputs("last words\n", stderr); });
        Output output;
        Registry registry(false, {{"thing", nullptr}});
        ioWriteContextAscii context(output.stream);
        context.associateRegistry(&registry);
        context.startFile();
        for (int i = 0; i < 3; ++i)
            context.startPacket("thing", nullptr);
        context.fatalError();
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT),
                "^hook: ioPacketFile: Fatal error.  Aborting.\n"
                "hook:   0: -?[0-9]+\nhook:   1: -?[0-9]+\nlast words\n$");
}

TEST(PacketFileError, CutsLongMessages) {
    static std::string message;
    ioPacketFileErrorInit([](char* text) { message = text; });
    ioPacketFileError("%s", std::string(2000, 'x').c_str());
    ioPacketFileErrorInit(nullptr);
    EXPECT_EQ(message, std::string(1023, 'x'));
}

} // namespace
