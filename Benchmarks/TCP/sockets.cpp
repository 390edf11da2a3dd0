// SPDX-License-Identifier: MIT

// roundtrip: a framed string and its echo, over loopback with TCP_NODELAY.
// bulk: 64 MiB by write(), in pieces of one size.
// packets: 200,000 records of nine values, one packet each, sent as a packet file to a peer that
//   throws the bytes away. "pipe" is the same into a pipe, in the same blocks of 4096 bytes;
//   "pipe_file" through the link of files, which writes 262144 bytes at a time.

#include <fcntl.h>
#include <unistd.h>

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
    struct Pipe : zeOS::IOStream {
        explicit Pipe(int fd) : fd(fd) {}
        zeUtil::Error read(void*, unsigned long, unsigned long*) override { return {1, "unread"}; }
        zeUtil::Error write(const void* bytes, unsigned long n, unsigned long*) override {
            const bool isWritten = ::write(fd, bytes, n) == ssize_t(n); // a pipe takes all
            return isWritten ? zeUtil::Error() : zeUtil::Error(1, "unwritten");
        }
        int fd;
    };
    Pipe pipe(fd);
    ioBufferedStreamOutput stream;
    stream.openIOStream(&pipe);
    bench::writeStream<bench::RecordType>(stream, ioWriteBinary, bench::putRecords);
    ::close(fd);
}

void toPipeAsToAFile(int fd) {
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
    bench::reg("packets/pipe_file", [](State& s) {
        sendPackets(s, makePipe, toPipeAsToAFile);
    })->UseRealTime();
    return true;
}();

} // namespace
