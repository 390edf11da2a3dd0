// SPDX-License-Identifier: MIT

// Both links over streams, with streams and sockets that do what a test says: the two differ in
// what the end is, and in what a null pointer is.

#include "Base/IO/ioBufferIOStream.h"

#include <algorithm>
#include <cstring>
#include <string>
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
};

/// Takes one step after another; behind the last one, calls fail without a byte.
template<class Stream>
class Scripted : public Stream {
public:
    explicit Scripted(std::vector<Step> steps = {}) : steps_(std::move(steps)) {}

    zeUtil::Error read(void* buffer, unsigned long, unsigned long* done) override {
        const Step step = next();
        std::memcpy(buffer, step.bytes.data(), step.bytes.size());
        *done = step.bytes.size();
        return outcome(step);
    }

    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override {
        const Step step = next();
        if (step.code == 0 && !done) // links pass null
            written.append(static_cast<const char*>(buffer), count);
        return outcome(step);
    }

    std::string written;
    std::size_t calls = 0;

private:
    Step next() { return calls++ < steps_.size() ? steps_[calls - 1] : Step{"", 77}; }

    static zeUtil::Error outcome(const Step& step) {
        const zeUtil::Error error =
            step.code == 0 ? zeUtil::Error() : zeUtil::Error(step.code, "as the script has it");
        if (step.throws)
            throw zeUtil::Error(error);
        return error;
    }

    std::vector<Step> steps_;
};

struct OverStream {
    using Stream = zeOS::IOStream;
    using Link = ioBufferIOStream;
    static constexpr int type = 5;
    static constexpr auto end = ioBuffer::bufferEOF;
    static constexpr auto streamEnd = streamEOF;
    static constexpr auto nullOpen = streamOK; // shows with the first block
    static constexpr void (ioBufferedStreamInput::*openInput)(Stream*) =
        &ioBufferedStreamInput::openIOStream;
    static constexpr void (ioBufferedStreamOutput::*openOutput)(Stream*) =
        &ioBufferedStreamOutput::openIOStream;
};

struct OverSocket {
    using Stream = zeTCP::Socket;
    using Link = ioBufferTCP;
    static constexpr int type = 3;
    static constexpr auto end = ioBuffer::bufferIOError;
    static constexpr auto streamEnd = streamIOError;
    static constexpr auto nullOpen = streamIOError;
    static constexpr void (ioBufferedStreamInput::*openInput)(Stream*) =
        &ioBufferedStreamInput::openSocket;
    static constexpr void (ioBufferedStreamOutput::*openOutput)(Stream*) =
        &ioBufferedStreamOutput::openSocket;
};

template<class Over>
class StreamLink : public testing::Test {
protected:
    using Link = typename Over::Link;
    using Script = Scripted<typename Over::Stream>;
};

} // namespace

using Kinds = testing::Types<OverStream, OverSocket>;
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
        {{{"abc"}}, "abc"},
        {{{"ab", 4}, {"cd", 3, true}, {"ef"}}, "abcdef"}, // a failure with bytes changes nothing
        {{{block}, {block, 1}}, block + block},
        {{{""}, {""}, {"a"}}, "a"}, // asked again
    };
    for (const auto& test : cases)
        for (const int piece : {1, 5000}) {
            typename TestFixture::Script stream(test.steps);
            typename TestFixture::Link link(true);
            link.open(&stream);
            std::string all;
            for (std::string bytes(std::size_t(piece), 0); link.good();)
                all.append(bytes, 0, std::size_t(link.readData(bytes.data(), piece)));
            EXPECT_EQ(all, test.bytes);
            EXPECT_EQ(link.getStatus(), TypeParam::end);
        }
}

TYPED_TEST(StreamLink, WritesInBlocksUpToTheFirstFailure) {
    const std::string bytes = std::string(4096, 'a') + std::string(4096, 'b') + "c";
    for (const bool throws : {false, true})
        for (std::size_t failing = 0; failing <= 3; ++failing) {
            std::vector<Step> steps(3);
            if (failing < 3)
                steps[failing] = {"", 1, throws};
            typename TestFixture::Script stream(steps);
            ioBufferedStreamOutput out;
            (out.*TypeParam::openOutput)(&stream);
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
        typename TestFixture::Script stream({{"abc"}});
        typename TestFixture::Link link(reading);
        EXPECT_EQ(link.getType(), TypeParam::type);
        link.open(&stream);
        link.close();
        if (reading)
            EXPECT_EQ(link.read(&byte, 1), 0);
        else
            link.write(&byte, 1);
        EXPECT_EQ(link.getStatus(), ioBuffer::bufferIOError);
        EXPECT_EQ(stream.calls, 0U); // close() forgot it
    }
    ioBufferedStreamInput in;
    (in.*TypeParam::openInput)(nullptr);
    EXPECT_EQ(in.getStatus(), TypeParam::nullOpen);
    EXPECT_EQ(in.readData(&byte, 1), 0);
    EXPECT_EQ(in.getStatus(), streamIOError);
    ioBufferedStreamOutput out;
    (out.*TypeParam::openOutput)(nullptr);
    EXPECT_EQ(out.getStatus(), TypeParam::nullOpen);
    out.writeString("nowhere");
    out.close();
    EXPECT_EQ(out.getStatus(), streamIOError);
}

TYPED_TEST(StreamLink, OpensAgainAfterAFailure) {
    typename TestFixture::Script stream({{"", 4}, {"again"}});
    ioBufferedStreamInput in;
    (in.*TypeParam::openInput)(&stream);
    EXPECT_EQ(in.readChar(), 0);
    EXPECT_EQ(in.getStatus(), TypeParam::streamEnd);
    (in.*TypeParam::openInput)(&stream);
    EXPECT_EQ(in.getStatus(), streamOK);
    EXPECT_EQ(in.readChar(), 'a');
    in.close();
    EXPECT_EQ(in.getStatus(), streamOK);
}
