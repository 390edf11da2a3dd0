// SPDX-License-Identifier: MIT

#include <cerrno>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadThread.h"
#include "Support/ThreadCalls.h"

TEST(Thread, IsWaitedForOnce) {
    const ThreadsAndLocks none;
    zeThread::Thread thread([](void* flag) { *static_cast<bool*>(flag) = true; }, nullptr);
    EXPECT_EQ(thread.wait().code(), 2);
    bool ran = false;
    thread.setArg(&ran);
    EXPECT_EQ(thread.start().code(), 0);
    EXPECT_EQ(thread.wait().code(), 0);
    EXPECT_TRUE(ran);
    EXPECT_EQ(thread.wait(), zeUtil::Error(2, "cannot wait for a stopped thread"));
    const ThreadFaults faults(ThreadFaults::onCreate, 1, EAGAIN);
    EXPECT_EQ(thread.start().code(), 1);
}
