// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSOStream.h"

#include <algorithm>
#include <climits>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSIOStream.h"
#include "Base/Strings/zeStringCString.h"

using zeOS::File;
using zeOS::OStream;
using zeUtil::Error;

namespace {

/// Records what is written, and takes no more of it at once than it is told.
struct Recorder : zeOS::IOStream {
    Error read(void*, unsigned long, unsigned long*) override { return Error(1, "write only"); }
    Error write(const void* bytes, unsigned long count, unsigned long* done) override {
        sizes.push_back(count);
        const bool fails = sizes.size() == failAt;
        const unsigned long taken = std::min(count, fails ? takenInFailure : limit);
        text.append(static_cast<const char*>(bytes), taken);
        *done = taken;
        return fails ? Error(77, "broken") : Error();
    }

    std::string text;
    std::vector<unsigned long> sizes;
    unsigned long limit = ULONG_MAX;
    std::size_t failAt = 0; ///< which write fails, from 1
    unsigned long takenInFailure = 0;
};

/// Bytes of which each stretch is different.
std::string pattern(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; text.size() < count; ++i)
        text += std::to_string(i) + ' ';
    text.resize(count);
    return text;
}

template<class Value>
std::string printed(Value value) {
    Recorder recorder;
    OStream(recorder) << value;
    return recorder.text;
}

} // namespace

TEST(OStream, WritesValuesAsText) {
    EXPECT_EQ(printed('c'), "c");
    EXPECT_EQ(printed(static_cast<unsigned char>(0xFF)), "\xFF");
    EXPECT_EQ(printed("text"), "text");
    EXPECT_EQ(printed(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(printed(zeString::CString("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(printed(INT_MIN), "-2147483648");
    EXPECT_EQ(printed(static_cast<short>(-7)), "-7");
    EXPECT_EQ(printed(UINT_MAX), "4294967295");
    EXPECT_EQ(printed(LONG_MIN), "-9223372036854775808");
    EXPECT_EQ(printed(ULONG_MAX), "18446744073709551615");
    EXPECT_EQ(printed(static_cast<unsigned short>(65535)), "65535");
    EXPECT_EQ(printed(0.5F), "0.500000");
    EXPECT_EQ(printed(-1e15), "-1000000000000000.000000");
    EXPECT_EQ(printed(-std::numeric_limits<double>::max()).size(), 317u);
    EXPECT_EQ(printed(reinterpret_cast<const void*>(0x1234)), "0x0x1234");
    EXPECT_EQ(printed(static_cast<const void*>(nullptr)), "0x(nil)");
}

TEST(OStream, WritesABlockWhenTheNextByteDoesNotFit) {
    Recorder recorder;
    OStream stream(recorder);
    stream << pattern(4096).c_str();
    EXPECT_TRUE(recorder.sizes.empty());
    stream << 'x';
    EXPECT_EQ(recorder.sizes, (std::vector<unsigned long>{4096}));
    stream.flush();
    EXPECT_EQ(recorder.sizes, (std::vector<unsigned long>{4096, 1}));
    stream << pattern(5000).c_str();
    EXPECT_EQ(recorder.sizes.size(), 3u);
    stream.flush().flush();
    EXPECT_EQ(recorder.sizes, (std::vector<unsigned long>{4096, 1, 4096, 904}));
    EXPECT_EQ(recorder.text, pattern(4096) + "x" + pattern(5000));
    EXPECT_EQ(&stream.stream(), &recorder);
}

TEST(OStream, WritesWhatABufferByteForByteWould) {
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        Recorder recorder;
        Recorder expected;
        recorder.limit = expected.limit = round % 2 ? 1 + random() % 5000 : ULONG_MAX;
        std::string buffer;
        const auto writeOut = [&] {
            while (!buffer.empty()) {
                unsigned long done = 0;
                expected.write(buffer.data(), buffer.size(), &done);
                buffer.erase(0, done);
            }
        };
        {
            OStream stream(recorder);
            for (int i = 0; i < 20; ++i) {
                const std::string text = pattern(random() % (i % 4 ? 3000 : 20000));
                stream << zeString::CString(text.data(), static_cast<int>(text.size()));
                for (const char c : text) {
                    if (buffer.size() == 4096)
                        writeOut();
                    buffer += c;
                }
            }
        }
        writeOut();
        EXPECT_EQ(recorder.sizes, expected.sizes);
        EXPECT_EQ(recorder.text, expected.text);
    }
}

TEST(OStream, KeepsTheFirstErrorAndDropsTheRest) {
    const std::string text = pattern(20000);
    Recorder whole;
    whole.limit = 3000;
    OStream(whole) << text.c_str();
    ASSERT_GT(whole.sizes.size(), 8u);
    for (std::size_t n = 1; n <= whole.sizes.size() + 1; ++n)
        for (const unsigned long taken : {0UL, 100UL, 5000UL}) {
            Recorder recorder;
            recorder.limit = 3000;
            recorder.failAt = n;
            recorder.takenInFailure = taken;
            OStream stream(recorder);
            stream << text.c_str();
            stream.flush();
            if (n > whole.sizes.size()) {
                EXPECT_TRUE(stream);
                EXPECT_EQ(recorder.text, text);
                continue;
            }
            EXPECT_FALSE(stream);
            EXPECT_TRUE(stream.error() == Error(77, "broken"));
            EXPECT_EQ(recorder.sizes.size(), n);
            EXPECT_EQ(recorder.text, text.substr(0, recorder.text.size()));
            stream.format("%d", 1).flush() << text.c_str();
            EXPECT_EQ(recorder.sizes.size(), n);
        }
}

TEST(OStream, EndsAWriteThatMakesNoProgress) {
    Recorder recorder;
    recorder.limit = 0;
    OStream stream(recorder);
    stream << "text";
    stream.flush();
    EXPECT_EQ(stream.error().code(), File::ErrIO);
    EXPECT_EQ(recorder.sizes.size(), 1u);
}

TEST(OStream, FormatsTextsOfAnyLength) {
    std::string expected;
    Recorder recorder;
    OStream stream(recorder);
    for (const std::size_t length : {0u, 1u, 4094u, 4095u, 4096u, 8191u, 8192u, 100000u, 5u}) {
        const std::string text = pattern(length);
        stream.format("%s|%d%S|", text.c_str(), 7, L"wide");
        expected += text + "|7wide|";
    }
    stream.format("%c%%", 0); // a zero byte is a byte
    expected += std::string("\0%", 2);
    stream.flush();
    EXPECT_EQ(recorder.text, expected);
}

TEST(OStream, WritesNothingForAFormatThatFails) {
    Recorder recorder;
    OStream stream(recorder);
    stream.format("a%Sb", L"\u00FC").format(nullptr); // the "C" locale has no such character
    EXPECT_TRUE(stream);
    stream.format("%s", "next").flush();
    EXPECT_EQ(recorder.text, "next");
}
