// SPDX-License-Identifier: MIT

// Sends a document, as packets, to a server that takes all of it, up to a limit, checks it, reads
// it and answers. Reading a document that is cut off would never end.
//
//     $ mkfifo port; senddocument receive > port & read p < port; senddocument send $p 1 2.5 4
//     3 values, 7.5 in all
//     $ senddocument receive > port & read p < port; echo cut > /dev/tcp/127.0.0.1/$p
//     senddocument: no whole document came

#include <sys/socket.h>
#include <sys/time.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <string_view>
#include <vector>

#include "Base/IO/ioPacketFile.h"
#include "Base/IO/ioPacketFileCheck.h"
#include "Base/OS/zeOSMemoryIOStream.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPClientSocket.h"
#include "Base/TCP/zeTCPServer.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Base/Utility/zeUtilInterval.h"

namespace {

using Values = std::vector<double>;

int fail(const char* message) {
    std::fprintf(stderr, "senddocument: %s\n", message);
    return 1;
}

/// Writes the document to the socket as to a file, and says that this was all.
bool send(const Values& values, zeTCP::Socket& socket) {
    ioSimplePacketRegistry types(false);
    types.add("value");
    ioBufferedStreamOutput stream;
    stream.openSocket(&socket);
    std::unique_ptr<ioWriteContext> out(ioWriteContextAlloc(stream, ioWriteBinary, &types));
    out->startFile();
    for (const double value : values) {
        out->startPacket("value", nullptr);
        out->writeDouble(value);
        out->endPacket();
    }
    out->endFile();
    stream.close();  // the socket stays open, for the answer
    socket.close(2); // its reader waits for the end of our side
    return out->good() && stream.getStatus() == streamOK;
}

/// Takes all that comes until the peer closes its writing side; false if it breaks, or is too much.
bool takeAll(zeTCP::Socket& socket, zeOS::MemoryIOStream& memory) {
    constexpr unsigned long limit = 1 << 20;
    const timeval patience = {30, 0}; // for each piece; without it, a silent peer is waited for
    setsockopt(socket.descriptor(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    zeUtil::Error error;
    memory.openForWrite();
    for (unsigned long taken = 0, got = 0; error.code() == 0 && taken <= limit; taken += got) {
        char bytes[4096];
        error = socket.read(bytes, sizeof bytes, &got);
        memory.write(bytes, got, nullptr);
    }
    memory.close();
    return error.code() == 4;
}

struct Loader : ioClientReadContext {
    using ioClientReadContext::ioClientReadContext;
    Values values;
};
struct ValueType : ioPacketType {
    ValueType() : ioPacketType("value") {}
    void read(ioClientReadContext& in) override {
        static_cast<Loader&>(in).values.push_back(in.readDouble());
    }
};

/// Reads the document, if it is one.
bool load(zeOS::MemoryIOStream& memory, Values& values) {
    ioBufferedStreamInput stream;
    memory.openForRead();
    stream.openIOStream(&memory);
    if (ioPacketFileCheck(stream) != ioOK)
        return false;
    memory.openForRead(); // from its start
    stream.openIOStream(&memory);
    ioSimplePacketRegistry types(true);
    types.supportedType(new ValueType); // the registry owns it
    std::unique_ptr<ioReadContext> in(ioReadContextAlloc(stream, &types));
    Loader loader(in.get());
    loader.readFile();
    values = loader.values;
    return in->good();
}

/// Serves one client.
int receive() {
    zeTCP::Server server(-1, 1); // on any port that is free
    server.setLoopbackOnly();
    if (const zeUtil::Error error = server.listen(); error.code() != 0)
        return fail(error.message());
    std::printf("%d\n", server.getPort());
    std::fflush(stdout);
    const auto [socket, error] = server.accept("30s"); // a zero interval means for ever
    const std::unique_ptr<zeTCP::ServerSocket> client(socket);
    zeOS::MemoryIOStream memory(65536, nullptr);
    Values values;
    if (!client || !takeAll(*client, memory) || !load(memory, values))
        return fail("no whole document came");
    char text[64];
    std::snprintf(text, sizeof text, "%zu values, %g in all", values.size(),
                  std::accumulate(values.begin(), values.end(), 0.0));
    return client->write(text).code();
}

int sendTo(int port, char** arguments) {
    Values values;
    for (; *arguments; ++arguments)
        values.push_back(std::strtod(*arguments, nullptr));
    zeTCP::ClientSocket server{zeTCP::Address(zeTCP::Address::localhost, port)};
    if (const zeUtil::Error error = server.connect(); server.descriptor() == -1)
        return fail(error.message());
    zeString::CString text;
    if (!send(values, server) || server.read(text).code() != 0)
        return fail("the server did not take the document");
    std::puts(text.asChar());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a peer that has gone is an error, and not the end
    setenv("ZE_IPV4_ONLY", "", 0); // a port that is free for IPv6 may be in use for IPv4
    if (argc == 2 && argv[1] == std::string_view("receive"))
        return receive();
    if (argc > 2 && argv[1] == std::string_view("send"))
        return sendTo(std::atoi(argv[2]), argv + 3);
    std::fputs("usage: senddocument receive | senddocument send PORT VALUE...\n", stderr);
    return 2;
}
