// SPDX-License-Identifier: MIT

#include "Base/IO/ioBuffer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/IO/ioBufferEncrypt.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

#include "IO/chain/TestLinks.h"

namespace {

using Answers = std::vector<SystemFaults::Answer>;

constexpr int fileBlock = 262144;

class FileLink : public testing::Test {
protected:
    FileLink() { totals.clear(); }

    zeString::IString path() const { return zeString::IString(folder.path("file").c_str()); }

    /// A link over the file that notes what its progress hook is passed.
    std::unique_ptr<ioBufferFD> open(bool reading) const {
        auto link = std::make_unique<ioBufferFD>(reading);
        link->associateProgressFunction([](int total) { totals.push_back(total); });
        link->open(path());
        return link;
    }

    static inline std::vector<int> totals;
    TempFolder folder;
};

} // namespace

// The totals are those of a link that copies everything through its block: filled first, flushed
// when more comes.
TEST_F(FileLink, MovesTheSameBlocksWhateverTheSizesOfThePieces) {
    const std::string bytes = randomData(3'000'000);
    const int sizes[] = {-1, 0, 1, 4096, fileBlock - 1, fileBlock, fileBlock + 1, 600'000};
    std::minstd_rand random(2);
    const auto nextSize = [&] { return sizes[random() % std::size(sizes)]; };

    auto link = open(false);
    std::vector<int> expected;
    for (int at = 0, inBlock = 0; at < int(bytes.size());) {
        const int n = std::min(nextSize(), int(bytes.size()) - at);
        link->writeData(bytes.data() + at, n);
        at += std::max(n, 0);
        for (inBlock += std::max(n, 0); inBlock > fileBlock; inBlock -= fileBlock)
            expected.push_back(int(expected.size() + 1) * fileBlock);
        ASSERT_EQ(totals, expected);
    }
    link->flush();
    EXPECT_EQ(totals.back(), 3'000'000);
    link->close();
    EXPECT_TRUE(link->good());
    ASSERT_TRUE(folder.read("file") == bytes);

    totals.clear();
    link = open(true);
    std::string all;
    for (std::string piece(600'000, '\0'); link->good();) {
        const int n = nextSize();
        const int got = link->readData(piece.data(), n);
        all.append(piece, 0, std::size_t(got));
        if (link->good()) { // as many blocks were read as the bytes so far reach into
            ASSERT_EQ(got, std::max(n, 0));
            ASSERT_EQ(totals.size(), (all.size() + fileBlock - 1) / fileBlock);
        }
    }
    EXPECT_EQ(link->getStatus(), ioBuffer::bufferEOF);
    EXPECT_TRUE(all == bytes);
    link->close();
}

TEST_F(FileLink, MeetsTheEndOnlyAfterTheLastByte) {
    folder.write("file", "four");
    auto link = open(true);
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
        ioBuffer::bufferStatus onWriting, onReading;
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
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.call << ' ' << test.answers[0].error);
        for (const bool reading : {false, true}) {
            folder.write("file", reading ? "content" : "");
            std::string bytes = "content";
            ioBuffer::bufferStatus status;
            {
                const SystemFaults faults(test.call, test.answers);
                auto link = open(reading);
                if (reading)
                    bytes.resize(std::size_t(link->readData(bytes.data(), 7)));
                else
                    link->writeData(bytes.data(), 7);
                link->flush();
                link->close();
                status = link->getStatus();
            }
            EXPECT_EQ(status, reading ? test.onReading : test.onWriting);
            if (status == ok) {
                EXPECT_EQ(reading ? bytes : folder.read("file"), "content");
            }
        }
    }
}

TEST_F(FileLink, StopsAtTheWriteThatFailsWithAllBeforeItInTheFile) {
    const std::string bytes = randomData(5 * fileBlock + 100);
    for (std::size_t failing = 0; failing < 6; ++failing) {
        auto link = open(false);
        Answers answers(failing);
        answers.push_back({ENOSPC});
        const SystemFaults faults(SystemFaults::onWrite, answers);
        link->writeData(bytes.data(), 1000);
        link->writeData(bytes.data() + 1000, int(bytes.size()) - 1000);
        link->flush();
        link->writeData("dropped", 7);
        link->flush();
        EXPECT_EQ(faults.calls(), failing + 1);
        EXPECT_EQ(link->getStatus(), ioBuffer::bufferDiskFull);
        link->close();
        EXPECT_TRUE(folder.read("file") == bytes.substr(0, failing * fileBlock));
    }
}

TEST_F(FileLink, CountsAFailedReadAsMinusOneByte) {
    folder.write("file", "bytes");
    auto link = open(true);
    char bytes[8];
    link->readData(bytes, 5);
    const SystemFaults faults(SystemFaults::onRead, {{EIO}});
    EXPECT_EQ(link->readData(bytes, 8), 0);
    EXPECT_THAT(totals, testing::ElementsAre(5, 4));
    link->close();
}

TEST_F(FileLink, OpensDescriptorsThatChildProcessesDoNotInherit) {
    for (const bool reading : {false, true}) {
        const int next = dup(STDERR_FILENO); // the number that the next open() gets
        close(next);
        auto link = open(reading);
        EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
        link->close();
    }
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

// From the top link to the stream an end rises always.
TEST(Chain, PromotesAnEndFromLinkToLinkOnlyWhenAskedTo) {
    std::string bytes;
    auto* const sink = new MemorySink(true, 4, bytes);
    ioBufferEncrypt filter(true);
    filter.chain(sink);
    sink->setStatus(ioBuffer::bufferEOF);
    filter.promoteNextBufferStatus(false);
    EXPECT_TRUE(filter.good());
    filter.promoteNextBufferStatus(true);
    EXPECT_EQ(filter.getStatus(), ioBuffer::bufferEOF);
}

TEST(Chain, IsClosedAndDeletedFromTheTopDown) {
    std::string bytes;
    auto* const sink = new MemorySink(false, 8, bytes);
    const int before = MemorySink::destroyed;
    auto top = std::make_unique<ioBufferEncrypt>(false);
    top->chain(sink);
    top->writeData("abc", 3);
    top->close();
    EXPECT_TRUE(sink->closed);
    // Off the chain, the sink outlives the filter, with all that the filter held.
    EXPECT_EQ(top->unchain(), sink);
    top = std::make_unique<ioBufferEncrypt>(false);
    EXPECT_EQ(bytes, "\x01\x03"
                     "abc");
    top->chain(sink);
    EXPECT_EQ(MemorySink::destroyed, before);
    top.reset();
    EXPECT_EQ(MemorySink::destroyed, before + 1);
}
