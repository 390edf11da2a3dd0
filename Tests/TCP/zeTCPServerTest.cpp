// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPServer.h"

#include <netdb.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

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

/// Moves the process into a network of its own, with a loopback interface.
bool enterNetwork() {
    if (::unshare(CLONE_NEWNET) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    const zeUtil::Descriptor fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request = {{"lo"}, {}};
    request.ifr_flags = IFF_UP;
    int hasNoIPv6 = 1;
    std::ifstream("/proc/sys/net/ipv6/conf/lo/disable_ipv6") >> hasNoIPv6;
    return hasNoIPv6 == 0 && ::ioctl(fd.get(), SIOCSIFFLAGS, &request) == 0;
}

/// For a fresh process: what a server and its client meet in a network of their own.
[[noreturn]] void endWithReport(const char* variable, bool loopbackOnly) {
    unsetenv("ZE_IPV4_ONLY");
    unsetenv("ZE_IPV6_ONLY");
    setenv(variable, "", 1);
    if (!enterNetwork())
        _exit(std::fputs("no network", stderr) >= 0);
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
    EXPECT_NE(ClientSocket(zeTCP::Address("127.0.0.2", server.getPort())).connect().code(), 0);

    zeTCP::WaitReadable ready;
    ClientSocket next(connection.address());
    EXPECT_EQ(text(next.connect()), "");
    EXPECT_TRUE(server.connectionPending());
    ready.add(server);
    EXPECT_EQ(ready.wait("10s").code(), 1);
    EXPECT_TRUE(ready.isReadable(server));

    server.shutdown(); // IPv4 alone; its number stays behind
    EXPECT_FALSE(server.connectionPending());
    EXPECT_EQ(text(server.accept("10s").error), "1: Bad file descriptor");
    ready.add(server);
    EXPECT_EQ(ready.isReadable(server), server.isListening());
    ClientSocket late(connection.address()), last(connection.address());
    EXPECT_NE(late.connect().code(), 0); // that of IPv4, also where "::1" answers
    EXPECT_EQ(late.descriptor() != -1, server.isListening());
    { // a failing lookup of "127.0.0.1": goes on, too
        const SystemFaults faults(SystemFaults::onGetaddrinfo, {{EAI_AGAIN}});
        EXPECT_EQ(last.connect().code() == 0, server.isListening());
    }
    ClientSocket remote(zeTCP::Address("127.0.0.2", 1));
    const SystemFaults faults(SystemFaults::onConnect, {{ENETUNREACH}});
    EXPECT_EQ(text(remote.connect()), "4: connect() failed: Network is unreachable");
}

TEST(Server, ListensWhenItIsToAccept) {
    const struct {
        int port;
        SystemFaults::Call call;
        std::vector<SystemFaults::Answer> answers;
        const char* error;
    } cases[] = {
        {-1, onBind, {{EADDRINUSE}, {EADDRINUSE}}, "3: bind() failed: Address already in use"},
        {-1, onBind, {{EACCES}, {EACCES}}, "1: bind() failed: Permission denied"},
        {-1, onGetsockname, {{EIO}}, "1: Cannot get listening socket address:Input/output error"},
        {-1, onBind, {{EACCES}, {}}, ""}, // by IPv4 alone
        {0, onBind, {}, ""},
    };
    const Connection connection;
    if (connection.isThere())
        connection.server->shutdown();
    if (!connection.isThere() || !connection.server->isListening())
        GTEST_SKIP() << "no loopback network with IPv6: " << text(connection.error);
    for (const auto& c : cases) {
        const SystemFaults faults(c.call, c.answers);
        Server server(c.port, 5);
        EXPECT_FALSE(server.connectionPending() || server.isListening());
        server.setLoopbackOnly();
        zeTCP::Socket* socket = nullptr;
        const zeUtil::Error error = server.accept(&socket, "1ms");
        const bool isInUse = c.port == 0 && error.code() == 3; // for IPv4 what IPv6 got
        EXPECT_EQ(text(error), isInUse ? text(error) : c.error);
        EXPECT_EQ(socket, nullptr);
        EXPECT_EQ(server.getPort() > 0, server.isListening() && c.call == onBind);
    }
}

TEST(Server, LosesNothingWhateverFails) {
    if (const Connection connection; !connection.isThere())
        GTEST_SKIP() << "no loopback network: " << text(connection.error);
    std::string result, results;
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
        results += result;
    };
    testing::internal::CaptureStdout();
    EXPECT_EQ(trial.runAll(), "close socket bind listen accept4 connect send recv select shutdown "
                              "getsockname getaddrinfo");
    trial.runPairs(EIO);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(
                  "Connection failed: connect() failed: Input/output error\n"),
              std::string::npos);
    EXPECT_NE(results.find("1: Cannot get listening socket address: Input/output error"),
              std::string::npos); // of IPv4; that of IPv6 has no blank
    trial.report("an exchange over TCP");
}

TEST(ServerDeathTest, TakesTheProtocolsThatThereAre) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // each in a fresh process
    const struct {
        const char* variable;
        bool loopbackOnly;
        const char* report;
    } cases[] = {
        {"NONE", true, "listen 0 IPv6, connect 0, pending 1, from 127.0.0.1"},
        {"NONE", false, "listen 3 IPv6, connect 0, pending 0, from 0.0.0.0"},
        {"ZE_IPV4_ONLY", false, "listen 0, connect 0, pending 1, from 127.0.0.1"},
        {"ZE_IPV6_ONLY", true, "listen 0 IPv6, connect 0, pending 0, from 0.0.0.0"},
    };
    bool isPossible = true;
    const auto note = [&](int status) { return isPossible &= status == 0, true; };
    for (const auto& c : cases)
        EXPECT_EXIT(endWithReport(c.variable, c.loopbackOnly), note,
                    std::string("no network|") + c.report);
    if (!isPossible)
        GTEST_SKIP() << "this machine allows no network namespace with IPv6";
}
