// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileAscii.h"

#include <bit>
#include <cfloat>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "Support/TempFolder.h"

#include "IO/formats/PacketFileSupport.h"

namespace {

using namespace packets;

std::string file(const std::string& packets) {
    return textHeader + thingTypes + packets;
}

ioStatus readThing(const std::string& elements, const Read& read, int blockSize = 4096) {
    return readFile(file("{ 2 0 " + elements + "}\n" + textEnd), read, nullptr, blockSize);
}

// Numbers: the same text as printf, the same values as strtod, strtol and strtoul. See also
// ioDecimalTextTest.cpp.

std::string printed(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text + std::string(" ");
}

void expectNumbersAsTheCLibrary(const std::vector<double>& values) {
    std::string expected = "{ 2 0 ";
    for (const double value : values)
        expected += printed("%.16g", value) +
                    printed("%.7g", static_cast<double>(static_cast<float>(value)));
    const std::string packets = written(ioWriteAscii, [&](ioWriteContext& context) {
        context.startPacket("thing", nullptr);
        for (const double value : values) {
            context.writeDouble(value);
            context.writeFloat(static_cast<float>(value));
        }
        context.endPacket();
    });
    ASSERT_EQ(packets, expected + "}\n" + textEnd);
    EXPECT_EQ(readFile(file(packets),
                       [&](ioClientReadContext& client) {
                           const char* text = expected.c_str() + 6;
                           char* next;
                           for (std::size_t i = 0; i < values.size(); ++i, text = next + 1) {
                               const double wide = std::strtod(text, &next);
                               ASSERT_EQ(std::bit_cast<std::uint64_t>(client.readDouble()),
                                         std::bit_cast<std::uint64_t>(wide));
                               text = next + 1;
                               const auto narrow = static_cast<float>(std::strtod(text, &next));
                               ASSERT_EQ(std::bit_cast<std::uint32_t>(client.readFloat()),
                                         std::bit_cast<std::uint32_t>(narrow));
                           }
                       }),
              ioOK);
}

std::vector<double> edgeValues() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> values = {0.0, 5e-324, 1.0 / 3, 9.9999995, 99999.95, 999999.95, 9999999.5};
    for (const double value : {1e16 - 1, 123456789012345.6, infinity, notANumber, DBL_EPSILON})
        values.push_back(value);
    for (const double value : {DBL_MAX, DBL_MIN, double(FLT_MAX), double(FLT_MIN), 1e22, 1e23})
        values.push_back(value);
    for (double power = 1e-300; power < 1e300; power *= 10)
        values.push_back(power);
    for (std::size_t i = values.size(); i-- > 0;)
        values.push_back(-values[i]);
    return values;
}

} // namespace

TEST(TextPackets, SkipWhatTheReaderDoesNotKnow) {
    int packets = 0;
    const auto check = [&](const std::string& elements, const Read& read) {
        for (const int blockSize : {1, 3, 4096})
            EXPECT_EQ(readThing(
                          elements,
                          [&](ioClientReadContext& client) {
                              ++packets;
                              read(client);
                          },
                          blockSize),
                      ioOK)
                << elements;
    };
    const std::string nested = "\n  < 5 \n  [ 1 \n  < \"\\]\\>\\}\" \n  [ ] > ] \n  [ 2 ] > 6 ";
    check(nested, [](ioClientReadContext& client) {
        client.startSubPacket();
        EXPECT_FALSE(client.nextChunk()); // there is a value first
        EXPECT_EQ(client.readInt(), 5);
        EXPECT_TRUE(
            client.nextChunk()); // the one behind: the search for an end has run all the same
        EXPECT_EQ(client.readInt(), 2);
        EXPECT_FALSE(client.nextChunk());
        EXPECT_FALSE(client.nextChunk()); // held at the end of the sub-packet
        client.endSubPacket();
        EXPECT_EQ(client.readInt(), 6);
    });
    check(nested, [](ioClientReadContext& client) {
        client.startSubPacket();
        EXPECT_EQ(client.readInt(), 5);
        EXPECT_TRUE(client.nextChunk());
        EXPECT_EQ(client.readInt(), 1);
        client.startSubPacket();
        EXPECT_FALSE(client.nextChunk()); // empty
        client.endSubPacket();
        EXPECT_FALSE(client.isValidChunk()); // one state for the whole packet
        client.endSubPacket();
        EXPECT_EQ(client.readInt(), 6);
    });
    check("[ [ < > ] 1 ", [](ioClientReadContext& client) { // not as a writer leaves it
        client.endSubPacket();
        client.startSubPacket();
        client.endSubPacket();
        client.readRawByte();
        client.nextChunk();
        client.startSubPacket();
        client.startSubPacket();
        EXPECT_EQ(client.readCString(), nullptr);
        EXPECT_EQ(client.readDouble(), 0);
        EXPECT_EQ(client.readRawByte(), 0);
    });
    EXPECT_EQ(packets, 9);
}

