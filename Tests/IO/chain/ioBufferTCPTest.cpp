// SPDX-License-Identifier: MIT

// Streams over connections, which are socket pairs and need no network.

#include "Base/IO/ioBufferTCP.h"

#include <cerrno>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/IO/ioPacketFileCheck.h"
#include "Support/FaultTrial.h"

#include "IO/formats/PacketFileSupport.h"
#include "TCP/Connection.h"

namespace {

using SF = SystemFaults;

constexpr std::size_t blocks = 3; // which the document takes
const std::string document = randomData(10'000);

ioStreamStatus send(zeTCP::Socket& socket, const std::string& bytes) {
    ioBufferedStreamOutput out;
    out.openSocket(&socket);
    out.writeData(bytes.data(), static_cast<int>(bytes.size()));
    out.close();
    shutdown(socket.descriptor(), SHUT_WR); // as close(2) does, which may not overlap a read
    return out.getStatus();
}

/// Whether these very bytes come.
bool receive(zeTCP::Socket& socket, const std::string& bytes) {
    ioBufferedStreamInput in;
    in.openSocket(&socket);
    std::string all(bytes.size(), '\0');
    in.readData(all.data(), static_cast<int>(all.size()));
    in.close();
    return in.getStatus() == streamOK && all == bytes;
}

} // namespace

// One thread reads from each socket while another writes to it, more than the connection holds.
TEST(SocketStream, CarriesBothDirectionsAtOnce) {
    const std::string bytes = randomData(2'000'000);
    Pair pair;
    std::thread threads[] = {std::thread([&] { send(pair.here, bytes); }),
                             std::thread([&] { EXPECT_TRUE(receive(pair.here, bytes)); }),
                             std::thread([&] { send(pair.there, bytes); })};
    EXPECT_TRUE(receive(pair.there, bytes));
    for (std::thread& thread : threads)
        thread.join();
}

// Whatever has come before is delivered, and then the stream has failed: nothing waits, and no cut
// packet file is taken for a whole one, nor its end for that of a file.
TEST(SocketStream, FailsWhereItIsCutOrReset) {
    for (const packets::Form& form : packets::forms) {
        const std::string bytes = form.file(form.thing(form.text ? "7 " : "7"));
        for (const bool isReset : {false, true})
            for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
                Pair pair(bytes.substr(0, cut));
                if (isReset) // the other end is closed with a byte that it has not read
                    pair.here.write("x", 1, nullptr);
                pair.there.close(3);
                ioBufferedStreamInput in;
                in.openSocket(&pair.here);
                ASSERT_EQ(ioPacketFileCheck(in), cut + form.text < bytes.size() ? ioError : ioOK)
                    << cut;
                while (in.readChar() == '\n') { // which the end of a text does not need
                }
                ASSERT_EQ(in.getStatus(), streamIOError) << form.method << ' ' << cut;
            }
    }
}

TEST(SocketStream, SurvivesInterruptionsAndReportsFailuresOfEachCall) {
    for (const SF::Call call : {SF::onSend, SF::onRecv})
        for (const SF::Answer answer : {SF::Answer{EINTR}, {0, 1}, {ECONNRESET}}) {
            bool isSent = false;
            bool isReceived = false;
            std::optional<Pair> pair;
            FaultTrial trial;
            trial.prepare = [&] { pair.emplace(); };
            trial.operation = [&] {
                isSent = send(pair->here, document) == streamOK;
                isReceived = receive(pair->there, document);
            };
            trial.check = [&](const Fault& fault) {
                // A failure behind the last byte comes with bytes, and does no harm.
                const bool harms = answer.error == ECONNRESET && fault.n > 0 && fault.n <= blocks;
                EXPECT_EQ(isSent, !harms || call == SF::onRecv) << fault.n;
                EXPECT_EQ(isReceived, !harms) << fault.n;
            };
            EXPECT_GE(trial.run(call, answer), blocks);
        }
}
