// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPWaitReadable.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

#include <gtest/gtest.h>

#include "Base/TCP/zeTCPDescriptor.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Support/SystemFaults.h"

#include "TCP/Connection.h"

using zeTCP::doSelect;
using zeTCP::Socket;
using zeTCP::WaitReadable;
using zeUtil::Interval;

namespace {

volatile std::sig_atomic_t alarmed = -1; ///< What the handler of SIGALRM writes to.

} // namespace

TEST(Waiting, HasNoLimitAtZeroAndEndsInTimeUnderSignals) {
    Pair pair;
    const int fd = pair.here.descriptor();
    const itimerval often = {{0, 5000}, {0, 5000}}, never = {};
    std::signal(SIGALRM, [](int) { ::send(alarmed, "x", 1, MSG_DONTWAIT); });
    ::setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(doSelect(fd, "60ms"), 0);    // goes on for the rest of the time
    EXPECT_EQ(text(pair.here.wait()), ""); // ended by a signal
    alarmed = pair.fds[1];
    EXPECT_TRUE(pair.here.dataAvailable()); // as soon as the handler has sent something
    ::setitimer(ITIMER_REAL, &never, nullptr);
    Pair silent;
    silent.here.setTimeout("1ms");
    EXPECT_EQ(text(silent.here.wait()), ""); // the time is over
    const SystemFaults faults(SystemFaults::onSelect, {{EINTR}, {EINTR}, {}, {EIO}, {EIO}});
    EXPECT_EQ(doSelect(fd, Interval()), 1);
    EXPECT_FALSE(pair.here.dataAvailable());
    EXPECT_EQ(text(pair.here.wait()), "1: Input/output error");
}

TEST(Waiting, FindsWhatIsReadable) {
    Pair first, second("x"), third;
    zeTCP::ListeningSocket none(-1);
    third.there.close(3); // an end is readable, too
    WaitReadable ready;
    const std::vector<Socket*> in = {&third.here, &none, &first.here, &second.here};
    for (const Socket* socket : in)
        ready.add(*socket);
    EXPECT_TRUE(ready.isReadable(first.here)); // added
    EXPECT_EQ(ready.wait("10s").code(), 1);    // not a failure
    EXPECT_FALSE(ready.isReadable(first.here) || ready.isReadable(none));
    EXPECT_TRUE(ready.isReadable(second.here) && ready.isReadable(third.here));
    ready.reset();
    EXPECT_EQ(text(ready.wait("1ms")), ""); // nothing was added: the time runs out
    EXPECT_FALSE(ready.isReadable(second.here));

    std::vector<Socket*> out = {&none};
    EXPECT_EQ(text(waitReadable(in, out, "10s")), "");
    EXPECT_EQ(text(zeTCP::waitReadable({&first.here}, out, "1ms")), "");
    EXPECT_EQ(text(zeTCP::waitReadable({}, out, "1ms")), "");
    EXPECT_EQ(out, (std::vector<Socket*>{&none, &third.here, &second.here})); // appended

    fd_set set;
    FD_ZERO(&set);
    const std::vector<int> fds = {first.fds[0], -1, second.fds[0]};
    EXPECT_EQ(doSelect(fds, "10s", set), 1);
    EXPECT_TRUE(FD_ISSET(fds[2], &set) && !FD_ISSET(fds[0], &set));
    EXPECT_EQ(doSelect(fds, "10s"), 1);
    EXPECT_EQ(doSelect(std::vector<int>(), "1ms"), 0);
    EXPECT_EQ(doSelect(-1, "10s"), -1);
    EXPECT_EQ(errno, EBADF);
    ::close(second.fds[0]); // behind the socket's back
    EXPECT_EQ(text(waitReadable(in, out, "10s")), "1: select() failed");
}

TEST(Waiting, TakesDescriptorsBeyondThoseOfASet) {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max<rlim_t>(limit.rlim_cur, FD_SETSIZE + 100);
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
        GTEST_SKIP() << "no more than " << limit.rlim_max << " descriptors are allowed";
    std::vector<zeUtil::Descriptor> taken;
    while (taken.empty() || taken.back().get() < FD_SETSIZE)
        taken.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    Pair pair("x");
    EXPECT_GT(pair.fds[0], FD_SETSIZE);
    WaitReadable ready;
    ready.add(pair.here);
    ready.wait("10s");
    EXPECT_TRUE(ready.isReadable(pair.here) && !ready.isReadable(pair.there));
    EXPECT_TRUE(pair.here.dataAvailable());
    EXPECT_EQ(text(pair.here.wait()), "");
    if (const Connection connection; connection.isThere()) {
        EXPECT_GT(connection.accepted->descriptor(), FD_SETSIZE);
        ready.add(*connection.server);
        EXPECT_TRUE(ready.isReadable(*connection.server));
    }
}
