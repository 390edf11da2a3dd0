// SPDX-License-Identifier: MIT

// Both links over streams, with streams and sockets that do what a test says: the two differ in
// what the end is, and in what a null pointer is.

#include "Base/IO/ioBufferIOStream.h"

#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioBufferTCP.h"
#include "Base/OS/zeOSIOStream.h"
#include "Base/TCP/zeTCPSocket.h"

namespace {

/// What one call of a stream does: a read delivers the bytes, and fails if there is a code.
struct Step {
    std::string bytes;
    int code = 0;
    unsigned long lie = 0; ///< How many bytes more it claims to have read.
};

/// A byte stream, or a socket, that takes one step after another; behind the last one, calls fail
/// without a byte.
template<class Stream>
struct Scripted : Stream {
    explicit Scripted(std::vector<Step> script, bool throwing = false)
        : steps(std::move(script)), throws(throwing) {}

    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override {
        const Step step = next();
        *done = step.bytes.copy(static_cast<char*>(buffer), count) + step.lie;
        return outcome(step);
    }
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override {
        const Step step = next();
        if (step.code == 0 && !done) // links pass null
            written.append(static_cast<const char*>(buffer), count);
        return outcome(step);
    }
    Step next() { return calls++ < steps.size() ? steps[calls - 1] : Step{"", 77}; }
    zeUtil::Error outcome(const Step& step) const {
        zeUtil::Error error(step.code, "as told");
        return throws && step.code != 0 ? throw error : error;
    }

    std::vector<Step> steps;
    bool throws;
    std::size_t calls = 0;
    std::string written;
};

void open(auto& stream, zeOS::IOStream* below) {
    stream.openIOStream(below);
}
void open(auto& stream, zeTCP::Socket* below) {
    stream.openSocket(below);
}

template<class Stream>
struct StreamLink : testing::Test {
    static constexpr bool isSocket = std::is_same_v<Stream, zeTCP::Socket>;
};

using Kinds = testing::Types<zeOS::IOStream, zeTCP::Socket>;

const std::string block(4096, 'b');

} // namespace

TYPED_TEST_SUITE(StreamLink, Kinds);

TYPED_TEST(StreamLink, ReadsWhatComesWithAFailureAndEndsAtOneWithoutAny) {
    const ioStreamStatus end = this->isSocket ? streamIOError : streamEOF;
    const struct {
        std::vector<Step> steps;
        std::string bytes;
        ioStreamStatus end;
    } cases[] = {
        {{}, "", end},
        {{{"", 4}, {"never asked for"}}, "", end},
        {{{"ab", 4}, {"cd", 3}, {"ef"}}, "abcdef", end}, // failures with bytes change nothing
        {{{block}, {block, 1}}, block + block, end},
        {{{""}, {""}, {"a"}}, "a", end}, // asked again
        {{{"a"}, {block, 0, 1}}, "a", streamIOError},
        {{{"a"}, {block, 4, ~0UL - 4096}}, "a", streamIOError},
    };
    for (const auto& test : cases)
        for (const int piece : {1, 5000}) {
            Scripted<TypeParam> stream(test.steps, piece == 1);
            ioBufferedStreamInput in;
            open(in, &stream);
            std::string all;
            for (std::string bytes(std::size_t(piece), 0); in.getStatus() == streamOK;)
                all.append(bytes, 0, std::size_t(in.readData(bytes.data(), piece)));
            EXPECT_EQ(all, test.bytes);
            EXPECT_EQ(in.getStatus(), test.end);
        }
}

TYPED_TEST(StreamLink, WritesInBlocksUpToTheFirstFailure) {
    const std::string bytes = block + std::string(4096, 'c') + "d"; // three writes
    for (const bool throws : {false, true})
        for (std::size_t failing = 0; failing <= 3; ++failing) {
            Scripted<TypeParam> stream({{}, {}, {}, {}}, throws);
            stream.steps[failing].code = 1;
            ioBufferedStreamOutput out;
            open(out, &stream);
            out.writeData(bytes.data(), int(bytes.size()));
            out.close();
            EXPECT_EQ(out.getStatus(), failing < 3 ? streamIOError : streamOK);
            EXPECT_EQ(stream.written, bytes.substr(0, 4096 * failing));
            EXPECT_EQ(stream.calls, failing < 3 ? failing + 1 : 3);
        }
}

TYPED_TEST(StreamLink, WithoutAStreamFailsInsteadOfTouchingIt) {
    using Link = std::conditional_t<TestFixture::isSocket, ioBufferTCP, ioBufferIOStream>;
    char byte = 0;
    Scripted<TypeParam> stream({{"abc"}});
    for (const bool reading : {false, true})
        for (TypeParam* const below : std::initializer_list<TypeParam*>{&stream, nullptr}) {
            Link link(reading);
            EXPECT_EQ(link.getType(), this->isSocket ? 3 : 5);
            link.open(below);
            EXPECT_EQ(link.good(), below || !this->isSocket); // a null stream shows later
            link.close();                                     // forgets it
            if (reading)
                EXPECT_EQ(link.read(&byte, 1), 0);
            else
                link.write(&byte, 1);
            EXPECT_EQ(link.getStatus(), ioBuffer::bufferIOError);
        }
    EXPECT_EQ(stream.calls, 0U);
}
