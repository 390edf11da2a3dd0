// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPSocket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/time.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/TCP/zeTCPDescriptor.h"
#include "Support/SystemFaults.h"

#include "TCP/Connection.h"

using zeString::CString;
using zeString::IString;
using zeTCP::ListeningSocket;

using Answers = std::vector<SystemFaults::Answer>;

namespace {

std::string bytes(const char* literal, std::size_t n) {
    return {literal, n};
}

CString times(unsigned n, char c) {
    return {n, c};
}

} // namespace

TEST(Socket, PutsTheLengthBeforeATextInTwoBytes) {
    Pair pair;
    EXPECT_EQ(text(pair.here.write("")), "");
    EXPECT_EQ(pair.received(), bytes("\0\0", 2));
    EXPECT_EQ(text(pair.here.write(CString("a\0b", 3))), "");
    EXPECT_EQ(pair.received(), bytes("\0\3a\0b", 5));
    EXPECT_EQ(text(pair.here.write(IString(L"\u00F6\0c", 3))), "");
    EXPECT_EQ(pair.received(), bytes("\0\4\xC3\xB6\0c", 6));
    EXPECT_EQ(text(pair.here.write(times(258, 'x'))), "");
    EXPECT_EQ(pair.received(), "\1\2" + std::string(258, 'x'));
    EXPECT_EQ(text(pair.here.write(times(65535, 'x'))), "");
    EXPECT_EQ(pair.received(), "\xFF\xFF" + std::string(65535, 'x'));
    const std::string tooLong = "3: buffer passed to Socket::write() is too long";
    EXPECT_EQ(text(pair.here.write(times(65536, 'x'))), tooLong);
    EXPECT_EQ(text(pair.here.write(IString(32768, L'\u00F6'))), tooLong);
    EXPECT_EQ(pair.received(), "");
}

TEST(Socket, ReadsAWholeTextOrLeavesItAlone) {
    const std::string closed = "4: connection closed";
    const struct {
        std::string wire;
        std::string result, text;
        const wchar_t* wide;
    } cases[] = {
        {"", closed, "before", L"before"},
        {bytes("\0", 1), closed, "before", L"before"},
        {bytes("\0\5ab", 4), closed, "before", L"before"}, // a length that lies
        {bytes("\xFF\xFFx", 3), closed, "before", L"before"},
        {bytes("\0\0", 2), "", "", L""},
        {bytes("\0\4a\0bc", 6), "", "a", L"a"},
        {bytes("\0\2\xC3\xB6+", 5), "", "\xC3\xB6", L"\u00F6"},
        {bytes("\0\3\xEF\xBB\xBF", 5), "", "\xEF\xBB\xBF", L""},
    };
    for (const auto& c : cases) {
        Pair pair;
        pair.send(c.wire);
        ::shutdown(pair.there.get(), SHUT_WR);
        Pair second;
        second.send(c.wire);
        ::shutdown(second.there.get(), SHUT_WR);
        CString narrow("before");
        IString wide("before");
        EXPECT_EQ(text(pair.here.read(narrow)), c.result);
        EXPECT_EQ(text(second.here.read(wide)), c.result);
        EXPECT_STREQ(narrow.asChar(), c.text.c_str());
        EXPECT_TRUE(wide == c.wide) << c.wire;
    }
}

TEST(Socket, CountsWhatWasMovedAndThrowsIfAsked) {
    Pair pair;
    unsigned long done = 99;
    char buffer[16] = "";
    EXPECT_EQ(text(pair.here.write("abcdef", (1UL << 32) + 4, &done)), ""); // 32 bits count
    EXPECT_EQ(done, 4u);
    EXPECT_EQ(text(pair.here.write("", 0, &done)), "");
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(pair.received(), "abcd");
    pair.send("wxyz");
    ::shutdown(pair.there.get(), SHUT_WR);
    EXPECT_EQ(text(pair.here.read(buffer, 10, &done)), "4: connection closed");
    EXPECT_EQ(done, 4u);
    EXPECT_STREQ(buffer, "wxyz");
    EXPECT_EQ(text(pair.here.read(buffer, 0, &done)), "4: connection closed"); // no bytes, the end
    pair.there.close();
    EXPECT_EQ(text(pair.here.write("x", 1, &done)), "1: send() failed: Broken pipe");
    EXPECT_EQ(done, 0u);

    pair.here.setThrowMode(true);
    EXPECT_TRUE(pair.here.getThrowMode());
    CString answer;
    EXPECT_THROW(pair.here.read(buffer, 1, &done), zeUtil::Error);
    EXPECT_THROW(pair.here.read(answer), zeUtil::Error);
    EXPECT_THROW(pair.here.write("x"), zeUtil::Error);
    EXPECT_THROW(pair.here.write(times(65536, 'x')), zeUtil::Error);
}

