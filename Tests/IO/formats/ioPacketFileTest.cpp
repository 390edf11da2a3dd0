// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFile.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/AllocationCount.h"

#include "IO/formats/PacketFileSupport.h"

using namespace packets;

// The life of a file.

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

TEST(PacketFile, DropsPacketsThatAreGivenUpUnknownOrOpen) {
    const Write write = [](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        context.invalidPacket();
        context.endPacket();
        context.writeCStringPacket(nullptr);
    };
    EXPECT_EQ(written(ioWriteBinary, write), binaryEnd);
    EXPECT_EQ(written(ioWriteAscii, write), textEnd);
    const Write open = [](ioWriteContext& context) { context.startPacket("thing", nullptr); };
    EXPECT_EQ(written(ioWriteAscii, open, ioError), textEnd);

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

TEST(PacketFile, NeedsARegistry) {
    Output output;
    const std::unique_ptr<ioWriteContext> writer(
        ioWriteContextAlloc(output.stream, ioWriteBinary, nullptr));
    writer->startFile();
    EXPECT_TRUE(writer->isInFile());
    EXPECT_EQ(writer->getStatus(), ioError);
    EXPECT_EQ(output.bytes(), "");
}

TEST(PacketFile, MakesNoContextForMethodsThatItDoesNotKnow) {
    for (const int method : {-1, 4}) {
        Output output;
        EXPECT_EQ(ioWriteContextAlloc(output.stream, static_cast<ioWriteMethod>(method), nullptr),
                  nullptr);
    }
    Input input("^@\n1\n1 1 0\n1 2 4 8 4 8 8\n@\n");
    EXPECT_EQ(ioReadContextAlloc(input.stream, nullptr), nullptr);
}

TEST(PacketFile, TakesOverTheStatusOfTheStream) {
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
    Reader<> reader(textHeader + thingTypes + "{ 2 0 }\n{ 2 0 }\n" + textEnd,
                    {{"thing", [&](auto&) {
                          ++packets;
                          reader.input.stream.setStatus(streamChecksumError);
                      }}});
    EXPECT_EQ(reader.client.readFile(), ioChecksumError);
    EXPECT_EQ(packets, 1);
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
    Reader<> reader(textHeader + thingTypes + "{ 2 0 9 1 }\n{ 2 0 9 2 }\n{ 2 0 9 3 }\n" + textEnd);
    auto* type = new Halting;
    reader.registry.supportedType(type);
    EXPECT_EQ(reader.client.readFile(), ioHalted);
    EXPECT_EQ(reader.context->getPacketsRead(), 2);
    EXPECT_FALSE(type->isUnresolved()); // what is open is not told

    reader.context->setStatus(ioOK);
    reader.context->readPacket(reader.client); // outside of readFile()
    EXPECT_EQ(reader.context->getStatus(), ioError);
}

TEST(PacketFile, ReadsFurtherFilesOfTheSameStream) {
    const auto oneThing = [](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        context.endPacket();
    };
    const std::string file = binaryHeader + thingTypes + written(ioWriteBinary, oneThing);
    int packets = 0;
    Reader<> reader(file + file + textHeader + thingTypes + textEnd,
                    {{"thing", [&](auto&) { ++packets; }}});
    EXPECT_EQ(reader.client.readFile(), ioOK);
    EXPECT_TRUE(reader.context->reusePacketFile());
    EXPECT_EQ(reader.client.readFile(), ioOK);
    EXPECT_EQ(packets, 2);
    EXPECT_FALSE(reader.context->reusePacketFile()); // another format
    EXPECT_EQ(reader.client.readFile(), ioHalted);

    // The newline behind the last packet of a text file stands before the next header.
    Reader<> text(textHeader + thingTypes + textEnd + textHeader + thingTypes + textEnd);
    EXPECT_EQ(text.client.readFile(), ioOK);
    EXPECT_FALSE(text.context->reusePacketFile());
}

// What could only be misread.

TEST(PacketFile, RefusesAListThatNumbersTypesOtherwiseThanItsRegistry) {
    const std::string mesh =
        "   0 packetFile_string\n   1 packetFile_EOF\n   2 mesh\n   3 light\n@\n";
    const std::string light =
        "   0 packetFile_string\n   1 packetFile_EOF\n   2 light\n   3 mesh\n@\n";
    const std::string onlyLight = "   7 packetFile_string\n   8 packetFile_EOF\n   9 light\n@\n";
    const std::string lastAlike =
        "   0 packetFile_EOF\n   1 packetFile_string\n   2 mesh\n   3 light\n@\n";
    const struct {
        std::string first, second;
        ioStatus status;
    } cases[] = {{mesh, mesh, ioOK},           {mesh, light, ioBadFile},
                 {mesh, lastAlike, ioBadFile}, {mesh, onlyLight, ioBadFile},
                 {onlyLight, onlyLight, ioOK}, {onlyLight, mesh, ioBadFile}};
    for (const auto& [first, second, status] : cases) {
        int packets = 0;
        const Read read = [&](ioClientReadContext&) { ++packets; };
        Reader<> reader(textHeader + first + "{ 2 0 }\n{ 1 0 }\n",
                        {{"mesh", read}, {"light", read}});
        EXPECT_EQ(reader.client.readFile(), ioOK);
        Input next(textHeader + second + "{ 2 0 }\n{ 1 0 }\n");
        const std::unique_ptr<ioReadContext> context(
            ioReadContextAlloc(next.stream, &reader.registry));
        EXPECT_EQ(ioClientReadContext(context.get()).readFile(), status) << first << second;
        EXPECT_EQ(packets, status == ioOK ? 2 : 1);
    }
    std::string twice = thingTypes;
    twice.insert(twice.size() - 2, "   3 thing\n");
    EXPECT_EQ(readFile(textHeader + twice + textEnd, nullptr), ioBadFile);
    Input input(textHeader + twice + textEnd);
    EXPECT_EQ(ioPacketFileCheck(input.stream), ioBadFile);
}

TEST(PacketFile, RefusesToListOneNameTwice) {
    for (const bool list : {true, false}) {
        Output output;
        Registry registry(false, {{"thing", nullptr}, {"thing", nullptr}});
        ioWriteContextBinary context(output.stream);
        context.associateRegistry(&registry);
        context.writePacketRegistry(list);
        context.startFile();
        EXPECT_EQ(context.getStatus(), list ? ioError : ioOK);
        EXPECT_EQ(output.bytes(), list ? "" : binaryHeader + "@\n");
    }
}

TEST(PacketFile, DropsPacketsOfTypesThatTheFileDoesNotNumber) {
    for (const bool namesOnly : {true, false}) {
        Output output;
        Registry registry(namesOnly, {{"thing", nullptr}});
        ioWriteContextAscii context(output.stream);
        context.associateRegistry(&registry);
        context.startFile();
        const std::size_t start = output.bytes().size();
        registry.supportedType(new ioPacketType("late"));
        EXPECT_TRUE(context.good());
        context.startPacket(namesOnly ? "thing" : "late", &registry);
        context.writeInt(1);
        EXPECT_EQ(context.getStatus(), ioError);
        EXPECT_EQ(context.getReference(&registry), -1);
        context.endPacket();
        EXPECT_EQ(output.bytes().substr(start), "");
    }
}

// Memory.

TEST(PacketFile, LetsNoBadAllocOutOfReadFile) {
    EXPECT_EQ(readFile(textHeader + thingTypes + "{ 2 0 }\n" + textEnd,
                       [](ioClientReadContext&) { throw std::bad_alloc(); }),
              ioError);
}

TEST(PacketFileDeathTest, GivesAPacketThatCannotGrowUpAtOnce) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__clang__)
    GTEST_SKIP() << "sanitizers, which the builds by Clang have, need all addresses";
