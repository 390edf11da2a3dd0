// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPSocket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/time.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/TCP/zeTCPDescriptor.h"
#include "Support/SystemFaults.h"

#include "TCP/Connection.h"

using zeString::CString;
using zeString::IString;
using zeTCP::ListeningSocket;

using namespace std::string_literals;

TEST(Socket, PutsTheLengthBeforeATextInTwoBytes) {
    Pair pair;
    EXPECT_EQ(text(pair.here.write("")), "");
    EXPECT_EQ(pair.received(), "\0\0"s);
    EXPECT_EQ(text(pair.here.write(CString("a\0b", 3))), "");
    EXPECT_EQ(pair.received(), "\0\3a\0b"s);
    EXPECT_EQ(text(pair.here.write(IString(L"\u00F6\0c", 3))), "");
    EXPECT_EQ(pair.received(), "\0\4\xC3\xB6\0c"s);
    for (const unsigned n : {258u, 65535u}) {
        EXPECT_EQ(text(pair.here.write(CString(n, 'x'))), "");
        EXPECT_EQ(pair.received(), (n == 258 ? "\1\2" : "\xFF\xFF") + std::string(n, 'x'));
    }
    const std::string tooLong = "3: buffer passed to Socket::write() is too long";
    EXPECT_EQ(text(pair.here.write(CString(65536u, 'x'))), tooLong);
    EXPECT_EQ(text(pair.here.write(IString(32768u, L'\u00F6'))), tooLong);
    EXPECT_EQ(pair.received(), "");
}

TEST(Socket, ReadsAWholeTextOrLeavesItAlone) {
    const struct {
        std::string wire;
        const char* got;
        const wchar_t* wide = got ? L"" : L"before";
    } cases[] = {
        {"", nullptr},
        {"\0"s, nullptr},
        {"\0\5ab"s, nullptr}, // a length that lies
        {"\xFF\xFFx"s, nullptr},
        {"\0\0"s, ""},
        {"\0\4a\0bc"s, "a", L"a"},
        {"\0\2\xC3\xB6+"s, "\xC3\xB6", L"\u00F6"},
        {"\0\3\xEF\xBB\xBF"s, "\xEF\xBB\xBF"}, // a byte order mark
    };
    for (const auto& c : cases) {
        Pair narrow(c.wire), wide(c.wire);
        narrow.there.close(2);
        wide.there.close(2);
        CString bytes("before");
        IString characters("before");
        const std::string result = c.got ? "" : "4: connection closed";
        EXPECT_EQ(text(narrow.here.read(bytes)), result);
        EXPECT_EQ(text(wide.here.read(characters)), result);
        EXPECT_TRUE(bytes == (c.got ? c.got : "before")) << c.wire;
        EXPECT_TRUE(characters == c.wide) << c.wire;
    }
}

TEST(Socket, CountsWhatWasMovedAndThrowsIfAsked) {
    Pair pair;
    unsigned long done = 99;
    char buffer[16] = "";
    EXPECT_EQ(text(pair.here.write("abcdef", (1UL << 32) + 4, &done)), ""); // 32 bits count
    EXPECT_EQ(done, 4u);
    EXPECT_EQ(text(pair.here.write("", 0, nullptr)), "");
    EXPECT_EQ(pair.received(), "abcd");
    pair.send("wxyz");
    pair.there.close(2);
    EXPECT_EQ(text(pair.here.read(buffer, 10, &done)), "4: connection closed");
    EXPECT_EQ(done, 4u);
    EXPECT_STREQ(buffer, "wxyz");
    EXPECT_EQ(text(pair.here.read(buffer, 0, nullptr)), "4: connection closed"); // not a no-op
    pair.there.close(3);
    EXPECT_EQ(text(pair.here.write("x", 1, &done)), "1: send() failed: Broken pipe");
    EXPECT_EQ(done, 0u);
    pair.here.setThrowMode(true);
    CString answer;
    EXPECT_THROW(pair.here.read(answer), zeUtil::Error);
    EXPECT_THROW(pair.here.write("x"), zeUtil::Error);
    EXPECT_THROW(pair.here.write(CString(65536u, 'x')), zeUtil::Error);
}

// The sense of most results is turned round, and kept so.
TEST(Socket, ClosesSides) {
    struct Step {
        int how, connected, alone; ///< The codes with a peer, and without one.
    };
    const struct {
        std::vector<Step> steps;
        bool isOpen;
    } cases[] = {
        {{{0, 0, 0}, {4, 0, 0}}, true},  {{{2, 0, 1}, {2, 0, 0}}, true},
        {{{1, 1, 0}, {5, 0, 0}}, true},  {{{1, 1, 0}, {2, 1, 0}, {2, 0, 0}}, false},
        {{{2, 0, 1}, {1, 1, 0}}, false}, {{{3, 1, 0}, {3, 0, 0}}, false},
    };
    for (const auto& c : cases) {
        Pair pair;
        ListeningSocket alone(zeTCP::makeSocket(AF_INET));
        for (const Step& step : c.steps) {
            EXPECT_EQ(pair.here.close(step.how).code(), step.connected) << step.how;
            EXPECT_EQ(alone.close(step.how).code(), step.alone) << step.how;
        }
        EXPECT_EQ(pair.here.descriptor() != -1, c.isOpen);
        EXPECT_EQ(alone.descriptor() != -1, c.isOpen);
    }
    Pair pair;
    errno = EPERM; // stale, and yet the text
    EXPECT_EQ(text(pair.here.close(1)), "1: shutdown(socket,0) failed: Operation not permitted");
    EXPECT_EQ(text(pair.here.close(3)), "1: Operation not permitted");
    ListeningSocket alone(zeTCP::makeSocket(AF_INET));
    EXPECT_EQ(text(alone.close(2)),
              "1: shutdown(socket,1) failed: Transport endpoint is not connected");
    const SystemFaults faults(SystemFaults::onClose, {{EIO}});
    EXPECT_EQ(text(alone.close(1)), "1: Input/output error");
}

