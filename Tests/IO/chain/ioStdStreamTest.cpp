// SPDX-License-Identifier: MIT

#include "Base/IO/ioStdStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "Base/IO/ioBufferFD.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

namespace {

using std::ios_base;

class StdStreams : public testing::Test {
protected:
    /// Numbers and words, more than a block of a file holds.
    static std::string lines() {
        std::ostringstream text;
        for (int i = 0; i < 60'000; ++i)
            text << i << (i % 7 ? ' ' : '\n');
        return text.str();
    }

    /// One step of reading, with the same outcome on both.
    void step(std::istream& a, std::istream& b) {
        std::string first(random() % 300, '\0'), second = first;
        switch (random() % 3) {
        case 0:
            a.read(first.data(), std::streamsize(first.size()));
            b.read(second.data(), std::streamsize(first.size()));
            break;
        case 1:
            std::getline(a, first);
            std::getline(b, second);
            break;
        default:
            EXPECT_EQ(a.get(), b.get());
            EXPECT_EQ(bool(a.unget() >> first), bool(b.unget() >> second));
        }
        ASSERT_EQ(first, second);
        ASSERT_EQ(a.rdstate(), b.rdstate());
    }

    TempFolder folder;
    const std::string content = lines();
    const zeString::IString name{folder.write("file", content).c_str(), zeString::EncodingUTF8};
    std::mt19937 random{9};
};

} // namespace

/// Under each filter the file has the same bytes as if the stream had been used directly, and what
/// one adapter does not read, the stream or another adapter does.
TEST_F(StdStreams, PassThroughFiltersAndHoldNothingBack) {
    constexpr auto compress = &ioBufferedStream::compress;
    for (const auto filter : {compress, &ioBufferedStream::checksum, &ioBufferedStream::encrypt}) {
        std::string files[2];
        for (const bool adapted : {false, true}) {
            ioBufferedStreamOutput file;
            file.openFile(name);
            file.writeString("head");
            (file.*filter)(true);
            if (adapted) {
                ioStdOutput out(file);
                std::istringstream words(content);
                for (std::string word; std::getline(words, word, ' ');) {
                    out << word; // and a byte of its own
                    if (!words.eof())
                        out.put(' ');
                }
                EXPECT_TRUE(out && out.status() == streamOK);
                EXPECT_EQ(out.tellp(), -1);
            } else {
                file.writeData(content.data(), int(content.size()));
            }
            (file.*filter)(false);
            file.close();
            files[adapted] = folder.read("file");
        }
        EXPECT_EQ(files[0], files[1]);

        ioBufferedStreamInput file;
        file.openFile(name);
        char head[4];
        file.readData(head, 4);
        (file.*filter)(true);
        std::istringstream twin(content);
        while (twin.tellg() < std::streamoff(content.size()) - 9000) {
            ioStdInput in(file);
            for (int i = 0; i < 20; ++i)
                step(in, twin);
            EXPECT_EQ(in.rdbuf()->pubsync(), 0);
            EXPECT_EQ(file.readChar(), twin.get());
            EXPECT_FALSE(in.seekg(0)) << "nothing is lost by it";
            in.clear();
            EXPECT_EQ(in.get(), twin.get());
        }
        if (filter == compress) { // the others have no end of their own
            ioStdInput in(file);
            const std::string rest(std::istreambuf_iterator<char>(in), {});
            EXPECT_EQ(rest, content.substr(std::size_t(twin.tellg())));
            EXPECT_EQ(in.status(), streamCompressEnd);
        }
        file.close();
    }
}

TEST_F(StdStreams, SeekInFilesAndSlices) {
    for (const bool slice : {false, true}) {
        const std::string part = slice ? content.substr(1000, 300'000) : content;
        const long size = long(part.size());
        ioBufferedStreamInput file;
        if (slice)
            file.openFileSlice(name, 1000, size);
        else
            file.openFile(name);
        file.readChar(); // positions are the file's, not the adapter's
        ioStdInput in(file);
        std::istringstream twin(part);
        twin.get();
        for (int i = 0; i < 3000; ++i) {
            const ios_base::seekdir from[] = {ios_base::beg, ios_base::cur, ios_base::end};
            const long bases[] = {0, long(twin.tellg()), size};
            const std::size_t which = random() % 3;
            const bool near = random() % 2 == 0; // within a block; the end and before the beginning
            const long offset = near ? std::min(long(random() % 2000), size - bases[which])
                                     : long(random() % unsigned(size + 2)) - bases[which] - 1;
            in.seekg(offset, from[which]);
            twin.seekg(offset, from[which]);
            ASSERT_EQ(in.rdstate(), twin.rdstate()) << bases[which] + offset;
            in.clear();
            twin.clear();
            ASSERT_EQ(in.tellg(), twin.tellg());
            step(in, twin);
            in.clear();
            twin.clear();
        }
        file.close();
    }
    ioBufferedStreamOutput file;
    file.openFile(name);
    ioStdOutput out(file);
    out << "0123456789";
    out.seekp(2) << 'c';
    out.seekp(-1, ios_base::end) << 'j';
    out.seekp(-6, ios_base::cur) << 'e';
    EXPECT_FALSE(out.seekp(-1));
    out.clear();
    EXPECT_EQ(out.tellp(), 5);
    file.close();
    EXPECT_FALSE(out << 'x') << "closed";
    EXPECT_EQ(folder.read("file"), "01c3e5678j");
}

TEST_F(StdStreams, LoseNothingOfAPipe) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    ASSERT_EQ(::write(ends[1], "abcdef", 6), 6);
    ::close(ends[1]);
    struct Piped : ioBufferedStreamInput {
        explicit Piped(int fd) {
            auto* const link = new ioBufferFD(true);
            startChain(link);
            link->useFD(fd);
        }
    } piped(ends[0]);
    ioStdInput in(piped);
    EXPECT_EQ(in.get(), 'a');
    EXPECT_EQ(in.tellg(), -1);
    EXPECT_FALSE(in.seekg(0));
    in.clear();
    std::string rest;
    EXPECT_TRUE(in >> rest && rest == "bcdef" && in.eof() && in.status() == streamEOF);
    piped.close();
}

TEST_F(StdStreams, TurnFailuresIntoBadbitAndKeepTheStatus) {
    ioBufferedStreamInput file;
    ioStdInput in(file);
    EXPECT_EQ(in.get(), EOF);
    EXPECT_TRUE(in.bad()) << "closed";
    in.clear();
    file.openFile(name);
    std::string text(200, ' ');
    {
        SystemFaults faults(SystemFaults::onRead, {{0, 100}, {EIO}});
        in.read(text.data(), 200);
    }
    EXPECT_TRUE(in.bad() && in.status() == streamIOError);
    EXPECT_THROW(in.rdbuf()->sgetc(), ios_base::failure);
    file.close();

    ioBufferedStreamOutput full;
    full.openFile(name);
    ioStdOutput out(full);
    {
        SystemFaults faults(SystemFaults::onWrite, {{0, 100}, {ENOSPC}});
        EXPECT_TRUE(out << "fits into the block" << std::flush);
        out << content << content; // does not
    }
    EXPECT_TRUE(out.bad() && out.status() == streamDiskFull);
    full.close();
}
