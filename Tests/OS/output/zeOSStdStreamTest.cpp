// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSStdStream.h"

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFile.h"

using zeOS::File;
using zeOS::StdStreamBuf;
using zeUtil::Error;

namespace {

/// Gives one answer after the other, and takes at most `taken` bytes in a write; after `room` bytes
/// it fails with code 28.
struct Scripted : zeOS::IOStream {
    struct Answer {
        std::string bytes;
        int code = 0;
    };

    Error read(void* buffer, unsigned long count, unsigned long* done) override {
        *done = 0;
        if (answers.empty())
            return Error(File::ErrEndOfFile, "the end");
        Answer& next = answers.front();
        *done = next.bytes.copy(static_cast<char*>(buffer), count);
        next.bytes.erase(0, *done);
        if (!next.bytes.empty())
            return Error();
        const int code = next.code;
        answers.erase(answers.begin());
        return Error(code, "");
    }
    Error write(const void* buffer, unsigned long count, unsigned long* done) override {
        *done = std::min({count, taken, room});
        written.append(static_cast<const char*>(buffer), *done);
        room -= *done;
        return room == 0 && *done < count ? Error(28, "full") : Error();
    }

    std::vector<Answer> answers;
    std::string written;
    unsigned long taken = static_cast<unsigned long>(-1);
    unsigned long room = static_cast<unsigned long>(-1);
};

} // namespace

TEST(StdInput, SaysWhetherItEndedOrFailed) {
    constexpr int end = File::ErrEndOfFile;
    const struct {
        const char* name;
        std::vector<Scripted::Answer> answers;
        int endCode, code;
        bool bad;
    } cases[] = {
        {"the end", {{"abc"}, {"de"}}, end, end, false},
        {"the end with the last bytes", {{"abc"}, {"de", end}}, end, end, false},
        {"a failure", {{"abcde"}, {"", 4}}, end, 4, true},
        {"a failure with the last bytes, and again", {{"abcde", 4}, {"", 4}}, end, 4, true},
        {"a failure with bytes that passes", {{"ab", 4}, {"cde"}}, end, end, false},
        {"a failure where any error is the end", {{"abcde"}, {"", 4}}, -1, 4, false},
        {"neither an error nor a byte", {{"abcde"}, {""}, {"more"}}, end, 0, false},
    };
    for (const auto& c : cases) {
        for (const std::size_t block : {0u, 1u, 4u, 4096u}) {
            SCOPED_TRACE(std::string(c.name) + " in blocks of " + std::to_string(block));
            Scripted stream;
            stream.answers = c.answers;
            zeOS::StdInput in(stream, c.endCode, block);
            std::string all;
            for (char byte; in.get(byte);)
                all += byte;
            EXPECT_EQ(all, "abcde");
            EXPECT_TRUE(in.bad() == c.bad && in.eof() == !c.bad);
            EXPECT_EQ(in.error().code(), c.code) << in.error();
            in.clear();
            EXPECT_TRUE(in.unget() && in.get() == 'e') << "even from the block before";
        }
    }
    Scripted failing;
    failing.answers = {{"", 4}};
    EXPECT_THROW(StdStreamBuf(failing, end).sgetc(), std::ios_base::failure);
}

/// Against string streams, whatever the blocks and however few bytes pass at once.
TEST(StdStreams, DoWhatStringStreamsDo) {
    std::mt19937 random(5);
    for (const std::size_t block : {1u, 2u, 7u, 4096u}) {
        SCOPED_TRACE(block);
        Scripted stream;
        std::ostringstream expected;
        {
            zeOS::StdOutput out(stream, block);
            for (int i = 0; i < 1000; ++i) {
                stream.taken = 1 + random() % 10;
                const std::string text = std::to_string(i) + std::string(random() % 20, ' ');
                out << text << std::flush;
                expected << text;
                ASSERT_EQ(out.tellp(), expected.tellp());
            }
            out << "left to the destructor";
            EXPECT_FALSE(out.seekp(0));
        }
        ASSERT_EQ(stream.written, expected.str() + "left to the destructor");

        for (std::size_t at = 0, n = 0; at < stream.written.size(); at += n)
            stream.answers.push_back({stream.written.substr(at, n = 1 + random() % 50)});
        zeOS::StdInput in(stream, File::ErrEndOfFile, block);
        std::istringstream twin(stream.written);
        for (std::string a, b; twin;) {
            in >> a;
            twin >> b;
            EXPECT_EQ(a, b);
            ASSERT_EQ(in.peek(), twin.peek());
            ASSERT_EQ(in.unget().get(), twin.unget().get());
            ASSERT_EQ(in.tellg(), twin.tellg());
            ASSERT_EQ(in.rdstate(), twin.rdstate());
        }
    }
}

TEST(StdOutput, KeepsWhatWasNotTakenAndGoesOnAfterAClear) {
    Scripted stream;
    stream.room = 10;
    zeOS::StdOutput out(stream, 4);
    out << "0123456789abcdef"; // more than a block: goes past it
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(out.error(), Error(28, "full"));
    out.clear();
    stream.room = 3;
    EXPECT_FALSE(out << "ab"
                     << "cd" << std::flush);
    out.clear();
    stream.room = 100;
    EXPECT_TRUE(out << std::flush);
    EXPECT_EQ(stream.written, "0123456789abcd");
    stream.taken = 0; // a success that takes nothing would be tried for ever
    out << "x" << std::flush;
    EXPECT_EQ(out.error().code(), File::ErrIO);
    struct : Scripted {
        Error write(const void*, unsigned long, unsigned long*) override { throw Error(1, "no"); }
    } throwing;
    zeOS::StdOutput(throwing) << "lost with the destructor";
}
