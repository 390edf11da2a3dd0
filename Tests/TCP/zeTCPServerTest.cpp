// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPServer.h"

#include <netdb.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/TCP/zeTCPWaitReadable.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Support/FaultTrial.h"

#include "TCP/Connection.h"
#include <net/if.h>

using zeTCP::ClientSocket;
using zeTCP::Server;

using enum SystemFaults::Call;

namespace {

/// A text there and one back. What came back, or the first failure.
std::string exchange(Connection& connection) {
    if (!connection.isThere())
        return text(connection.error);
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

/// Moves the process into a network of its own, with a loopback interface that is up or down.
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

/// For a fresh process: what a server and its client meet in a network of their own.
[[noreturn]] void endWithReport(const char* variable, bool up, bool loopbackOnly) {
    setenv(variable, "", 1);
    if (!enterNetwork(up))
        _exit(std::fputs("no network", stderr) < 0);
    Server server(-1, 5);
    if (loopbackOnly)
        server.setLoopbackOnly();
    server.listen();
    const int listened = server.listen().code(); // which finds its own port free
    ClientSocket client(zeTCP::Address(zeTCP::Address::localhost, server.getPort()));
    const int connected = client.connect().code();
    const bool pending = client.descriptor() != -1 && server.connectionPending();
    const std::unique_ptr<zeTCP::ServerSocket> accepted(server.accept("1ms").socket);
    server.shutdown();
    std::fprintf(stderr, "listen %d%s, connect %d, pending %d, from %s", listened,
                 server.isListening() ? " IPv6" : "", connected, pending,
                 accepted ? accepted->remoteAddress().address->getNumbersAndDots().text.asUTF8()
                          : "nobody");
    _exit(0);
}

} // namespace

TEST(Server, ChoosesAPortThatNobodyElseGets) {
    Connection connection;
    if (!connection.isThere())
        GTEST_SKIP() << "no loopback network: " << text(connection.error);
    Server& server = *connection.server;
    Server second(server.getPort(), 5);
    second.setLoopbackOnly();
    EXPECT_EQ(text(second.listen()), "3: bind() failed: Address already in use");
    EXPECT_FALSE(second.isListening());
    EXPECT_EQ(second.getPort(), server.getPort());
    EXPECT_NE(ClientSocket(zeTCP::Address("127.0.0.2", server.getPort())).connect().code(), 0);

    zeTCP::WaitReadable ready;
    ready.add(server);
    EXPECT_EQ(text(ready.wait("1ms")), "");
    EXPECT_FALSE(ready.isReadable(server));
    ClientSocket next(connection.address());
    EXPECT_EQ(text(next.connect()), "");
    EXPECT_TRUE(server.connectionPending());
    ready.add(server);
    EXPECT_EQ(ready.wait("10s").code(), 1);
    EXPECT_TRUE(ready.isReadable(server));

    server.shutdown(); // IPv4 alone; its number stays behind
    EXPECT_EQ(server.getListeningSocketImplIPv4(), nullptr);
    EXPECT_FALSE(server.connectionPending());
    EXPECT_EQ(text(server.accept("10s").error), "1: Bad file descriptor");
    ready.reset();
    ready.add(server);
    EXPECT_EQ(ready.isReadable(server), server.isListening());
    ClientSocket late(connection.address());
    const int code = late.connect().code(); // that of IPv4, also where "::1" answers
    EXPECT_EQ(late.descriptor() != -1, server.isListening());
    EXPECT_TRUE(server.isListening() ? code == 3 : code != 0) << code;
    const SystemFaults faults(SystemFaults::onGetaddrinfo,
                              {{EAI_AGAIN}}); // of "127.0.0.1": goes on, too
    ClientSocket last(connection.address());
    EXPECT_EQ(last.connect().code() == 0, server.isListening());
}

TEST(Server, ListensWhenItIsToAccept) {
    Server server(-1, 5);
    EXPECT_FALSE(server.connectionPending() || server.isListening());
    server.setLoopbackOnly();
    zeTCP::Socket* socket = nullptr;
    if (const zeUtil::Error error = server.accept(&socket, "1ms"); error.code() != 0)
        GTEST_SKIP() << "no loopback network: " << text(error);
    EXPECT_EQ(socket, nullptr); // the time is over
    EXPECT_TRUE(server.isListening() && server.getPort() > 0);

    Server unlucky(-1, 5);
    {
        const SystemFaults faults(SystemFaults::onBind, {{EADDRINUSE}, {EADDRINUSE}});
        EXPECT_EQ(unlucky.accept("1ms").error.code(), 3);
    }
    EXPECT_EQ(unlucky.getPort(), 0); // and no longer -1
    Server any(0, 5);
    any.setLoopbackOnly();
    EXPECT_NE(any.listen().code(), 1);
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
        result = exchange(connection);
    };
    trial.check = [&](const Fault& fault) {
        const bool isRepeated =
            fault.answer.error == EINTR && (fault.call == onSend || fault.call == onRecv ||
                                            fault.call == onSelect || fault.call == onAccept4);
        const bool mayFail = fault.n > 0 && fault.answer.error != 0 && !isRepeated;
        EXPECT_TRUE(result == "back" || (mayFail && result[0] >= '1' && result[0] <= '4'))
            << result;
    };
    testing::internal::CaptureStdout();
    EXPECT_EQ(trial.runAll(), "close socket bind listen accept4 connect send recv select shutdown "
                              "getsockname getaddrinfo");
    trial.runPairs(EIO);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(
                  "Connection failed: connect() failed: Input/output error\n"),
              std::string::npos);
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
        {"NONE", true, true, "listen 0 IPv6, connect 0, pending 1, from 127.0.0.1"},
        {"NONE", true, false, "listen 3 IPv6, connect 0, pending 0, from 0.0.0.0"},
        {"ZE_IPV4_ONLY", true, false, "listen 0, connect 0, pending 1, from 127.0.0.1"},
        {"ZE_IPV6_ONLY", true, true, "listen 0 IPv6, connect 0, pending 0, from 0.0.0.0"},
        {"ZE_IPV6_ONLY", true, false, "listen 0 IPv6, connect 0, pending 0, from 0.0.0.0"},
        {"ZE_IPV4_ONLY", false, false, "listen 0, connect 4, pending 0, from nobody"},
    };
    for (const auto& c : cases)
        EXPECT_EXIT(endWithReport(c.variable, c.up, c.loopbackOnly), testing::ExitedWithCode(0),
                    std::string("no network|") + c.report);
}
