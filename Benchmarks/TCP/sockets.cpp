// SPDX-License-Identifier: MIT

// roundtrip: a framed string and its echo, over loopback with TCP_NODELAY.
// bulk: 64 MiB by write(), in pieces of one size.
// packets: 200,000 records of nine values, one packet each, sent as a packet file to a peer that
//   throws the bytes away. "pipe" is the same through the link over a descriptor, into a pipe.

#include <fcntl.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Support/RecordFile.h"

#include "TCP/socketsWorkload.h"

namespace {

class OurEnd {
public:
    using Message = zeString::CString;

    explicit OurEnd(int fd) : socket_(fd) {}

    bool send(const Message& message) { return socket_.write(message).code() == 0; }
    bool receive(Message& message) { return socket_.read(message).code() == 0; }
    bool sendBytes(const std::string& bytes) {
        return socket_.write(bytes.data(), bytes.size(), nullptr).code() == 0;
    }

private:
    zeTCP::ServerSocket socket_;
};

/// Times `write`, which sends all packets to the descriptor that it is given and closes that.
template<class Write>
void sendPackets(State& s, int (*connect)(int& there), Write write) {
    bench::recs(bench::recordCount);
    size_t received = 0;
    for (auto _ : s) {
        int there = -1;
        const int here = connect(there);
        size_t count = 0;
        std::thread reader([&] { count = bench::drain(there); });
        write(here);
        reader.join();
        bench::require(count > 64 * bench::recordCount && (!received || count == received),
                       "all packets");
        received = count;
    }
    bench::items(s, bench::recordCount);
}

void toSocket(int fd) {
    zeTCP::ServerSocket socket(fd);
    ioBufferedStreamOutput stream;
    stream.openSocket(&socket);
    bench::writeStream<bench::RecordType>(stream, ioWriteBinary, bench::putRecords);
}

void toPipe(int fd) {
    class Output : public ioBufferedStreamOutput {
    public:
        explicit Output(int fd) {
            auto* const sink = new ioBufferFD(false);
            startChain(sink);
            sink->useFD(fd);
        }
    };
    Output stream(fd);
    bench::writeStream<bench::RecordType>(stream, ioWriteBinary, bench::putRecords);
}

int makeConnection(int& there) {
    const bench::Connection connection(false);
    there = connection.there;
    return connection.here;
}

int makePipe(int& there) {
    int ends[2];
    bench::require(pipe2(ends, O_CLOEXEC) == 0, "a pipe");
    there = ends[0];
    return ends[1];
}

const bool registered = [] {
    bench::regRoundTrip<OurEnd>("ours");
    bench::regBulk<OurEnd>("ours");
    bench::reg("packets/ours", [](State& s) {
        sendPackets(s, makeConnection, toSocket);
    })->UseRealTime();
    bench::reg("packets/pipe", [](State& s) { sendPackets(s, makePipe, toPipe); })->UseRealTime();
    return true;
}();

} // namespace
