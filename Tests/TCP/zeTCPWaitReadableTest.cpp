// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPWaitReadable.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Base/TCP/zeTCPDescriptor.h"
#include "Support/SystemFaults.h"

#include "TCP/Connection.h"

using zeTCP::doSelect;
using zeTCP::Socket;
using zeTCP::WaitReadable;
using zeUtil::Interval;

namespace {

int signalPeer = -1; ///< What the handler of SIGALRM writes to, if anything.

/// Calls a handler all the time, which interrupts what waits.
class Alarms {
public:
    explicit Alarms(int peer) {
        signalPeer = peer;
        struct sigaction action = {};
        action.sa_handler = [](int) {
            if (signalPeer != -1)
                static_cast<void>(::send(signalPeer, "x", 1, MSG_DONTWAIT));
        };
        ::sigaction(SIGALRM, &action, nullptr);
        every({0, 5000});
    }
    ~Alarms() {
        every({0, 0});
        std::signal(SIGALRM, SIG_DFL);
    }

private:
    static void every(timeval period) {
        const itimerval timer = {period, period};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

} // namespace

TEST(Waiting, HasNoLimitAtZeroAndEndsInTimeUnderSignals) {
    Pair pair;
    const int fd = pair.here.descriptor();
    {
        const Alarms alarms(-1);
        EXPECT_EQ(doSelect(fd, "60ms"), 0);    // the rest of the time, after each signal
        EXPECT_EQ(text(pair.here.wait()), ""); // ended by the first signal
    }
    pair.here.setTimeout("1ms");
    EXPECT_TRUE(pair.here.getTimeout() == Interval("1ms"));
    EXPECT_EQ(text(pair.here.wait()), ""); // the time is over
    const Alarms alarms(pair.there.get());
    EXPECT_TRUE(pair.here.dataAvailable()); // as soon as the handler has sent something
    EXPECT_EQ(doSelect(fd, Interval()), 1);
    const SystemFaults faults(SystemFaults::onSelect, {{EINTR}, {EINTR}, {}, {EIO}, {EIO}});
    EXPECT_EQ(doSelect(fd, "10s"), 1);
    EXPECT_FALSE(pair.here.dataAvailable());
    EXPECT_EQ(text(pair.here.wait()), "1: Input/output error");
}

TEST(Waiting, FindsWhatIsReadable) {
    Pair first, second, third;
    zeTCP::ListeningSocket none(-1);
    second.send("x");
    third.there.close(); // an end is readable, too
    WaitReadable ready;
    for (const Socket* socket : std::vector<Socket*>{&first.here, &second.here, &third.here, &none})
        ready.add(*socket);
    EXPECT_TRUE(ready.isReadable(first.here)); // added
    EXPECT_EQ(ready.wait("10s").code(), 1);    // not a failure
    EXPECT_FALSE(ready.isReadable(first.here));
    EXPECT_TRUE(ready.isReadable(second.here) && ready.isReadable(third.here));
    EXPECT_FALSE(ready.isReadable(none));
    ready.reset();
    EXPECT_FALSE(ready.isReadable(second.here));
    EXPECT_EQ(text(ready.wait("1ms")), ""); // nothing was added: the time runs out
    ready.add(first.here);
    EXPECT_EQ(text(ready.wait("1ms")), "");
    EXPECT_FALSE(ready.isReadable(first.here));

    std::vector<Socket*> out = {&none};
    const std::vector<Socket*> in = {&third.here, &none, &first.here, &second.here};
    EXPECT_EQ(text(waitReadable(in, out, "10s")), "");
    EXPECT_EQ(out, (std::vector<Socket*>{&none, &third.here, &second.here})); // appended
    EXPECT_EQ(text(zeTCP::waitReadable({&first.here}, out, "1ms")), "");
    EXPECT_EQ(text(zeTCP::waitReadable({}, out, "1ms")), "");
    EXPECT_EQ(out.size(), 3u);

    fd_set set;
    FD_ZERO(&set);
    const std::vector<int> fds = {first.here.descriptor(), -1, second.here.descriptor()};
    EXPECT_EQ(doSelect(fds, "10s", set), 1);
    EXPECT_TRUE(FD_ISSET(fds[2], &set) && !FD_ISSET(fds[0], &set));
    EXPECT_EQ(doSelect(fds, "10s"), 1);
    EXPECT_EQ(doSelect(std::vector<int>(), "1ms"), 0);
    EXPECT_EQ(doSelect(-1, "10s"), -1);
    EXPECT_EQ(errno, EBADF);

    second.there.close();
    ::close(::dup2(first.there.get(), fds[2])); // a number behind the socket's back
    EXPECT_EQ(text(waitReadable(in, out, "10s")), "1: select() failed");
    EXPECT_EQ(zeTCP::setLinger(-1), 0);
}

TEST(Waiting, TakesDescriptorsBeyondThoseOfASet) {
    constexpr int count = FD_SETSIZE + 40;
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit before = limit;
    limit.rlim_cur = std::max<rlim_t>(limit.rlim_cur, count + 100);
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
        GTEST_SKIP() << "no more than " << before.rlim_max << " descriptors are allowed";
    std::vector<zeUtil::Descriptor> taken;
    while (taken.empty() || taken.back().get() < count)
        taken.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    Pair pair;
    pair.send("x");
    WaitReadable ready;
    ready.add(pair.here);
    ready.wait("10s");
    EXPECT_TRUE(ready.isReadable(pair.here) && pair.here.dataAvailable());
    EXPECT_EQ(text(pair.here.wait()), "");
    EXPECT_EQ(doSelect(std::vector{pair.here.descriptor()}, "10s"), 1);
    EXPECT_GT(pair.here.descriptor(), FD_SETSIZE);
    Connection connection;
    if (connection.isThere()) {
        EXPECT_GT(connection.accepted->descriptor(), FD_SETSIZE);
        ready.add(connection.server);
        EXPECT_TRUE(ready.isReadable(connection.server));
    }
    taken.clear();
    setrlimit(RLIMIT_NOFILE, &before);
}