TEST(TextPackets, FindPacketsAmongOtherText) {
    int packets = 0;
    const Read read = [&](ioClientReadContext& client) {
        ++packets;
        EXPECT_EQ(client.readInt(), 8);
    };
    const std::string list = textHeader + thingTypes;
    EXPECT_EQ(readFile(list + "# by hand\n{\n  2 0 8 }{2 0 8}   " + textEnd, read), ioOK);
    EXPECT_EQ(packets, 2);
    EXPECT_EQ(readFile(list + "{ 2 0 8 }\n{ 1 0 }", read), ioOK); // lacks its last newline
    EXPECT_EQ(readFile(list + "{ 9 0 8 }\n", read), ioBadFile);
    for (const char* cut : {"{", "{ 2 0 8", "{ 2 0 8 \\", "{ 2 0 8 \\}"})
        EXPECT_EQ(readFile(list + cut, read), ioBadFile) << cut;
    EXPECT_EQ(packets, 3);
}

TEST(TextNumbers, AreThoseOfTheCLibrary) {
    expectNumbersAsTheCLibrary(edgeValues());
}

TEST(TextNumbers, ReadWhateverStandsThereAsTheCLibraryDoes) {
    // Two spaces in a row make an empty token, which leaves strtol() at the next one.
    std::istringstream tokens(
        "0 -0 +5 007 - + --5  x 5x 0x10 -0x10 0x 0x1p3 1e5 1E+5 1e 1e+ 1e999 -1e999 1e-999 .5 -.5 "
        "5. . -. inf -inf infinity nan nan(7) \t7 \n-8 255 256 -1 65536 2147483648 4294967296 "
        "-2147483649 9223372036854775807 9223372036854775808 -9223372036854775809 "
        "18446744073709551615 18446744073709551616 99999999999999999999 2.2250738585072014e-308 "
        "4.9e-324 2.4e-324 1.7976931348623159e308 "
        "0.1000000000000000055511151231257827021181583404541015625 "
        "123456789012345678901234567890");
    int count = 0;
    for (std::string token; std::getline(tokens, token, ' '); ++count) {
        SCOPED_TRACE(token);
        std::string elements;
        for (int kind = 0; kind < 7; ++kind)
            elements += token + ' ';
        const char* text = token.empty() ? "x" : token.c_str();
        const long number = std::strtol(text, nullptr, 10);
        const unsigned long natural = std::strtoul(text, nullptr, 10);
        const Read read = [&](ioClientReadContext& client) {
            EXPECT_EQ(client.readInt64(), number);
            EXPECT_EQ(client.readUInt64(), natural);
            EXPECT_EQ(client.readInt(), static_cast<int>(number));
            EXPECT_EQ(client.readShort(), static_cast<short>(number));
            EXPECT_EQ(client.readUInt(), static_cast<unsigned>(natural));
            EXPECT_EQ(client.readBool(), static_cast<unsigned char>(number) != 0); // 256 is false
            EXPECT_EQ(std::bit_cast<std::uint64_t>(client.readDouble()),
                      std::bit_cast<std::uint64_t>(std::strtod(text, nullptr)));
        };
        EXPECT_EQ(readThing(elements, read), ioOK);
    }
    EXPECT_EQ(count, 52);
}

TEST(TextNumbers, FollowTheDecimalPointOfTheLocale) {
    const TempFolder folder;
    folder.write("source", "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\n"
                           "grouping -1\nEND LC_NUMERIC\n");
    const std::string define = "cd '" + folder.path() +
                               "' && localedef -c -f ANSI_X3.4-1968 -i source ./comma "
                               ">/dev/null 2>&1";
    const bool ran = std::system(define.c_str()) != -1; // its warnings make it return 1
    setenv("LOCPATH", folder.path().c_str(), 1);
    const bool set = ran && std::setlocale(LC_NUMERIC, "comma") != nullptr;
    if (set) {
        EXPECT_NE(printed("%.16g", 2.5).find("2,5"), std::string::npos);
        expectNumbersAsTheCLibrary(edgeValues());
        EXPECT_EQ(readThing("2,5 2.5 ",
                            [](ioClientReadContext& client) {
                                EXPECT_EQ(client.readDouble(), 2.5);
                                EXPECT_EQ(client.readDouble(), 2);
                            }),
                  ioOK);
        std::setlocale(LC_NUMERIC, "C");
    }
    if (!set)
        GTEST_SKIP() << "no locale with a decimal comma can be made here";
}
