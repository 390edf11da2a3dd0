// SPDX-License-Identifier: MIT

// A server that many clients talk to at once by framed strings: a message goes in, one comes back.
// It counts votes on one thread, which waits for all connections together. The system chooses the
// port, which the server prints; it ends when the given number of clients have come and gone.
//
//     $ mkfifo port; ballot serve 2 > port & read p < port; ballot vote $p a b a; ballot vote $p b
//     a: 1
//     b: 1
//     a: 2
//     b: 2
//     $ ballot serve 4 > port & read p < port; seq 4 | xargs -P 4 -n 1 ballot vote $p | sort
//     1: 1
//     2: 1
//     3: 1
//     4: 1

#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Strings/zeStringCString.h"
#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPClientSocket.h"
#include "Base/TCP/zeTCPServer.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Base/TCP/zeTCPWaitReadable.h"

namespace {

using Votes = std::map<std::string, int>;
using Clients = std::vector<std::unique_ptr<zeTCP::ServerSocket>>;

constexpr std::size_t maxChoices = 1000; // clients must not fill the memory

int fail(const zeUtil::Error& error) {
    std::fprintf(stderr, "ballot: %s\n", error.message());
    return 1;
}

/// Takes one message of a client and answers it. False when the client has gone, breaks the rules
/// or keeps us waiting.
bool answer(zeTCP::Socket& client, Votes& votes) {
    zeString::CString message;
    if (client.read(message).code() != 0)
        return false;
    const std::string choice = message.asChar();
    if (votes.size() >= maxChoices && !votes.contains(choice))
        return false;
    const std::string count = std::to_string(++votes[choice]);
    return client.write((choice + ": " + count).c_str()).code() == 0;
}

/// Accepts a client that waits, unless it has gone again. What is readable may be half a message:
/// whoever stops in the middle of one holds up the others for a second, and is sent away.
zeUtil::Error admit(zeTCP::Server& server, Clients& clients) {
    const auto [socket, error] = server.accept(zeUtil::Interval("1s"));
    if (!socket)
        return error;
    clients.emplace_back(socket);
    socket->setNoDelay(true); // each message is answered: see Documentation/network.md
    const timeval limit = {1, 0};
    setsockopt(socket->descriptor(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(socket->descriptor(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    return {};
}

int serve(int toCome) {
    zeTCP::Server server(-1, 16); // on any port that is free
    server.setLoopbackOnly();     // for this machine: nobody is asked who they are
    if (const zeUtil::Error error = server.listen(); error.code() != 0)
        return fail(error);
    std::printf("%d\n", server.getPort());
    std::fflush(stdout);

    Votes votes;
    Clients clients;
    while (toCome > 0 || !clients.empty()) {
        zeTCP::WaitReadable ready;
        ready.add(server);
        for (const auto& client : clients)
            ready.add(*client);
        if (ready.wait("30s").code() == 0) // which says that the time ran out; zero means for ever
            return fail({1, "nobody comes any more"});
        std::erase_if(clients, [&](const auto& client) {
            return ready.isReadable(*client) && !answer(*client, votes);
        });
        if (!ready.isReadable(server))
            continue;
        if (const zeUtil::Error error = admit(server, clients); error.code() != 0)
            return fail(error);
        --toCome;
    }
    return 0;
}

int vote(int port, char** choices) {
    zeTCP::ClientSocket server{zeTCP::Address(zeTCP::Address::localhost, port)};
    const zeUtil::Error connected = server.connect();
    if (server.descriptor() == -1) // the error alone may be that of an earlier attempt
        return fail(connected);
    server.setNoDelay(true);
    for (; *choices; ++choices) {
        zeString::CString count;
        zeUtil::Error error = server.write(*choices);
        if (error.code() == 0)
            error = server.read(count);
        if (error.code() != 0)
            return fail(error);
        std::puts(count.asChar());
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a peer that has gone is an error, and not the end
    setenv("ZE_IPV4_ONLY", "", 0); // a port that is free for IPv6 may be in use for IPv4
    const std::string_view what = argc > 2 ? argv[1] : "";
    if (what == "serve")
        return serve(std::atoi(argv[2]));
    if (what == "vote")
        return vote(std::atoi(argv[2]), argv + 3);
    std::fputs("usage: ballot serve CLIENTS | ballot vote PORT CHOICE...\n", stderr);
    return 2;
}
