// SPDX-License-Identifier: MIT

// Sends a document, as packets, to a server that checks and reads it, and answers. What comes from
// a network is received as a whole first, up to a limit, and checked: a document that is cut off
// would keep its reader waiting for ever.
//
//     $ mkfifo port; sendscene receive 1 > port & read p < port; sendscene send $p 0,0 3,4 3,16
//     3 points, a way of 17
//     $ sendscene receive 1 > port & read p < port; echo cut > /dev/tcp/127.0.0.1/$p
//     sendscene: no whole document came

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
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

struct Point {
    double x = 0;
    double y = 0;
};

using Points = std::vector<Point>;

int fail(const char* message) {
    std::fprintf(stderr, "sendscene: %s\n", message);
    return 1;
}

/// Writes the document to the socket as to a file, and says that this was all.
bool send(const Points& points, zeTCP::Socket& socket) {
    ioSimplePacketRegistry types(false);
    types.add("point");
    ioBufferedStreamOutput stream;
    stream.openSocket(&socket);
    std::unique_ptr<ioWriteContext> out(ioWriteContextAlloc(stream, ioWriteBinary, &types));
    out->startFile();
    for (const Point& point : points) {
        out->startPacket("point", nullptr);
        out->writeDouble(point.x);
        out->writeDouble(point.y);
        out->endPacket();
    }
    out->endFile();
    stream.close();  // the socket stays open, for the answer
    socket.close(2); // its reader waits for the end of our side
    return out->good() && stream.getStatus() == streamOK;
}

/// Takes what comes until the peer has closed its writing side. False if the connection breaks, or
/// if it is too much.
bool takeAll(zeTCP::Socket& socket, zeOS::MemoryIOStream& memory) {
    constexpr unsigned long limit = 1 << 20;
    zeUtil::Error error;
    memory.openForWrite();
    for (unsigned long taken = 0; error.code() == 0 && taken <= limit;) {
        char bytes[4096];
        unsigned long got = 0;
        error = socket.read(bytes, sizeof bytes, &got);
        memory.write(bytes, got, nullptr);
        taken += got;
    }
    memory.close();
    return error.code() == 4;
}

struct Loader : ioClientReadContext {
    using ioClientReadContext::ioClientReadContext;
    Points points;
};

struct PointType : ioPacketType {
    PointType() : ioPacketType("point") {}

    void read(ioClientReadContext& in) override {
        const double x = in.readDouble();
        static_cast<Loader&>(in).points.push_back({x, in.readDouble()});
    }
};

/// Reads the document, if it is one.
bool load(zeOS::MemoryIOStream& memory, Points& points) {
    ioBufferedStreamInput stream;
    memory.openForRead();
    stream.openIOStream(&memory);
    if (ioPacketFileCheck(stream) != ioOK)
        return false;
    memory.openForRead(); // from its start
    stream.openIOStream(&memory);
    ioSimplePacketRegistry types(true);
    types.supportedType(new PointType); // the registry owns it
    std::unique_ptr<ioReadContext> in(ioReadContextAlloc(stream, &types));
    Loader loader(in.get());
    const bool isRead = loader.readFile() == ioOK;
    points = loader.points;
    return isRead;
}

void answer(zeTCP::Socket& client) {
    zeOS::MemoryIOStream memory(65536, nullptr);
    Points points;
    if (!takeAll(client, memory) || !load(memory, points)) {
        fail("no whole document came");
        return;
    }
    double way = 0;
    for (std::size_t i = 1; i < points.size(); ++i)
        way += std::hypot(points[i].x - points[i - 1].x, points[i].y - points[i - 1].y);
    char text[64];
    std::snprintf(text, sizeof text, "%zu points, a way of %g", points.size(), way);
    client.write(text);
}

/// Serves one client after another. It has no time-out: a client that is silent holds up all.
int receive(int clients) {
    zeTCP::Server server(-1, 16); // on any port that is free
    server.setLoopbackOnly();
    if (const zeUtil::Error error = server.listen(); error.code() != 0)
        return fail(error.message());
    std::printf("%d\n", server.getPort());
    std::fflush(stdout);
    for (; clients > 0; --clients) {
        const auto [socket, error] = server.accept(zeUtil::Interval()); // zero means for ever
        const std::unique_ptr<zeTCP::ServerSocket> client(socket);
        if (!client)
            return fail(error.message());
        answer(*client);
    }
    return 0;
}

int sendTo(int port, char** arguments) {
    Points points;
    for (Point point; *arguments; ++arguments)
        if (std::sscanf(*arguments, "%lf,%lf", &point.x, &point.y) == 2)
            points.push_back(point);
    zeTCP::ClientSocket server{zeTCP::Address(zeTCP::Address::localhost, port)};
    const zeUtil::Error connected = server.connect();
    if (server.descriptor() == -1)
        return fail(connected.message());
    zeString::CString text;
    if (!send(points, server) || server.read(text).code() != 0)
        return fail("the server did not take the document");
    std::puts(text.asChar());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a peer that has gone is an error, and not the end
    const std::string_view what = argc > 2 ? argv[1] : "";
    if (what == "receive")
        return receive(std::atoi(argv[2]));
    if (what == "send")
        return sendTo(std::atoi(argv[2]), argv + 3);
    std::fputs("usage: sendscene receive CLIENTS | sendscene send PORT X,Y...\n", stderr);
    return 2;
}
