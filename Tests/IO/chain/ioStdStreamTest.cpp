// SPDX-License-Identifier: MIT

#include "Base/IO/ioStdStream.h"

#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/IO/ioBufferFD.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

namespace {

class StdStreams : public testing::Test {
protected:
    zeString::IString name(const char* file) {
        return zeString::IString(folder.path(file).c_str(), zeString::EncodingUTF8);
    }
    void write(const char* file, const std::string& bytes) {
        ioBufferedStreamOutput out;
        out.openFile(name(file));
        out.writeData(bytes.data(), int(bytes.size()));
        out.close();
    }

    /// Numbers and words, more than a block of a file holds.
    static std::string lines() {
        std::ostringstream text;
        for (int i = 0; i < 60'000; ++i)
            text << i << (i % 7 ? ' ' : '\n');
        return text.str();
    }

    TempFolder folder;
    const std::string content = lines();
    std::mt19937 random{9};
};

/// One step of reading, the same on both; whether they agree.
void step(std::istream& a, std::istream& b, unsigned choice, std::streamsize n) {
    std::string first(std::size_t(n), '\0'), second = first;
    switch (choice) {
    case 0:
        a.read(first.data(), n);
        b.read(second.data(), n);
        break;
    case 1:
        std::getline(a, first);
        std::getline(b, second);
        break;
    case 2:
        a >> first;
        b >> second;
        break;
    default:
        EXPECT_EQ(a.peek(), b.peek());
        EXPECT_EQ(a.get(), b.get());
        EXPECT_EQ(bool(a.unget()), bool(b.unget()));
    }
    ASSERT_EQ(first, second);
    ASSERT_EQ(a.rdstate(), b.rdstate());
}

} // namespace

/// Under each filter the file has the same bytes as if the stream had been used directly, and what
/// one adapter does not read, the stream or another adapter does.
TEST_F(StdStreams, PassThroughFiltersAndHoldNothingBack) {
    void (ioBufferedStream::*const filters[])(bool) = {nullptr, &ioBufferedStream::compress,
                                                       &ioBufferedStream::checksum,
                                                       &ioBufferedStream::encrypt};
    for (const auto filter : filters) {
        const auto set = [filter](ioBufferedStream& stream, bool on) {
            if (filter)
                (stream.*filter)(on);
        };
        std::string files[2];
        for (const bool adapted : {false, true}) {
            ioBufferedStreamOutput file;
            file.openFile(name("file"));
            file.writeString("head");
            set(file, true);
            if (adapted) {
                ioStdOutput out(file);
                std::istringstream words(content);
                for (std::string line; std::getline(words, line);) {
                    out << line; // and a byte of its own
                    if (!words.eof())
                        out.put('\n');
                }
                EXPECT_TRUE(out && out.status() == streamOK);
            } else {
                file.writeData(content.data(), int(content.size()));
            }
            set(file, false);
            file.writeString("tail");
            file.close();
            files[adapted] = folder.read("file");
        }
        EXPECT_EQ(files[0], files[1]);

        ioBufferedStreamInput file;
        file.openFile(name("file"));
        char head[4];
        file.readData(head, 4);
        set(file, true);
        std::istringstream twin(content);
        while (twin && twin.tellg() < std::streamoff(content.size()) - 5000) {
            ioStdInput in(file);
            for (int i = 0; i < 20; ++i)
                step(in, twin, random() % 4, std::streamsize(1 + random() % 200));
            EXPECT_EQ(in.rdbuf()->pubsync(), 0);
            EXPECT_EQ(file.readChar(), twin.get());
            EXPECT_EQ(in.get(), twin.get());
        }
        if (!filter || filter == &ioBufferedStream::compress) { // the others end nowhere
            ioStdInput in(file);
            const std::string rest(std::istreambuf_iterator<char>(in), {});
            const std::string left = content.substr(std::size_t(twin.tellg()));
            EXPECT_EQ(rest, filter ? left : left + "tail");
            EXPECT_EQ(in.status(), filter ? streamCompressEnd : streamEOF);
        }
        file.close();
    }
}

TEST_F(StdStreams, SeekInFilesAndSlices) {
    write("file", content);
    for (const bool slice : {false, true}) {
        ioBufferedStreamInput file;
        const std::string part = slice ? content.substr(1000, 300'000) : content;
        if (slice)
            file.openFileSlice(name("file"), 1000, 300'000);
        else
            file.openFile(name("file"));
        file.readChar(); // positions are the file's, not the adapter's
        ioStdInput in(file);
        std::istringstream twin(part);
        twin.get();
        for (int i = 0; i < 3000; ++i) {
            const std::ios_base::seekdir from[] = {std::ios_base::beg, std::ios_base::cur,
                                                   std::ios_base::end};
            const auto direction = from[random() % 3];
            const long size = long(part.size());
            const long offset = long(random() % (i % 2 ? 20'000u : unsigned(size) + 10)) *
                                (direction == std::ios_base::end ? -1 : 1);
            const bool before = random() % 100 == 0; // the beginning: both fail
            in.clear();
            twin.clear();
            const long target = before                            ? -1
                                : direction == std::ios_base::beg ? offset
                                : direction == std::ios_base::cur ? long(twin.tellg()) + offset
                                                                  : size + offset;
            if (target > size) // a file can be longer than it is, a string stream cannot
                continue;
            in.seekg(before ? -1 : offset, before ? std::ios_base::beg : direction);
            twin.seekg(before ? -1 : offset, before ? std::ios_base::beg : direction);
            ASSERT_EQ(in.rdstate(), twin.rdstate()) << target;
            in.clear();
            twin.clear();
            ASSERT_EQ(in.tellg(), twin.tellg());
            step(in, twin, random() % 4, std::streamsize(1 + random() % 300));
        }
        in.clear();
        EXPECT_EQ(in.seekg(0, std::ios_base::end).tellg(), std::streamoff(part.size()));
        EXPECT_EQ(in.get(), EOF);
        in.clear();
        EXPECT_EQ(in.seekg(0).get(), part[0]) << "left the end";
        file.close();
    }

    ioBufferedStreamOutput file;
    file.openFile(name("out"));
    ioStdOutput out(file);
    out << "0123456789";
    EXPECT_EQ(out.tellp(), 10);
    out.seekp(2) << 'c';
    out.seekp(-1, std::ios_base::end) << 'j';
    out.seekp(-6, std::ios_base::cur) << 'e';
    EXPECT_FALSE(out.seekp(-1));
    out.clear();
    EXPECT_EQ(out.tellp(), 5);
    file.close();
    EXPECT_EQ(folder.read("out"), "01c3e5678j");
}

TEST_F(StdStreams, LoseNothingWhereTheyCannotSeek) {
    write("file", "abcdef");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], "abcdef", 6), 6);
    ::close(ends[1]);
    struct Piped : ioBufferedStreamInput {
        explicit Piped(int fd) {
            auto* const link = new ioBufferFD(true);
            startChain(link);
            link->useFD(fd);
        }
    } piped(ends[0]);
    ioBufferedStreamInput filtered;
    ioBufferedStreamOutput file;
    file.openFile(name("sum"));
    file.checksum(true);
    ioStdOutput out(file);
    out << "abcdef";
    EXPECT_EQ(out.tellp(), -1);
    file.close();
    EXPECT_FALSE(out << 'x') << "closed";
    filtered.openFile(name("sum"));
    filtered.checksum(true);
    for (ioBufferedStreamInput* stream : {&filtered, static_cast<ioBufferedStreamInput*>(&piped)}) {
        ioStdInput in(*stream);
        EXPECT_EQ(in.get(), 'a');
        EXPECT_EQ(in.tellg(), -1);
        in.clear();
        EXPECT_FALSE(in.seekg(0));
        in.clear();
        std::string rest;
        EXPECT_TRUE(in >> rest && rest == "bcdef" && in.eof());
        stream->close();
    }
    ioBufferedStreamInput closed;
    ioStdInput in(closed);
    in.get();
    EXPECT_TRUE(in.bad());
}

TEST_F(StdStreams, TurnFailuresIntoBadbitAndKeepTheStatus) {
    write("file", content);
    ioBufferedStreamInput file;
    file.openFile(name("file"));
    {
        SystemFaults faults(SystemFaults::onRead, {{0, 100}, {EIO}});
        ioStdInput in(file);
        std::string all(200, ' ');
        EXPECT_FALSE(in.read(all.data(), 200));
        EXPECT_TRUE(in.bad() && in.status() == streamIOError);
        EXPECT_THROW(in.rdbuf()->sgetc(), std::ios_base::failure);
    }
    file.close();

    ioBufferedStreamOutput full;
    full.openFile(name("full"));
    {
        SystemFaults faults(SystemFaults::onWrite, {{0, 100}, {ENOSPC}});
        ioStdOutput out(full);
        out << "fits into the block" << std::flush;
        EXPECT_TRUE(out);
        out << content << content; // more than the block
        EXPECT_TRUE(out.bad() && out.status() == streamDiskFull);
    }
    full.close();
}
