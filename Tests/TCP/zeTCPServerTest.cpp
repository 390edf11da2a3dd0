// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPServer.h"

#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/TCP/zeTCPWaitReadable.h"
#include "Support/FaultTrial.h"

#include "TCP/Connection.h"
#include <net/if.h>

using zeTCP::Address;
using zeTCP::ClientSocket;
using zeTCP::Server;
using zeTCP::WaitReadable;

using enum SystemFaults::Call;

namespace {

/// A text there and one back. What arrived, or the first failure.
std::string exchange(Connection& connection) {
    zeString::CString got;
    zeUtil::Error error = connection.client->write("there");
    if (error.code() == 0)
        error = connection.accepted->read(got);
    connection.client->close(2);
    if (error.code() == 0 && got == "there")
        error = connection.accepted->write("back");
    if (error.code() == 0)
        error = connection.client->read(got);
    return error.code() == 0 ? got.asChar() : text(error);
}

/// Moves the process into a network that it has to itself, with a loopback interface that is up or
/// down.
bool enterNetwork(bool up) {
    if (::unshare(CLONE_NEWNET) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    const zeUtil::Descriptor fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request = {};
    request.ifr_name[0] = 'l';
    request.ifr_name[1] = 'o';
    request.ifr_flags = IFF_UP;
    return !up || ::ioctl(fd.get(), SIOCSIFFLAGS, &request) == 0;
}

/// Whether a child process can have one, with "::1", and with IPv6 sockets that take IPv4 as usual.
bool canHaveNetwork() {
    const pid_t child = ::fork();
    if (child == 0) {
        int only = 1;
        if (std::FILE* file = std::fopen("/proc/sys/net/ipv6/bindv6only", "r"))
            static_cast<void>(std::fscanf(file, "%d", &only) == 1);
        Server server(-1, 5);
        server.setLoopbackOnly();
        if (only == 0 && enterNetwork(true))
            server.listen();
        server.shutdown();
        _exit(server.isListening() ? 0 : 1);
    }
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

/// For a fresh process: what a server and a client of it meet in a network of their own.
[[noreturn]] void endWithReport(const char* variable, bool up, bool loopbackOnly) {
    setenv(variable, "", 1);
    if (!enterNetwork(up)) {
        std::fprintf(stderr, "no network\n");
        _exit(0);
    }
    Server server(-1, 5);
    if (loopbackOnly)
        server.setLoopbackOnly();
    const int listened = server.listen().code();
    ClientSocket client(Address(Address::localhost, server.getPort()));
    const int connected = client.connect().code();
    const bool pending = client.descriptor() != -1 && server.connectionPending();
    const std::unique_ptr<zeTCP::ServerSocket> accepted(server.accept("1ms").socket);
    server.shutdown();
    std::fprintf(stderr, "listen %d%s, connect %d, from %s, pending %d\n", listened,
                 server.isListening() ? " IPv6" : "", connected,
                 accepted ? accepted->remoteAddress().address->getNumbersAndDots().text.asUTF8()
                          : "nowhere",
                 pending);
    _exit(0);
}

} // namespace

TEST(Server, ChoosesAPortThatNobodyElseGets) {
    Connection connection;
    if (!connection.isThere())
        GTEST_SKIP() << "no loopback network: " << text(connection.error);
    EXPECT_EQ(exchange(connection), "back");
    Server& server = connection.server;
    EXPECT_GT(server.getPort(), 0);
    Server second(server.getPort(), 5);
    second.setLoopbackOnly();
    EXPECT_EQ(text(second.listen()), "3: bind() failed: Address already in use");
    EXPECT_FALSE(second.isListening());
    EXPECT_EQ(second.accept("1ms").error.code(), 3); // which listens on demand
    EXPECT_EQ(second.getPort(), server.getPort());

    WaitReadable ready;
    ready.add(server);
    EXPECT_EQ(text(ready.wait("1ms")), "");
    EXPECT_FALSE(ready.isReadable(server));
    ClientSocket next(Address(Address::localhost, server.getPort()));
    next.connect();
    EXPECT_TRUE(server.connectionPending());
    ready.add(server);
    EXPECT_EQ(ready.wait("10s").code(), 1);
    EXPECT_TRUE(ready.isReadable(server));

    server.shutdown(); // IPv4 alone; its number stays behind
    EXPECT_EQ(server.getListeningSocketImplIPv4(), nullptr);
    EXPECT_FALSE(server.connectionPending());
    EXPECT_EQ(text(server.accept("10s").error), "1: Bad file descriptor");
    ClientSocket late(Address(Address::localhost, server.getPort()));
    EXPECT_EQ(late.connect().code(), 3); // that of IPv4, also where "::1" answers
    EXPECT_EQ(late.descriptor() != -1, server.isListening());
}

TEST(Server, ListensWhenItIsToAccept) {
    Server server(-1, 5);
    EXPECT_FALSE(server.connectionPending() || server.isListening());
    EXPECT_EQ(server.getListeningSocketImplIPv6(), nullptr);
    server.setLoopbackOnly();
    zeTCP::Socket* socket = nullptr;
    if (const zeUtil::Error error = server.accept(&socket, "1ms"); error.code() != 0)
        GTEST_SKIP() << "no loopback network: " << text(error);
    EXPECT_EQ(socket, nullptr); // the time is over
    EXPECT_GT(server.getPort(), 0);
    EXPECT_TRUE(server.isListening());

    Server unlucky(-1, 5);
    {
        const SystemFaults faults(onBind, {{EADDRINUSE}, {EACCES}});
        const int code = unlucky.listen().code();
        EXPECT_TRUE(code == 1 || (code == 3 && faults.calls() == 1)); // the last one's
    }
    EXPECT_EQ(unlucky.getPort(), 0); // and no longer -1
    Server any(0, 5);
    any.setLoopbackOnly();
    EXPECT_EQ(text(any.listen()), "");
    any.shutdown();
    EXPECT_EQ(any.getPort() > 0, any.isListening()); // only IPv6 tells which port it is
}

TEST(Server, LosesNothingWhateverFails) {
    if (const Connection connection; !connection.isThere())
        GTEST_SKIP() << "no loopback network: " << text(connection.error);
    std::string result;
    FaultTrial trial;
    trial.operation = [&] {
        Connection connection;
        result = connection.isThere() ? exchange(connection) : text(connection.error);
    };
    trial.check = [&](const Fault& fault) {
        const bool isRepeated =
            fault.answer.error == EINTR && (fault.call == onSend || fault.call == onRecv ||
                                            fault.call == onSelect || fault.call == onAccept4);
        if (fault.n == 0 || fault.answer.error == 0 || isRepeated)
            EXPECT_EQ(result, "back");
        else
            EXPECT_TRUE(result == "back" || (result[0] >= '1' && result[0] <= '4')) << result;
    };
    testing::internal::CaptureStdout();
    const std::string broken = trial.runAll();
    trial.runPairs(EIO);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(
                  "Connection failed: connect() failed: Input/output error\n"),
              std::string::npos);
    EXPECT_EQ(broken, "close socket bind listen accept4 connect send recv select shutdown "
                      "getsockname getaddrinfo");
    trial.report("an exchange over TCP");
}

TEST(ServerDeathTest, TakesTheProtocolsThatThereAre) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // each in a fresh process
    if (!canHaveNetwork())
        GTEST_SKIP() << "this machine allows no network namespace with IPv6";
    const struct {
        const char* variable;
        bool up, loopbackOnly;
        const char* report;
    } cases[] = {
        {"NONE", true, true, "listen 0 IPv6, connect 0, from 127.0.0.1, pending 1"},
        {"NONE", true, false, "listen 3 IPv6, connect 0, from 0.0.0.0, pending 0"},
        {"ZE_IPV4_ONLY", true, true, "listen 0, connect 0, from 127.0.0.1, pending 1"},
        {"ZE_IPV4_ONLY", true, false, "listen 0, connect 0, from 127.0.0.1, pending 1"},
        {"ZE_IPV6_ONLY", true, true, "listen 0 IPv6, connect 0, from 0.0.0.0, pending 0"},
        {"ZE_IPV6_ONLY", true, false, "listen 0 IPv6, connect 0, from 0.0.0.0, pending 0"},
        {"ZE_IPV4_ONLY", false, false, "listen 0, connect 4, from nowhere, pending 0"},
        {"ZE_IPV4_ONLY", false, true, "listen 0, connect 4, from nowhere, pending 0"},
    };
    for (const auto& c : cases)
        EXPECT_EXIT(endWithReport(c.variable, c.up, c.loopbackOnly), testing::ExitedWithCode(0),
                    std::string("no network|") + c.report);
}