#endif
    const auto fill = [](ioWriteMethod method) {
        long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        const rlimit limit = {static_cast<rlim_t>(pages * 4096 + (30L << 20)), RLIM_INFINITY};
        setrlimit(RLIMIT_AS, &limit);
        std::size_t allocations = 0;
        const std::string packets = written(
            method,
            [&](ioWriteContext& context) {
                context.startPacket("thing", nullptr);
                for (int i = 0; i < 4000000; ++i) {
                    if (i == 3500000)
                        allocations = allocationCount();
                    context.writeInt64(i);
                }
                allocations = allocationCount() - allocations;
                context.endPacket();
            },
            ioError);
        std::fprintf(stderr, "%s, %d more", packets.c_str(), static_cast<int>(allocations));
        std::_Exit(0);
    };
    EXPECT_EXIT(fill(ioWriteAscii), testing::ExitedWithCode(0), "^, 0 more$");
    EXPECT_EXIT(fill(ioWriteBinary), testing::ExitedWithCode(0), "^, 0 more$");
}

// References between packets.

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
    Reader<> reader(textHeader + thingTypes + "{ 2 1 5 6 }\n" + textEnd);
    auto* type = new Reporting;
    reader.registry.supportedType(type);
    EXPECT_EQ(reader.client.readFile(), ioOK);
    EXPECT_TRUE(type->isUnresolved());
    EXPECT_TRUE(type->isUnreferenced());
    EXPECT_EQ(type->offset, 44);
    EXPECT_EQ(type->unused, type);
    EXPECT_EQ(type->location, nullptr);
    static void* reported;
    reader.context->reportUnresolvedPtrs(type, [](void* location, int) { reported = location; });
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

TEST(References, KeepTheFirstOfSeveralStringsOfAFileWithOneNumber) {
    std::set<const char*> texts;
    std::string found;
    const Read read = [&](ioClientReadContext& client) {
        texts.insert(static_cast<const char*>(client.readReferenceUsage()));
        found += *texts.rbegin()
                     ? *static_cast<const char*>(client.getContext().getReferenceDefinition(5))
                     : '0';
    };
    const std::string start =
        binaryHeader + thingTypes +
        bytes("00000000 01000000 06000000 05000000 'a' 00 02000000 00000000 04000000 05000000"
              "00000000 01000000 06000000 05000000 'b' 00 02000000 00000000 04000000 05000000");
    std::string next = start + binaryEnd;
    next[next.find(std::string("a\0", 2))] = 'c';
    const std::string unknownPacket = bytes("09000000 00000000 00000000");
    Reader<> reader(start + unknownPacket + next, {{"thing", read}});
    EXPECT_EQ(reader.client.readFile(), ioBadFile);
    EXPECT_EQ(found, "aa");
    ASSERT_TRUE(
        reader.context
            ->reusePacketFile()); // whose strings are new ones, however the first file ended
    EXPECT_EQ(reader.client.readFile(), ioOK);
    EXPECT_EQ(found, "aacc");
    EXPECT_EQ(texts.size(), 2U);
    for (const char* text : texts)
        std::free(const_cast<char*>(text));
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
