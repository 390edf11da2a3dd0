// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileDebug.h"

#include <string>

#include <gtest/gtest.h>

#include "IO/formats/PacketFileSupport.h"

namespace {

using namespace packets;
using R = ioClientReadContext;

/// The three forms of a file with one such packet.
struct Bodies {
    std::string little, big, text;

    std::vector<std::string> files() const {
        return {forms[3].file(forms[3].thing(little)), forms[4].file(forms[4].thing(big)),
                forms[5].file(forms[5].thing(text))};
    }
};

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

} // namespace

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

TEST_F(Mismatches, NameBothTypes) {
    const Bodies oneShort = {bytes("'h'0700"), bytes("'h'0007"), "h7 "};
    expectMismatch(
        oneShort.files(), [](R& client) { client.readInt(); }, "Short (68)", "Int (69)");
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
