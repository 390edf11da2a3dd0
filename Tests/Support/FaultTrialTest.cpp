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

TEST(FaultTrial, TriesEachCallWithEachLaterOne) {
    FaultTrial trial;
    std::vector<std::size_t> seen;
    trial.operation = [] {
        for (const char* name : {"a", "b", "c"})
            access(name, F_OK);
    };
    trial.check = [&](const Fault& fault) { seen.push_back(10 * fault.n + fault.second); };
    trial.runPairs(EIO);
    EXPECT_EQ(seen, (std::vector<std::size_t>{10, 12, 13, 20, 23, 30}));
    static FaultTrial careless;
    careless.operation = [] { close(open("/dev/null", O_RDONLY)); };
    EXPECT_NONFATAL_FAILURE(careless.run(SystemFaults::onOpen, {EACCES}), "inherited");
}
