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

#include "Base/Strings/zeStringIString.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

namespace {

using std::ios_base;

class StdStreams : public testing::Test {
protected:
    /// Numbers and lines, more than a block of a file holds.
    static std::string lines() {
        std::ostringstream text;
        for (int i = 0; i < 60'000; ++i)
            text << i << (i % 7 ? ' ' : '\n');
        return text.str();
    }

    /// One step of reading, with the same outcome on both.
    void step(std::istream& a, std::istream& b) {
        std::string first(random() % 300, '\0'), second = first;
        const auto choice = random() % 3;
        for (auto [in, text] : {std::pair(&a, &first), std::pair(&b, &second)})
            choice == 0   ? in->read(text->data(), std::streamsize(text->size()))
            : choice == 1 ? std::getline(*in, *text)
                          : (in->get(), in->unget() >> *text);
        ASSERT_EQ(first, second);
        ASSERT_EQ(a.rdstate(), b.rdstate());
    }

    TempFolder folder;
    const std::string content = lines();
    const zeString::IString name{folder.write("file", content).c_str(), zeString::EncodingUTF8};
    std::mt19937 random{9};
};

} // namespace

/// What one adapter does not read, the stream or another adapter does.
TEST_F(StdStreams, PassThroughFiltersAndHoldNothingBack) {
    constexpr auto compress = &ioBufferedStream::compress;
    for (const auto filter : {compress, &ioBufferedStream::checksum, &ioBufferedStream::encrypt}) {
        ioBufferedStreamOutput written;
        written.openFile(name);
        (written.*filter)(true);
        ioStdOutput out(written);
        for (std::size_t at = 0; at < content.size(); at += 100)
            out.put(content[at]) << content.substr(at + 1, 99);
        EXPECT_TRUE(out && out.status() == streamOK && out.tellp() == -1);
        (written.*filter)(false);
        written.close();

        ioBufferedStreamInput file;
        file.openFile(name);
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
            const long offset = i % 2 ? std::min(long(random() % 2000), size - bases[which])
                                      : long(random() % unsigned(size + 2)) - bases[which] - 1;
            ASSERT_EQ(!in.seekg(offset, from[which]), !twin.seekg(offset, from[which]));
            (in.clear(), twin.clear());
            ASSERT_EQ(in.tellg(), twin.tellg());
            step(in, twin);
            (in.clear(), twin.clear());
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
    ioBufferedStreamInput piped;
    piped.openFile(zeString::IString(("/proc/self/fd/" + std::to_string(ends[0])).c_str()));
    ::close(ends[0]);
    ioStdInput in(piped);
    EXPECT_TRUE(in.get() == 'a' && in.tellg() == -1 && !in.seekg(0));
    in.clear();
    std::string rest;
    EXPECT_TRUE(in >> rest && rest == "bcdef" && in.eof() && in.status() == streamEOF);
    piped.close();
}

TEST_F(StdStreams, TurnFailuresIntoBadbitAndKeepTheStatus) {
    ioBufferedStreamInput file;
    ioStdInput in(file);
    EXPECT_TRUE(in.get() == EOF && in.bad()) << "closed";
    in.clear();
    file.openFile(name);
    {
        SystemFaults faults(SystemFaults::onRead, {{0, 100}, {EIO}});
        EXPECT_TRUE(in.ignore(200).bad() && in.status() == streamIOError);
    }
    EXPECT_THROW(in.rdbuf()->sgetc(), ios_base::failure);
    file.close();

    for (const bool told : {false, true}) {
        ioBufferedStreamOutput full;
        full.openFile(name);
        ioStdOutput out(full);
        {
            SystemFaults faults(SystemFaults::onWrite, {{0, 100}, {ENOSPC}});
            EXPECT_TRUE(out << "fits into the block" << std::flush << "and so does this");
            if (told)
                EXPECT_EQ(out.tellp(), -1) << "it flushes";
            else
                EXPECT_TRUE((out << content << content).bad());
        }
        EXPECT_EQ(out.status(), streamDiskFull);
        full.close();
    }
}
