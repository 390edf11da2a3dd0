// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPSocket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

#include <cerrno>
#include <cstdio>
#include <string>
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
    const struct {
        std::string wire;
        const char* bytes;
        const wchar_t* characters;
    } cases[] = {
        {"\1\0abcd"s, "before", L"before"}, // a length that lies
        {"\0\4a\0bc"s, "a", L"a"},
        {"\0\2\xC3\xB6+"s, "\xC3\xB6", L"\u00F6"},
        {"\0\3\xEF\xBB\xBF"s, "\xEF\xBB\xBF", L""}, // a byte order mark
    };
    for (const auto& c : cases) {
        Pair narrow(c.wire), wide(c.wire);
        narrow.there.close(2);
        wide.there.close(2);
        CString bytes("before");
        IString characters("before");
        EXPECT_EQ(narrow.here.read(bytes).code(), wide.here.read(characters).code());
        EXPECT_TRUE(bytes == c.bytes && characters == c.characters) << c.wire;
    }
    Pair pair;
    EXPECT_EQ(text(pair.here.write("")), "");
    EXPECT_EQ(text(pair.here.write(IString(L"\u00F6\0c", 3))), "");
    EXPECT_EQ(pair.received(), "\0\0\0\4\xC3\xB6\0c"s);
    EXPECT_EQ(text(pair.here.write(CString(65535u, 'x'))), "");
    EXPECT_EQ(pair.received(), "\xFF\xFF" + std::string(65535, 'x'));
    EXPECT_EQ(text(pair.here.write(IString(32768u, L'\u00F6'))),
              "3: buffer passed to Socket::write() is too long");
    EXPECT_EQ(pair.received(), "");
}

TEST(Socket, CountsWhatWasMovedAndThrowsIfAsked) {
    Pair pair;
    unsigned long done = 99;
    char buffer[16] = "";
    EXPECT_EQ(text(pair.here.write("abcdef", (1UL << 32) + 4, &done)), ""); // 32 bits count
    EXPECT_EQ(done, 4u);
    EXPECT_EQ(text(pair.here.write("", 0, nullptr)), "");
    {
        const SystemFaults faults(SystemFaults::onSend, {{EINTR}, {0, 2}, {EPIPE}});
        EXPECT_EQ(text(pair.here.write("wxyz", 4, &done)), "1: send() failed: Broken pipe");
        EXPECT_EQ(done, 2u);
    }
    EXPECT_EQ(pair.received(), "abcdwx");
    pair.send("wxyz");
    pair.there.close(2);
    EXPECT_EQ(text(pair.here.read(buffer, 10, &done)), "4: connection closed");
    EXPECT_EQ(done, 4u);
    EXPECT_STREQ(buffer, "wxyz");
    EXPECT_EQ(text(pair.here.read(buffer, 0, nullptr)), "4: connection closed"); // not a no-op
    pair.there.close(3);
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
        bool isOpen = true;        ///< Afterwards.
    };
    const std::vector<Step> cases[] = {
        {{0, 0, 0}, {4, 0, 0}, {2, 0, 1}, {2, 0, 0}, {1, 1, 0, false}},
        {{1, 1, 0}, {5, 0, 0}, {2, 1, 0, false}, {2, 0, 0, false}},
        {{3, 1, 0, false}, {3, 0, 0, false}},
    };
    for (const auto& steps : cases) {
        Pair pair;
        ListeningSocket alone(zeTCP::makeSocket(AF_INET));
        for (const Step& step : steps) {
            EXPECT_EQ(pair.here.close(step.how).code(), step.connected) << step.how;
            EXPECT_EQ(alone.close(step.how).code(), step.alone) << step.how;
            EXPECT_EQ(pair.here.descriptor() != -1, step.isOpen) << step.how;
            EXPECT_EQ(alone.descriptor() != -1, step.isOpen) << step.how;
        }
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
    std::FILE *stream = nullptr, *again = nullptr;
    EXPECT_EQ(text(pair.here.getCStream(stream)), "");
    EXPECT_EQ(text(pair.here.getCStream(again)), "2: socket is not connected");
    EXPECT_EQ(again, nullptr);
    EXPECT_EQ(pair.here.getCStream().stream, stream);
    std::fputs("hello", stream);
    pair.here.close(2); // flushes
    EXPECT_EQ(pair.received(), "hello");
    ListeningSocket wrong(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(text(wrong.getCStream().error), "1: fdopen() failed for socket: Invalid argument");
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
