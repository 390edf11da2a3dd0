// SPDX-License-Identifier: MIT

// Both links over streams, with streams and sockets that do what a test says: the two differ in
// what the end is, and in what a null pointer is.

#include "Base/IO/ioBufferIOStream.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/IO/ioBufferTCP.h"
#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioBufferedStreamOutput.h"
#include "Base/OS/zeOSIOStream.h"
#include "Base/TCP/zeTCPSocket.h"

namespace {

/// What one call of a stream does: a read delivers the bytes, and fails if there is a code.
struct Step {
    std::string bytes;
    int code = 0;
    bool throws = false;

    zeUtil::Error outcome() const {
        const zeUtil::Error error = code == 0 ? zeUtil::Error() : zeUtil::Error(code, "as told");
        if (throws)
            throw zeUtil::Error(error);
        return error;
    }
};

/// A byte stream, or a socket, that takes one step after another; behind the last one, calls fail
/// without a byte.
template<class Stream>
struct Scripted : Stream {
    explicit Scripted(std::vector<Step> script) : steps(std::move(script)) {}

    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override {
        const Step step = next();
        *done = step.bytes.copy(static_cast<char*>(buffer), count);
        return step.outcome();
    }
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override {
        const Step step = next();
        if (step.code == 0 && !done) // links pass null
            written.append(static_cast<const char*>(buffer), count);
        return step.outcome();
    }
    Step next() { return calls++ < steps.size() ? steps[calls - 1] : Step{"", 77}; }

    std::vector<Step> steps;
    std::size_t calls = 0;
    std::string written;
};

template<class Stream>
class StreamLink : public testing::Test {
protected:
    static constexpr bool isSocket = std::is_same_v<Stream, zeTCP::Socket>;
    using Link = std::conditional_t<isSocket, ioBufferTCP, ioBufferIOStream>;

    static void open(auto& stream, Stream* below) {
        if constexpr (isSocket)
            stream.openSocket(below);
        else
            stream.openIOStream(below);
    }
};

using Kinds = testing::Types<zeOS::IOStream, zeTCP::Socket>;

} // namespace

TYPED_TEST_SUITE(StreamLink, Kinds);

TYPED_TEST(StreamLink, ReadsWhatComesWithAFailureAndEndsAtOneWithoutAny) {
    const std::string block(4096, 'b');
    const struct {
        std::vector<Step> steps;
        std::string bytes;
    } cases[] = {
        {{}, ""},
        {{{"", 4}, {"never asked for"}}, ""},
        {{{"", 4, true}, {"never asked for"}}, ""},
        {{{"ab", 4}, {"cd", 3, true}, {"ef"}}, "abcdef"}, // a failure with bytes changes nothing
        {{{block}, {block, 1}}, block + block},
        {{{""}, {""}, {"a"}}, "a"}, // asked again
    };
    for (const auto& test : cases)
        for (const int piece : {1, 5000}) {
            Scripted<TypeParam> stream(test.steps);
            typename TestFixture::Link link(true);
            link.open(&stream);
            std::string all;
            for (std::string bytes(std::size_t(piece), 0); link.good();)
                all.append(bytes, 0, std::size_t(link.readData(bytes.data(), piece)));
            EXPECT_EQ(all, test.bytes);
            EXPECT_EQ(link.getStatus(),
                      this->isSocket ? ioBuffer::bufferIOError : ioBuffer::bufferEOF);
        }
}

TYPED_TEST(StreamLink, WritesInBlocksUpToTheFirstFailure) {
    const std::string bytes = std::string(4096, 'a') + std::string(4096, 'b') + "c";
    for (const bool throws : {false, true})
        for (std::size_t failing = 0; failing <= 3; ++failing) {
            Scripted<TypeParam> stream({{}, {}, {}, {}});
            stream.steps[failing] = {"", 1, throws};
            ioBufferedStreamOutput out;
            this->open(out, &stream);
            out.writeData(bytes.data(), int(bytes.size()));
            out.close();
            EXPECT_EQ(out.getStatus(), failing < 3 ? streamIOError : streamOK);
            EXPECT_EQ(stream.written, bytes.substr(0, 4096 * failing));
            EXPECT_EQ(stream.calls, std::min(failing + 1, std::size_t(3)));
        }
}

TYPED_TEST(StreamLink, WithoutAStreamFailsInsteadOfTouchingIt) {
    char byte = 0;
    for (const bool reading : {false, true}) {
        Scripted<TypeParam> stream({{"abc"}});
        typename TestFixture::Link link(reading);
        EXPECT_EQ(link.getType(), this->isSocket ? 3 : 5);
        link.open(&stream);
        link.close(); // forgets it
        if (reading)
            EXPECT_EQ(link.read(&byte, 1), 0);
        else
            link.write(&byte, 1);
        EXPECT_EQ(link.getStatus(), ioBuffer::bufferIOError);
        EXPECT_EQ(stream.calls, 0U);
    }
    // A null socket shows at once, a null stream with the first block.
    ioBufferedStreamInput in;
    this->open(in, nullptr);
    EXPECT_EQ(in.getStatus(), this->isSocket ? streamIOError : streamOK);
    EXPECT_EQ(in.readData(&byte, 1), 0);
    EXPECT_EQ(in.getStatus(), streamIOError);
    ioBufferedStreamOutput out;
    this->open(out, nullptr);
    EXPECT_EQ(out.getStatus(), this->isSocket ? streamIOError : streamOK);
    out.writeString("nowhere");
    out.close();
    EXPECT_EQ(out.getStatus(), streamIOError);
}