// The sense of most results is turned round, and kept so.
TEST(Socket, ClosesSides) {
    struct Step {
        int how, connected, not_; ///< The codes with a peer, and without one.
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
            EXPECT_EQ(alone.close(step.how).code(), step.not_) << step.how;
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
    std::FILE* stream = nullptr;
    EXPECT_EQ(text(pair.here.getCStream(stream)), "");
    std::FILE* again = nullptr;
    EXPECT_EQ(text(pair.here.getCStream(again)), "2: socket is not connected");
    EXPECT_EQ(again, nullptr);
    EXPECT_EQ(pair.here.getCStream().stream, stream);
    std::fputs("hello", stream);
    pair.here.close(2); // flushes
    EXPECT_EQ(pair.received(), "hello");
    const SystemFaults faults(SystemFaults::onFclose, {{EIO}});
    ::shutdown(pair.here.descriptor(), SHUT_RDWR);
    EXPECT_EQ(pair.here.close(3).code(), 1);
    EXPECT_EQ(text(pair.here.getCStream().error), "2: socket is not connected");
    EXPECT_EQ(faults.calls(), 1u);
}

TEST(Socket, KnowsItsAddressesAndOptions) {
    ListeningSocket none(-1);
    EXPECT_EQ(text(none.localAddress().error), "2: No socket has been created");
    EXPECT_EQ(text(none.remoteAddress().error), "4: Socket not connected");
    EXPECT_EQ(text(none.setNoDelay(true)), "2: No socket has been created");
    EXPECT_EQ(text(none.wait()), "1: Bad file descriptor");
    EXPECT_FALSE(none.dataAvailable());
    Pair pair;
    EXPECT_EQ(text(pair.here.setNoDelay(true)), "1: setsockopt() failed: Operation not supported");

    Connection connection;
    if (!connection.isThere())
        GTEST_SKIP() << "no loopback network: " << text(connection.error);
    zeTCP::ClientSocket& client = *connection.client;
    EXPECT_FALSE(client.connected()); // no client ever is
    EXPECT_TRUE(connection.accepted->connected());
    EXPECT_EQ(client.remoteAddress().address->port(), connection.server.getPort());
    const auto [local, error] = client.localAddress();
    const auto [remote, remoteError] = connection.accepted->remoteAddress();
    ASSERT_TRUE(local && remote);
    EXPECT_TRUE(*local == *remote && local->isLocalhost());
    EXPECT_EQ(connection.accepted->remoteAddress().address, remote); // cached
    EXPECT_EQ(text(client.setNoDelay(true)), "");
    int value = 0;
    socklen_t size = sizeof value;
    ::getsockopt(client.descriptor(), IPPROTO_TCP, TCP_NODELAY, &value, &size);
    EXPECT_EQ(value, 1);
}

// After each number of bytes the peer ends its side, or the connection breaks.
TEST(Socket, MeetsTheEndAtEveryByte) {
    const std::string wire = bytes("\0\7content", 9);
    for (const bool reset : {false, true})
        for (std::size_t n = 0; n <= wire.size(); ++n) {
            Connection connection;
            if (!connection.isThere())
                GTEST_SKIP() << "no loopback network: " << text(connection.error);
            connection.accepted->write(wire.data(), n, nullptr);
            const linger hard = {1, 0};
            if (reset)
                ::setsockopt(connection.accepted->descriptor(), SOL_SOCKET, SO_LINGER, &hard,
                             sizeof hard);
            connection.accepted->close(reset ? 3 : 2);
            CString got("before");
            const int code = connection.client->read(got).code();
            const bool isWhole = code == 0;
            EXPECT_TRUE(isWhole ? n == 9 && got == "content" : got == "before") << n << reset;
            EXPECT_TRUE(reset ? n == 9 || code == 1 || code == 4 : isWhole || code == 4) << n;
            if (!reset) { // the other side is still open
                EXPECT_EQ(text(connection.client->write("answer")), "");
                EXPECT_EQ(text(connection.accepted->read(got)), "");
                EXPECT_STREQ(got.asChar(), "answer");
            }
        }
}

TEST(Socket, IsReadAndWrittenByTwoThreads) {
    Pair pair;
    zeTCP::ServerSocket there(pair.there.release());
    const std::string sent(1 << 20, 's');
    std::thread echo([&] {
        std::string block(1 << 10, '\0');
        while (there.read(block.data(), block.size(), nullptr).code() == 0)
            there.write(block.data(), block.size(), nullptr);
    });
    std::thread writer(
        [&] { EXPECT_EQ(text(pair.here.write(sent.data(), sent.size(), nullptr)), ""); });
    std::string got(sent.size(), '\0');
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
    std::size_t arrived = 0;
    for (std::size_t n; (n = pair.received().size()) > 0;)
        arrived += n;
    EXPECT_EQ(arrived, done);
    EXPECT_LT(arrived, sent.size());
}
