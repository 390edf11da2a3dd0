// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketRegistry.h"

#include <gtest/gtest.h>

#include "IO/formats/PacketFileSupport.h"

using namespace packets;

TEST(PacketRegistry, NumbersTypesInTheOrderTheyCome) {
    Registry registry(false, {{"mesh", nullptr}, {"light", nullptr}});
    auto* early = new ioPacketType("early");
    registry.supportedType(early);
    registry.init();
    registry.init(); // the built-in types come once
    EXPECT_EQ(registry.numTypes(), 5);
    const char* names[] = {"early", "packetFile_string", "packetFile_EOF", "mesh", "light"};
    for (int id = 0; id < 5; ++id) {
        ASSERT_TRUE(registry.lookup(id)) << id;
        EXPECT_STREQ(registry.lookup(id)->getName(), names[id]);
        EXPECT_EQ(registry.lookup(names[id])->getId(), id);
    }
    EXPECT_EQ(registry.lookup(-1), nullptr);
    EXPECT_EQ(registry.lookup(5), nullptr);
    EXPECT_EQ(registry.lookup("camera"), nullptr);

    Output output;
    registry.writeRegistry(output.stream, true);
    registry.writeRegistry(output.stream, false);
    EXPECT_EQ(output.bytes(), "   0 early\n   1 packetFile_string\n   2 packetFile_EOF\n"
                              "   3 mesh\n   4 light\n@\n@\n");
}

TEST(PacketRegistry, RefusesListsThatItCannotFollow) {
    const struct {
        const char* lines;
        int result;
        int numTypes;
    } cases[] = {
        {"@\n", 0, 0},
        {"@", 0, 0},
        {"0 a\n1 b\n@\n", 0, 2},
        {"-1 a\n4 b\n5 c\n@\n", 0, 3}, // -1 leaves the number to the next line
        {"2147483647 a\n-2147483648 b\n@\n", 0, 2},
        {"0 a\n1 b\n3 c\n@\n", 4, 2},
        {"0 a\n0 b\n@\n", 4, 1},
        {"0 a\n1\n@\n", 4, 1},
        {"a 0\n@\n", 4, 0},
        {"\n", 4, 0},
        {"", 1, 0},
        {"0 a\n", 1, 1},
        {"0 a\n1 b", 1, 1},
    };
    for (const auto& [lines, result, numTypes] : cases) {
        Input input(lines);
        Registry registry(true);
        EXPECT_EQ(registry.readRegistry(input.stream), result) << lines;
        EXPECT_EQ(registry.numTypes(), numTypes) << lines;
    }
}

TEST(PacketRegistry, TakesTheLaterOfTwoTypesWithOneName) {
    static int deleted;
    struct Counted : ioPacketType {
        Counted() : ioPacketType("mesh") {}
        ~Counted() override { ++deleted; }
    };
    deleted = 0;
    {
        Registry registry(false);
        auto* first = new Counted;
        auto* second = new Counted;
        registry.supportedType(first);
        registry.supportedType(second);
        registry.supportedType(second); // is there already
        EXPECT_EQ(registry.lookup("mesh"), second);
        EXPECT_EQ(registry.lookup(0), first); // packets may have this id
        EXPECT_EQ(registry.lookup(1), second);
        EXPECT_EQ(registry.numTypes(), 1);
    }
    EXPECT_EQ(deleted, 2);
    {
        Registry registry(true);
        auto* first = new Counted;
        registry.supportedType(first);
        registry.supportedType(new Counted);
        registry.supportedType(first); // comes back
        EXPECT_EQ(registry.lookup("mesh"), first);
    }
    EXPECT_EQ(deleted, 4);
}

TEST(SimplePacketRegistry, IsFilledBySlotsNewestFirst) {
    ioSimplePacketRegistry registry(false);
    for (const char* name : {"a", "b"})
        registry.registerSignal.connectOwned(
            [name](ioPacketRegistry* which) { which->supportedType(new ioPacketType(name)); });
    registry.init();
    EXPECT_EQ(registry.lookup("b")->getId(), 2);
    EXPECT_EQ(registry.lookup("a")->getId(), 3);
}

TEST(SimplePacketRegistry, ReadsByPlainFunctions) {
    static int calls;
    calls = 0;
    Output output;
    ioSimplePacketRegistry registry(false);
    registry.add("counted", [] { ++calls; });
    registry.add("written_only");
    const std::unique_ptr<ioWriteContext> writer(
        ioWriteContextAlloc(output.stream, ioWriteBinary, &registry));
    writer->startFile();
    for (const char* name : {"counted", "written_only", "counted"}) {
        writer->startPacket(name, nullptr);
        writer->endPacket();
    }
    writer->endFile();
    EXPECT_FALSE(writer->isInFile());
    EXPECT_EQ(registry.lookup("counted")->getNumUsages(), 2);

    Input input(output.bytes());
    const std::unique_ptr<ioReadContext> reader(ioReadContextAlloc(input.stream, &registry));
    ioClientReadContext client(reader.get());
    EXPECT_EQ(client.readFile(), ioOK);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(reader->getPacketsRead(), 3);
    EXPECT_EQ(registry.lookup("counted")->getNumUsages(), 4);
    EXPECT_EQ(registry.lookup("packetFile_EOF")->getNumUsages(), 2);
}
