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

} // namespace

TEST(OStream, WritesValuesAsText) {
    Recorder recorder;
    OStream(recorder) << 'c' << static_cast<unsigned char>(0xFF) << "text"
                      << static_cast<const char*>(nullptr) << zeString::CString("a\0b", 3)
                      << INT_MIN << static_cast<short>(-7) << ' ' << UINT_MAX << LONG_MIN << ' '
                      << ULONG_MAX << ' ' << static_cast<unsigned short>(65535) << ' ' << 0.5F
                      << -1e15 << reinterpret_cast<const void*>(0x1234)
                      << static_cast<const void*>(nullptr);
    EXPECT_EQ(recorder.text,
              std::string("c\xFFtexta\0b", 9) +
                  "-2147483648-7 4294967295-9223372036854775808 18446744073709551615 65535 "
                  "0.500000-1000000000000000.0000000x0x12340x(nil)");
    recorder.text.clear();
    OStream(recorder) << -std::numeric_limits<double>::max();
    EXPECT_EQ(recorder.text.size(), 317u);
}

TEST(OStream, WritesWhatABufferByteForByteWould) {
    constexpr unsigned any = UINT_MAX;
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
            EXPECT_EQ(&stream.stream(), &recorder);
            for (const unsigned length :
                 {4096u, 1u, 0u, 4096u, 0u, 0u, 5000u, 0u, any, any, any, any}) {
                const std::string text = pattern(length == any ? random() % 20000 : length);
                stream << zeString::CString(text.data(), static_cast<int>(text.size()));
                for (const char c : text) {
                    if (buffer.size() == 4096)
                        writeOut();
                    buffer += c;
                }
                if (text.empty()) {
                    stream.flush();
                    writeOut();
                }
                EXPECT_EQ(recorder.sizes, expected.sizes);
            }
        }
        writeOut();
        EXPECT_EQ(recorder.sizes, expected.sizes);
        EXPECT_EQ(recorder.text, expected.text);
    }
}

TEST(OStream, KeepsTheFirstErrorAndDropsTheRest) {
    const std::string text = pattern(20000);
    bool failed = true;
    for (std::size_t n = 1; failed; ++n)
        for (const unsigned long taken : {0UL, 100UL, 5000UL}) {
            Recorder recorder;
            recorder.limit = 3000;
            recorder.failAt = n;
            recorder.takenInFailure = taken;
            OStream stream(recorder);
            stream << text.c_str();
            stream.flush();
            failed = !stream;
            EXPECT_EQ(recorder.text, text.substr(0, recorder.text.size()));
            if (!failed) {
                EXPECT_GT(n, 9u);
                EXPECT_EQ(recorder.text, text);
                continue;
            }
            EXPECT_TRUE(stream.error() == Error(77, "broken"));
            stream.format("%d", 1).flush() << text.c_str();
            EXPECT_EQ(recorder.sizes.size(), n);
        }
}

TEST(OStream, EndsAWriteThatMakesNoProgress) {
    Recorder recorder;
    recorder.limit = 0;
    OStream stream(recorder);
    stream.format("text").flush();
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
    // The "C" locale has no such character: nothing is written.
    stream.format("a%Sb", L"\u00FC").format(nullptr).flush();
    EXPECT_TRUE(stream);
    EXPECT_EQ(recorder.text, expected);
}
