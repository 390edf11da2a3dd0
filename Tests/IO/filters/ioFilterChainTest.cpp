// SPDX-License-Identifier: MIT

// What the filters do together, and what they have in common.

#include <algorithm>
#include <cerrno>

#include <gtest/gtest.h>

#include "Base/IO/ioBuffer.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/AllocationCount.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

#include "IO/filters/FilterData.h"
#include "IO/filters/FilterSupport.h"

namespace {

using Filters = std::vector<Switch>;

constexpr Switch compress = &ioBufferedStream::compress;
const Filters allFilters = {compress, &ioBufferedStream::checksum, &ioBufferedStream::encrypt};

/// Every order of every set of filters but the empty one: 15.
std::vector<Filters> allChains() {
    std::vector<Filters> chains;
    for (unsigned set = 1; set < 8; ++set) {
        std::vector<std::size_t> members;
        for (std::size_t i = 0; i < 3; ++i)
            if (set >> i & 1)
                members.push_back(i);
        do {
            Filters chain;
            for (const std::size_t i : members)
                chain.push_back(allFilters[i]);
            chains.push_back(chain);
        } while (std::next_permutation(members.begin(), members.end()));
    }
    return chains;
}

void push(ioBufferedStream& stream, const Filters& chain) {
    for (const Switch filter : chain)
        (stream.*filter)(true);
}

/// Takes the filters off a reader: a compressed section is read to its end first.
void pop(ioBufferedStreamInput& stream, Filters chain) {
    for (; !chain.empty(); chain.pop_back()) {
        if (chain.back() == compress) {
            EXPECT_EQ(stream.readChar(), 0);
            EXPECT_EQ(stream.getStatus(), streamCompressEnd);
        }
        (stream.*chain.back())(false);
        EXPECT_EQ(stream.getStatus(), streamOK);
    }
}

std::string read(ioBufferedStreamInput& stream, std::size_t n) {
    std::string bytes(n, '\0');
    bytes.resize(std::size_t(stream.readData(bytes.data(), int(n))));
    return bytes;
}

TEST(Filters, StandInTheMiddleOfAFileInAnyOrder) {
    const std::vector<Filters> chains = allChains();
    ASSERT_EQ(chains.size(), 15u);
    const TempFolder folder;
    const zeString::IString path(folder.path("file").c_str());
    // Two blocks exactly are two frames of a checksum, and leave the end of a compressed section
    // for a block of its own.
    for (const std::string& bytes :
         {mixedData(50'000), randomData(8192), std::string(8192, 'x'), textData(1)}) {
        for (std::size_t i = 0; i < chains.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "chain " << i << ", bytes " << bytes.size());
            ioBufferedStreamOutput out;
            out.openFile(path);
            for (const Filters& chain : {chains[i], chains[(i + 7) % chains.size()]}) {
                out.writeString("plain");
                push(out, chain);
                out.writeData(bytes.data(), int(bytes.size()));
                for (auto filter = chain.rbegin(); filter != chain.rend(); ++filter)
                    (out.**filter)(false);
            }
            // The last filters are finished by close().
            out.writeString("plain");
            push(out, chains[i]);
            out.writeString("end");
            out.close();
            ASSERT_EQ(out.getStatus(), streamOK);

            ioBufferedStreamInput in;
            in.openFile(path);
            for (const Filters& chain : {chains[i], chains[(i + 7) % chains.size()]}) {
                EXPECT_EQ(read(in, 5), "plain");
                push(in, chain);
                ASSERT_TRUE(read(in, bytes.size()) == bytes);
                EXPECT_EQ(in.getStatus(), streamOK);
                pop(in, chain);
            }
            EXPECT_EQ(read(in, 5), "plain");
            push(in, chains[i]);
            EXPECT_EQ(read(in, 4), "end");
            const bool compressed = std::count(chains[i].begin(), chains[i].end(), compress) > 0;
            EXPECT_EQ(in.getStatus(), compressed ? streamCompressEnd : streamEOF);
            in.close();
        }
    }
}

TEST(Filters, HandUpAFailureBelow) {
    for (const Switch filter : allFilters) {
        std::string file;
        auto* const sink = new MemorySink(false, 64, file);
        StreamOver<ioBufferedStreamOutput> out(sink);
        (out.*filter)(true);
        sink->setStatus(ioBuffer::bufferDiskFull);
        out.writeString("lost");
        out.flush();
        EXPECT_EQ(out.getStatus(), streamDiskFull);
        out.close();
        EXPECT_EQ(file, "");

        std::string whole = filtered(filter, randomData(9000));
        auto* const source = new MemorySink(true, 64, whole);
        StreamOver<ioBufferedStreamInput> in(source);
        (in.*filter)(true);
        in.readChar();
        source->setStatus(ioBuffer::bufferIOError);
        const std::string rest = read(in, 10'000);
        EXPECT_LT(rest.size(), 8999u);
        EXPECT_EQ(in.getStatus(), streamIOError);
    }
}

TEST(Filters, ReportThatClosingTheFileFailed) {
    const TempFolder folder;
    const zeString::IString path(folder.path("file").c_str());
    for (const Filters& chain : allChains()) {
        SCOPED_TRACE(testing::Message() << "filters " << chain.size());
        ioBufferedStreamOutput out;
        out.openFile(path);
        push(out, chain);
        out.writeString("text");
        {
            const SystemFaults faults(SystemFaults::onClose, {{EIO}});
            out.close();
        }
        EXPECT_EQ(out.getStatus(), streamIOError);

        ioBufferedStreamInput in;
        in.openFile(path);
        push(in, chain);
        EXPECT_EQ(read(in, 4), "text");
        const SystemFaults faults(SystemFaults::onClose, {{EIO}});
        in.close();
        EXPECT_EQ(in.getStatus(), streamIOError);
    }
}

TEST(Filters, AllocateNothingOnceTheyAreStarted) {
    const std::string bytes = randomData(300'000); // clears the table of strings, too
    std::string file;
    file.reserve(3'000'000);
    StreamOver<ioBufferedStreamOutput> out(new MemorySink(false, 4096, file));
    push(out, allFilters);
    out.writeData(bytes.data(), 10'000);
    std::size_t before = allocationCount();
    out.writeData(bytes.data() + 10'000, 290'000);
    EXPECT_EQ(allocationCount(), before);
    out.close();

    StreamOver<ioBufferedStreamInput> in(new MemorySink(true, 4096, file));
    push(in, allFilters);
    std::string result(bytes.size(), '\0');
    in.readData(result.data(), 10'000);
    before = allocationCount();
    in.readData(result.data() + 10'000, 290'000);
    EXPECT_EQ(allocationCount(), before);
    EXPECT_TRUE(result == bytes);
}

TEST(Filters, DoNothingOnAClosedStream) {
    for (const Switch filter : allFilters) {
        ioBufferedStreamOutput stream;
        (stream.*filter)(true);
        stream.writeString("nowhere");
        (stream.*filter)(false);
        stream.close();
        EXPECT_EQ(stream.getStatus(), streamOK);
    }
}

} // namespace
