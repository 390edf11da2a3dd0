// SPDX-License-Identifier: MIT

#include "Base/IO/ioBuffer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Strings/zeStringIString.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

#include "IO/chain/TestLinks.h"

namespace {

using Answers = std::vector<SystemFaults::Answer>;
using testing::ElementsAre;

constexpr int fileBlock = 262144;

std::vector<int> totals; ///< What the progress hook was told.
void noteProgress(int total) {
    totals.push_back(total);
}

std::string someBytes(std::size_t n) {
    std::string bytes(n, '\0');
    std::minstd_rand random(1);
    for (char& c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

zeString::IString name(const std::string& path) {
    return zeString::IString(path.c_str());
}

class FileLink : public testing::Test {
protected:
    FileLink() { totals.clear(); }

    std::unique_ptr<ioBufferFD> writer(const std::string& file) {
        auto link = std::make_unique<ioBufferFD>(false);
        link->open(name(folder.path(file)));
        return link;
    }
    std::unique_ptr<ioBufferFD> reader(const std::string& file, const std::string& content) {
        auto link = std::make_unique<ioBufferFD>(true);
        link->open(name(folder.write(file, content)));
        return link;
    }

    TempFolder folder;
};

// The totals are those of a link that copies everything through its block: filled first, flushed
// when more comes.
TEST_F(FileLink, WritesTheSameBlocksWhateverTheSizesOfThePieces) {
    const std::string bytes = someBytes(3'000'000);
    auto link = writer("out");
    link->associateProgressFunction(noteProgress);
    std::vector<int> expected;
    int inBlock = 0;
    int total = 0;
    std::size_t at = 0;
    std::minstd_rand random(2);
    const int pieces[] = {
        -1, 0, 1, 17, 4096, fileBlock - 1, fileBlock, fileBlock + 1, 2 * fileBlock, 600'000};
    while (at < bytes.size()) {
        const int n = std::min(pieces[random() % std::size(pieces)], int(bytes.size() - at));
        link->writeData(bytes.data() + at, n);
        if (n <= 0)
            continue;
        at += std::size_t(n);
        for (inBlock += n; inBlock > fileBlock; inBlock -= fileBlock)
            expected.push_back(total += fileBlock);
        ASSERT_EQ(totals, expected);
    }
    link->flush();
    EXPECT_EQ(totals.back(), 3'000'000);
    link->close();
    EXPECT_TRUE(link->good());
    EXPECT_EQ(folder.read("out"), bytes);
}

TEST_F(FileLink, ReadsTheSameBlocksWhateverTheSizesOfThePieces) {
    const std::string bytes = someBytes(3'000'000);
    auto link = reader("in", bytes);
    link->associateProgressFunction(noteProgress);
    const int pieces[] = {-1, 0, 1, 17, 4096, fileBlock - 1, fileBlock, 2 * fileBlock, 600'000};
    std::string piece(600'000, '\0');
    std::string all;
    std::minstd_rand random(3);
    while (link->good()) {
        const int n = pieces[random() % std::size(pieces)];
        const int got = link->readData(piece.data(), n);
        all.append(piece, 0, std::size_t(got));
        ASSERT_EQ(got, link->good() ? std::max(n, 0) : got);
        // As many blocks are in as the bytes so far reach into.
        if (link->good()) {
            ASSERT_EQ(totals.size(), (all.size() + fileBlock - 1) / fileBlock);
        }
    }
    EXPECT_EQ(link->getStatus(), ioBuffer::bufferEOF);
    EXPECT_EQ(all, bytes);
    link->close();
}

TEST_F(FileLink, MeetsTheEndOnlyAfterTheLastByte) {
    auto link = reader("in", "four");
    char bytes[8];
    EXPECT_EQ(link->readData(bytes, 4), 4);
    EXPECT_TRUE(link->good());
    EXPECT_EQ(link->readData(bytes, 1), 0);
    EXPECT_EQ(link->getStatus(), ioBuffer::bufferEOF);
    // Nothing clears the status: a seek succeeds, but reads do nothing.
    EXPECT_TRUE(link->seek(0));
    EXPECT_EQ(link->readData(bytes, 1), 0);
    link->close();
    EXPECT_EQ(link->read(bytes, 1), -1);
    EXPECT_EQ(link->getStatus(), ioBuffer::bufferIOError);
}

TEST_F(FileLink, SurvivesInterruptionsAndReportsFailures) {
    constexpr auto ok = ioBuffer::bufferOK;
    const struct {
        SystemFaults::Call call;
        Answers answers;
        ioBuffer::bufferStatus onWriting;
        ioBuffer::bufferStatus onReading;
    } cases[] = {
        {SystemFaults::onOpen, {{EINTR}, {EINTR}}, ok, ok},
        {SystemFaults::onOpen, {{EACCES}}, ioBuffer::bufferOpenError, ioBuffer::bufferOpenError},
        {SystemFaults::onWrite, {{EINTR}, {EAGAIN}, {0, 1}, {EINTR}, {0, 2}}, ok, ok},
        {SystemFaults::onWrite, {{0, 1}, {ENOSPC}}, ioBuffer::bufferDiskFull, ok},
        {SystemFaults::onWrite, {{EIO}}, ioBuffer::bufferIOError, ok},
        {SystemFaults::onRead, {{EINTR}, {EAGAIN}, {0, 1}, {EINTR}, {0, 2}}, ok, ok},
        {SystemFaults::onRead, {{0, 1}, {EIO}}, ok, ioBuffer::bufferIOError},
        {SystemFaults::onClose, {{EINTR}, {EINTR}}, ok, ok},
        {SystemFaults::onClose, {{EIO}}, ioBuffer::bufferIOError, ioBuffer::bufferIOError},
    };
    const std::string path = folder.write("in", "content");
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.call << ' ' << test.answers[0].error);
        {
            ioBufferFD link(false);
            const SystemFaults faults(test.call, test.answers);
            link.open(name(folder.path("out")));
            link.writeData("content", 7);
            link.flush();
            link.close();
            EXPECT_EQ(link.getStatus(), test.onWriting);
        }
        if (test.onWriting == ok) {
            EXPECT_EQ(folder.read("out"), "content");
        }
        {
            ioBufferFD link(true);
            const SystemFaults faults(test.call, test.answers);
            link.open(name(path));
            char bytes[7];
            const int got = link.readData(bytes, 7);
            if (test.onReading == ok) {
                EXPECT_EQ(std::string(bytes, std::size_t(got)), "content");
            }
            link.close();
            EXPECT_EQ(link.getStatus(), test.onReading);
        }
    }
}

TEST_F(FileLink, StopsAtTheWriteThatFailsWithAllBeforeItInTheFile) {
    const std::string bytes = someBytes(5 * fileBlock + 100);
    for (std::size_t failing = 0; failing < 6; ++failing) {
        auto link = writer("out");
        Answers answers(failing);
        answers.push_back({ENOSPC});
        {
            const SystemFaults faults(SystemFaults::onWrite, answers);
            link->writeData(bytes.data(), 1000);
            link->writeData(bytes.data() + 1000, int(bytes.size()) - 1000);
            link->flush();
            link->writeData("dropped", 7);
            link->flush();
            EXPECT_EQ(faults.calls(), failing + 1);
        }
        EXPECT_EQ(link->getStatus(), ioBuffer::bufferDiskFull);
        link->close();
        EXPECT_EQ(folder.read("out"), bytes.substr(0, failing * fileBlock));
    }
}

TEST_F(FileLink, CountsAFailedReadAsMinusOneByte) {
    auto link = reader("in", "bytes");
    link->associateProgressFunction(noteProgress);
    char bytes[8];
    link->readData(bytes, 5);
    const SystemFaults faults(SystemFaults::onRead, {{EIO}});
    EXPECT_EQ(link->readData(bytes, 8), 0);
    EXPECT_THAT(totals, ElementsAre(5, 4));
}

TEST_F(FileLink, OwnsADescriptorThatItUsesButClosesItOnlyWhenTold) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    {
        ioBufferFD link(false);
        link.useFD(ends[1]);
        link.writeData("lost", 4);
    }
    ASSERT_NE(fcntl(ends[1], F_GETFD), -1);
    ioBufferFD link(false);
    link.useFD(ends[1]);
    link.close();
    EXPECT_EQ(fcntl(ends[1], F_GETFD), -1);
    char c;
    EXPECT_EQ(read(ends[0], &c, 1), 0); // nothing was flushed
    close(ends[0]);
    link.useFD(-1);
    EXPECT_EQ(link.getStatus(), ioBuffer::bufferOpenError);
}

TEST_F(FileLink, OpensDescriptorsThatChildProcessesDoNotInherit) {
    const std::string path = folder.write("file", "content");
    for (const bool reading : {true, false}) {
        const int next = dup(STDERR_FILENO); // the number that the next open() gets
        close(next);
        ioBufferFD link(reading);
        link.open(name(path));
        EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
        link.close();
    }
}

// From link to link an end rises only when asked to; from the top link to the stream it always
// does.
TEST(Chain, HandsFailuresUp) {
    using Link = ioBuffer;
    constexpr auto kept = Link::bufferDiskFull;
    const struct {
        Link::bufferStatus below, withoutEnd, withEnd;
        ioStreamStatus stream;
    } cases[] = {
        {Link::bufferOK, kept, kept, streamDiskFull}, // promotion clears nothing
        {Link::bufferOpenError, Link::bufferOpenError, Link::bufferOpenError, streamOpenError},
        {Link::bufferEOF, kept, Link::bufferEOF, streamEOF},
        {Link::bufferCompressEnd, kept, Link::bufferCompressEnd, streamCompressEnd},
        {Link::bufferChecksumError, Link::bufferChecksumError, Link::bufferChecksumError,
         streamChecksumError},
        {Link::bufferIOError, Link::bufferIOError, Link::bufferIOError, streamIOError},
    };
    std::string bytes;
    auto* const sink = new MemorySink(true, 4, bytes);
    auto* const filter = new KeyFilter(true, 4, 1);
    StreamOver<ioBufferedStreamInput> stream(sink);
    stream.addBufferToChain(filter);
    for (const auto& test : cases) {
        sink->setStatus(test.below);
        filter->setStatus(kept);
        filter->promoteNextBufferStatus(false);
        EXPECT_EQ(filter->getStatus(), test.withoutEnd);
        filter->promoteNextBufferStatus(true);
        EXPECT_EQ(filter->getStatus(), test.withEnd);
        stream.promoteBufferStatus();
        EXPECT_EQ(stream.getStatus(), test.stream);
    }
}

// Segments of one file, each through a filter of its own or none, against flat strings.
TEST(Chain, MatchesFlatBytesWhileFiltersComeAndGo) {
    std::minstd_rand random(4);
    for (int round = 0; round < 200; ++round) {
        const std::string plain = someBytes(random() % 500);
        std::string file;
        std::string expected;
        StreamOver<ioBufferedStreamOutput> out(new MemorySink(false, 1 + int(random() % 16), file));
        std::vector<std::size_t> ends;
        for (std::size_t at = 0; at < plain.size();) {
            const std::size_t end = std::min(plain.size(), at + 1 + random() % 100);
            const bool filtered = random() % 2;
            if (filtered)
                out.addBufferToChain(new KeyFilter(false, 1 + int(random() % 16), 5));
            for (const char c : plain.substr(at, end - at))
                expected += filtered ? char(c ^ 5) : c;
            while (at < end) {
                const int n = int(random() % (end - at + 1));
                out.writeData(plain.data() + at, n);
                at += std::size_t(n);
            }
            if (filtered) {
                out.popBufferChain();
                expected += '|';
            }
        }
        out.flush();
        ASSERT_EQ(file, expected);
        ASSERT_EQ(out.getStatus(), streamOK);

        StreamOver<ioBufferedStreamInput> in(
            new MemorySink(true, 1 + int(random() % 16), file, 1 + random() % 8));
        in.addBufferToChain(new KeyFilter(true, 1 + int(random() % 16), 0));
        std::string all;
        while (in.getStatus() == streamOK) {
            char piece[50];
            if (random() % 2) {
                all.append(piece, std::size_t(in.readData(piece, int(random() % 50))));
            } else if (const int c = in.readChar(); in.getStatus() == streamOK) {
                all += static_cast<char>(c);
            }
        }
        ASSERT_EQ(all, expected);
        ASSERT_EQ(in.getStatus(), streamEOF);
    }
}

TEST(Chain, IsClosedAndDeletedFromTheTopDown) {
    std::string bytes;
    auto* const sink = new MemorySink(false, 8, bytes);
    const int before = KeyFilter::destroyed;
    {
        KeyFilter filter(false, 8, 0);
        filter.chain(sink);
        filter.writeData("abc", 3);
        filter.close();
        EXPECT_TRUE(sink->closed);
        // Off the chain, the sink outlives the filter, with all that the filter held.
        EXPECT_EQ(filter.unchain(), sink);
    }
    EXPECT_EQ(KeyFilter::destroyed, before + 1);
    sink->flush();
    EXPECT_EQ(bytes, "abc|");
    KeyFilter* const top = new KeyFilter(false, 8, 0);
    top->chain(new KeyFilter(false, 8, 0));
    delete top;
    EXPECT_EQ(KeyFilter::destroyed, before + 3);
    delete sink;
}

} // namespace
