// SPDX-License-Identifier: MIT

#include "Support/FaultTrial.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace {

/// No operation that is tried makes as many calls of one name.
constexpr std::size_t tooMany = 10000;

std::ptrdiff_t openDescriptors() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/fd"), directory_iterator());
}

std::string describe(const Fault& fault) {
    if (fault.call == SystemFaults::callCount)
        return "calls " + std::to_string(fault.n) + " and " + std::to_string(fault.second) +
               " fail with " + std::strerror(fault.answer.error);
    const SystemFaults::Answer& answer = fault.answer;
    return std::string(SystemFaults::name(fault.call)) + " with " +
           (answer.error ? std::strerror(answer.error)
                         : std::to_string(answer.limit) + " bytes at most") +
           (fault.n ? " at call " + std::to_string(fault.n) : ", but no call was left to fail");
}

/// A seek never waits; for close, see SystemFaults::Answer.
bool canBeInterrupted(SystemFaults::Call call) {
    return call != SystemFaults::onClose && call != SystemFaults::onLseek;
}

bool movesBytes(SystemFaults::Call call) {
    return call == SystemFaults::onRead || call == SystemFaults::onWrite ||
           call == SystemFaults::onFread || call == SystemFaults::onFwrite ||
           call == SystemFaults::onRecv || call == SystemFaults::onSend;
}

} // namespace

struct FaultTrial::Run {
    std::size_t calls;
    std::ptrdiff_t leftOpen;
    std::string inherited;
};

template<class... Arguments>
FaultTrial::Run FaultTrial::runOnce(const Arguments&... arguments) {
    prepare();
    const std::ptrdiff_t before = openDescriptors();
    Run run;
    {
        const SystemFaults faults(arguments...);
        operation();
        run = {faults.calls(), 0, faults.inherited()};
    }
    run.leftOpen = openDescriptors() - before;
    return run;
}

void FaultTrial::judge(const Run& run, const Fault& fault) {
    SCOPED_TRACE(describe(fault));
    EXPECT_EQ(run.leftOpen, 0);
    EXPECT_EQ(run.inherited, "");
    check(fault);
    if (fault.n > 0)
        ++tried_;
}

std::size_t FaultTrial::run(SystemFaults::Call call, SystemFaults::Answer answer,
                            std::size_t inARow) {
    for (std::size_t n = 1;; ++n) {
        std::vector<SystemFaults::Answer> answers(n - 1);
        answers.insert(answers.end(), inARow, answer);
        const Run run = runOnce(call, answers);
        judge(run, {call, answer, run.calls < n ? 0 : n});
        if (run.calls < n)
            return n - 1;
        EXPECT_LT(n, tooMany);
        if (n >= tooMany)
            return n;
    }
}

void FaultTrial::runPairs(int error) {
    const SystemFaults::Call any = SystemFaults::callCount;
    for (std::size_t first = 1; first < tooMany; ++first) {
        const Run run = runOnce(std::vector{first}, error);
        if (run.calls < first)
            return;
        judge(run, {any, {error}, first});
        for (std::size_t second = first + 1; second < tooMany; ++second) {
            const Run both = runOnce(std::vector{first, second}, error);
            if (both.calls < second)
                break;
            judge(both, {any, {error}, first, second});
        }
    }
}

std::string FaultTrial::runAll() {
    std::string broken;
    for (int i = 0; i < SystemFaults::callCount; ++i) {
        const auto call = static_cast<SystemFaults::Call>(i);
        if (run(call, {ENOSPC}) == 0)
            continue; // a call that the operation does not make
        broken += (broken.empty() ? "" : " ") + std::string(SystemFaults::name(call));
        for (const int error : {EIO, EACCES, EINTR})
            if (error != EINTR || canBeInterrupted(call))
                run(call, {error});
        if (movesBytes(call))
            run(call, {0, 1});
    }
    return broken;
}

void FaultTrial::report(const char* what) const {
    std::cout << "faults tried: " << tried_ << " (" << what << ")\n";
}
