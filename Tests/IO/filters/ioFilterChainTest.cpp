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
constexpr Switch allFilters[] = {compress, &ioBufferedStream::checksum, &ioBufferedStream::encrypt};

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

class FilterChains : public testing::Test {
protected:
    /// Every order of every set of filters but the empty one; those of one filter twice.
    FilterChains() {
        std::size_t order[] = {0, 1, 2};
        do
            for (std::size_t length = 1; length <= 3; ++length) {
                chains.emplace_back();
                for (std::size_t i = 0; i < length; ++i)
                    chains.back().push_back(allFilters[order[i]]);
            }
        while (std::next_permutation(order, order + 3));
    }

    TempFolder folder;
    const zeString::IString path{folder.path("file").c_str()};
    std::vector<Filters> chains;
};

} // namespace

TEST_F(FilterChains, StandInTheMiddleOfAFileInAnyOrder) {
    // Two blocks exactly are two frames of a checksum, and leave the end of a compressed section
    // for a block of its own.
    for (const std::string& bytes :
         {mixedData(50'000), randomData(8192), std::string(8192, 'x'), textData(1)}) {
        for (std::size_t i = 0; i < chains.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "chain " << i << ", bytes " << bytes.size());
            const Filters sections[] = {chains[i], chains[(i + 7) % chains.size()]};
            ioBufferedStreamOutput out;
            out.openFile(path);
            for (const Filters& chain : sections) {
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
            for (const Filters& chain : sections) {
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

TEST_F(FilterChains, ReportThatClosingTheFileFailed) {
    for (const Filters& chain : chains) {
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

TEST_F(FilterChains, PromoteAFailureBelow) {
    for (const Filters& chain : chains) {
        std::string file;
        auto* const sink = new MemorySink(false, 64, file);
        StreamOver<ioBufferedStreamOutput> out(sink);
        push(out, chain);
        sink->setStatus(ioBuffer::bufferDiskFull);
        out.writeString("lost");
        out.flush();
        EXPECT_EQ(out.getStatus(), streamDiskFull);
        out.close();
        EXPECT_EQ(file, "");

        StreamOver<ioBufferedStreamOutput> all(new MemorySink(false, 4096, file));
        push(all, chain);
        all.writeString(textData(9000).c_str());
        all.close();
        auto* const source = new MemorySink(true, 64, file);
        StreamOver<ioBufferedStreamInput> in(source);
        push(in, chain);
        in.readChar();
        source->setStatus(ioBuffer::bufferIOError);
        EXPECT_LT(read(in, 10'000).size(), 8999u);
        EXPECT_GE(in.getStatus(), streamChecksumError); // a frame that was cut is damaged
    }
}

TEST_F(FilterChains, AllocateNothingOnceTheyAreStarted) {
    std::string bytes = randomData(300'000); // clears the table of strings, too
    std::string file;
    file.reserve(3'000'000);
    StreamOver<ioBufferedStreamOutput> out(new MemorySink(false, 4096, file));
    StreamOver<ioBufferedStreamInput> in(new MemorySink(true, 4096, file));
    push(out, chains.back());
    push(in, chains.back());
    const auto allocations = [&](auto move) {
        move(0, 10'000);
        const std::size_t before = allocationCount();
        move(10'000, 290'000);
        return allocationCount() - before;
    };
    EXPECT_EQ(allocations([&](int at, int n) { out.writeData(bytes.data() + at, n); }), 0u);
    out.close();
    EXPECT_EQ(allocations([&](int at, int n) { in.readData(bytes.data() + at, n); }), 0u);
}
