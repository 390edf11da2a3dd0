// SPDX-License-Identifier: MIT

#include "Support/FaultTrial.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

TEST(FaultTrial, TriesEachCallInTurnAndNoticesWhatIsLeftOpen) {
    static int runs = 0;
    static FaultTrial trial;
    trial.operation = [] {
        ++runs;
        const int first = open("/dev/null", O_RDONLY | O_CLOEXEC);
        const int second = first < 0 ? -1 : open("/dev/null", O_RDONLY | O_CLOEXEC);
        if (second < 0)
            return; // and the first stays open
        close(first);
        close(second);
    };
    EXPECT_NONFATAL_FAILURE(trial.run(SystemFaults::onOpen, {EACCES}), "leftOpen");
    EXPECT_EQ(runs, 3);
    EXPECT_EQ(trial.faultsTried(), 2u);
}

TEST(FaultTrial, NoticesWhatAChildWouldInherit) {
    static FaultTrial careless;
    careless.operation = [] { close(open("/dev/null", O_RDONLY)); };
    EXPECT_NONFATAL_FAILURE(careless.run(SystemFaults::onOpen, {EACCES}), "inherited");
}
