// SPDX-License-Identifier: MIT

// Packet files over connections, which are socket pairs and need no network, and over another
// stream.

#include "Base/IO/ioBufferTCP.h"

#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/IO/ioPacketFileCheck.h"
#include "Base/OS/zeOSMemoryIOStream.h"
#include "Support/FaultTrial.h"

#include "IO/formats/PacketFileSupport.h"
#include "TCP/Connection.h"

namespace {

using SF = SystemFaults;

/// A packet file of things, each a number and a text of 100 bytes.
struct Document {
    ioWriteMethod method = ioWriteBinary;
    bool compressed = false;
    int things = 100; // of several blocks

    static std::string text(int i) { return std::string(100, static_cast<char>('a' + i % 26)); }

    void write(ioBufferedStreamOutput& out) const {
        if (compressed)
            out.compress(true);
        packets::Registry registry(false, {{"thing", nullptr}});
        const std::unique_ptr<ioWriteContext> context(ioWriteContextAlloc(out, method, &registry));
        context->startFile();
        for (int i = 0; i < things; ++i) {
            context->startPacket("thing", nullptr);
            context->writeInt(i);
            context->writeCString(text(i).c_str());
            context->endPacket();
        }
        context->endFile();
        out.close();
    }

    /// Whether the stream delivers this very document.
    bool isReadFrom(ioBufferedStreamInput& in) const {
        if (compressed)
            in.compress(true);
        int count = 0;
        packets::Registry registry(true, {{"thing", [&](ioClientReadContext& client) {
                                               const int i = client.readInt();
                                               const bool is = text(i) == client.readCString();
                                               count += is && i == count;
                                           }}});
        const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(in, &registry));
        const bool complete =
            context && ioClientReadContext(context.get()).readFile() == ioOK && count == things;
        in.close();
        return complete && in.getStatus() == streamOK;
    }
};

} // namespace

TEST(PacketConnection, CarriesEveryFormOfAFileBothWaysEvenByteByByte) {
    for (const ioWriteMethod method :
         {ioWriteAscii, ioWriteBinary, ioWriteAsciiDebug, ioWriteBinaryDebug})
        for (const bool compressed : {false, true}) {
            SCOPED_TRACE(testing::Message() << method << compressed);
            const Document sent{method, compressed, 100};
            const Document answer{method, compressed, 1};
            Pair pair;
            ioBufferedStreamOutput out;
            out.openSocket(&pair.here);
            sent.write(out);
            EXPECT_EQ(out.getStatus(), streamOK);
            pair.here.close(2); // the reader of the last block waits for this

            const SF oneByOne(SF::onRecv, std::vector<SF::Answer>(100000, {0, 1}));
            ioBufferedStreamInput in;
            in.openSocket(&pair.there);
            EXPECT_TRUE(sent.isReadFrom(in));
            out.openSocket(&pair.there); // neither end has been closed
            answer.write(out);
            pair.there.close(2);
            in.openSocket(&pair.here);
            EXPECT_TRUE(answer.isReadFrom(in));

            zeOS::MemoryIOStream memory(1000, nullptr); // delivers 1000 bytes at most
            memory.openForWrite();
            out.openIOStream(&memory);
            sent.write(out);
            memory.openForRead();
            in.openIOStream(&memory);
            EXPECT_TRUE(sent.isReadFrom(in));
        }
}

// One thread reads from each socket while another writes to it, more than the connection holds.
TEST(PacketConnection, CarriesBothDirectionsAtOnce) {
    const Document document{ioWriteBinary, false, 20'000};
    Pair pair;
    const auto send = [&](zeTCP::Socket& socket) {
        ioBufferedStreamOutput out;
        out.openSocket(&socket);
        document.write(out);
        shutdown(socket.descriptor(), SHUT_WR); // close(2) may not overlap a read
    };
    const auto receive = [&](zeTCP::Socket& socket) {
        ioBufferedStreamInput in;
        in.openSocket(&socket);
        EXPECT_TRUE(document.isReadFrom(in));
    };
    std::thread threads[] = {std::thread([&] { send(pair.here); }),
                             std::thread([&] { receive(pair.here); }),
                             std::thread([&] { send(pair.there); })};
    receive(pair.there);
    for (std::thread& thread : threads)
        thread.join();
}

// Whatever has come before is delivered, and then the stream has failed: nothing waits, and no cut
// file is taken for a whole one.
TEST(PacketConnection, FailsWhereItIsCutOrResetAndKnowsThatTheFileIsNotWhole) {
    for (const packets::Form& form : packets::forms) {
        const std::string bytes = form.file(form.thing(form.text ? "7 " : "7"));
        const std::size_t whole = bytes.size() - form.text; // the last newline is of no account
        for (const bool isReset : {false, true})
            for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
                Pair pair(bytes.substr(0, cut));
                if (isReset) // the other end is closed with a byte that it has not read
                    pair.here.write("x", 1, nullptr);
                pair.there.close(3);
                ioBufferedStreamInput in;
                in.openSocket(&pair.here);
                ASSERT_EQ(ioPacketFileCheck(in) == ioOK, cut >= whole) << form.method << ' ' << cut;
                while (in.readChar() != 0) { // a newline at most
                }
                ASSERT_EQ(in.getStatus(), streamIOError) << form.method << ' ' << cut;
            }
    }
}

TEST(PacketConnection, SurvivesInterruptionsAndReportsFailuresOfEachCall) {
    constexpr std::size_t blocks = 3; // which the document takes
    const struct {
        SF::Call call;
        SF::Answer answer;
        bool isFailure;
    } cases[] = {
        {SF::onSend, {EINTR}, false}, {SF::onSend, {0, 1}, false}, {SF::onSend, {EPIPE}, true},
        {SF::onRecv, {EINTR}, false}, {SF::onRecv, {0, 1}, false}, {SF::onRecv, {ECONNRESET}, true},
    };
    const Document document;
    for (const auto& test : cases) {
        bool isWritten = false;
        bool isRead = false;
        std::optional<Pair> pair;
        FaultTrial trial;
        trial.prepare = [&] { pair.emplace(); };
        trial.operation = [&] {
            ioBufferedStreamOutput out;
            out.openSocket(&pair->here);
            document.write(out);
            isWritten = out.getStatus() == streamOK;
            pair->here.close(2);
            ioBufferedStreamInput in;
            in.openSocket(&pair->there);
            isRead = document.isReadFrom(in);
        };
        trial.check = [&](const Fault& fault) {
            // A failure behind the last byte comes with bytes, and does no harm.
            const bool harms = test.isFailure && fault.n > 0 && fault.n <= blocks;
            EXPECT_EQ(isWritten, !harms || test.call == SF::onRecv) << fault.n;
            EXPECT_EQ(isRead, !harms) << fault.n;
        };
        EXPECT_GE(trial.run(test.call, test.answer), blocks);
    }
}