TEST(Socket, HasOneCStream) {
    Pair pair;
    {
        const SystemFaults faults(SystemFaults::onFdopen, {{ENOMEM}});
        EXPECT_EQ(text(pair.here.getCStream().error),
                  "1: fdopen() failed for socket: Cannot allocate memory");
    }
    std::FILE *stream = nullptr, *again = nullptr;
    EXPECT_EQ(text(pair.here.getCStream(stream)), "");
    EXPECT_EQ(text(pair.here.getCStream(again)), "2: socket is not connected");
    EXPECT_EQ(again, nullptr);
    EXPECT_EQ(pair.here.getCStream().stream, stream);
    std::fputs("hello", stream);
    pair.here.close(2); // flushes
    EXPECT_EQ(pair.received(), "hello");
    ListeningSocket alone(zeTCP::makeSocket(AF_INET));
    alone.getCStream();
    const SystemFaults faults(SystemFaults::onFclose, {{EIO}});
    EXPECT_EQ(text(alone.close(3)), "1: fclose() on socket stream failed");
    EXPECT_EQ(alone.getCStream().stream, nullptr);
}

TEST(Socket, KnowsItsAddressesAndOptions) {
    ListeningSocket none(-1);
    EXPECT_EQ(text(none.localAddress().error), "2: No socket has been created");
    EXPECT_EQ(text(none.remoteAddress().error), "4: Socket not connected");
    EXPECT_EQ(text(none.setNoDelay(true)), "2: No socket has been created");
    EXPECT_EQ(text(none.wait()), "1: Bad file descriptor");
    EXPECT_FALSE(none.dataAvailable());
    EXPECT_EQ(text(Pair().here.setNoDelay(true)),
              "1: setsockopt() failed: Operation not supported");

    Connection connection;
    if (!connection.isThere())
        GTEST_SKIP() << "no loopback network: " << text(connection.error);
    zeTCP::ClientSocket& client = *connection.client;
    EXPECT_TRUE(!client.connected() && connection.accepted->connected()); // no client ever is
    EXPECT_TRUE(*client.remoteAddress().address == connection.address());
    const auto [local, error] = client.localAddress();
    const auto [remote, remoteError] = connection.accepted->remoteAddress();
    ASSERT_TRUE(local && remote);
    EXPECT_TRUE(*local == *remote && local->isLocalhost() && local->port() > 0);
    EXPECT_EQ(connection.accepted->remoteAddress().address, remote); // cached
    EXPECT_EQ(text(client.setNoDelay(true)), "");
    int value = 0;
    socklen_t size = sizeof value;
    ::getsockopt(client.descriptor(), IPPROTO_TCP, TCP_NODELAY, &value, &size);
    EXPECT_NE(value, 0);
}

// After each number of bytes the peer ends its side, or the connection breaks.
TEST(Socket, MeetsTheEndAtEveryByte) {
    const std::string wire = "\0\7content"s;
    for (std::size_t i = 0; i < 2 * (wire.size() + 1); ++i) {
        const bool breaks = i % 2 != 0;
        const bool isWhole = i / 2 == wire.size();
        SCOPED_TRACE(i);
        Connection connection;
        if (!connection.isThere())
            GTEST_SKIP() << "no loopback network: " << text(connection.error);
        connection.accepted->write(wire.data(), i / 2, nullptr);
        breaks ? Connection::breakOff(*connection.accepted)
               : static_cast<void>(connection.accepted->close(2));
        CString got("before");
        const int code = connection.client->read(got).code();
        EXPECT_STREQ(got.asChar(), code == 0 ? "content" : "before");
        EXPECT_TRUE(code == 0 ? isWhole : code == 4 ? !isWhole : code == 1 && breaks) << code;
        if (breaks)
            continue;
        EXPECT_EQ(text(connection.client->write("answer")), ""); // the other side is still open
        EXPECT_EQ(text(connection.accepted->read(got)), "");
        EXPECT_STREQ(got.asChar(), "answer");
    }
}

TEST(Socket, IsReadAndWrittenByTwoThreads) {
    Pair pair;
    const std::string sent(1 << 20, 's');
    std::string got(sent.size(), '\0');
    std::thread echo([&] {
        char block[1 << 10];
        while (pair.there.read(block, sizeof block, nullptr).code() == 0)
            pair.there.write(block, sizeof block, nullptr);
    });
    std::thread writer([&] { pair.here.write(sent.data(), sent.size(), nullptr); });
    EXPECT_EQ(text(pair.here.read(got.data(), got.size(), nullptr)), "");
    writer.join();
    pair.here.close(2);
    echo.join();
    EXPECT_TRUE(got == sent);
}

// No write has a limit of its own; the system's serves, and no byte is counted that was not taken.
TEST(Socket, EndsAWriteToAPeerThatNeverReads) {
    Pair pair;
    const timeval limit = {0, 20'000};
    ::setsockopt(pair.here.descriptor(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    const std::string sent(1 << 24, 's');
    unsigned long done = 0;
    EXPECT_EQ(text(pair.here.write(sent.data(), sent.size(), &done)),
              "1: send() failed: Resource temporarily unavailable");
    for (std::size_t n; (n = pair.received().size()) > 0;)
        done -= n;
    EXPECT_EQ(done, 0u);
}
