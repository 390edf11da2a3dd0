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
    const SystemFaults::Answer& answer = fault.answer;
    return std::string(SystemFaults::name(fault.call)) + " with " +
           (answer.error ? std::strerror(answer.error)
                         : std::to_string(answer.limit) + " bytes at most") +
           (fault.n ? " at call " + std::to_string(fault.n) : ", but no call was left to fail");
}

bool movesBytes(SystemFaults::Call call) {
    return call == SystemFaults::onRead || call == SystemFaults::onWrite ||
           call == SystemFaults::onFread || call == SystemFaults::onFwrite;
}

} // namespace

std::size_t FaultTrial::run(SystemFaults::Call call, SystemFaults::Answer answer,
                            std::size_t inARow) {
    for (std::size_t n = 1;; ++n) {
        prepare();
        const std::ptrdiff_t before = openDescriptors();
        std::vector<SystemFaults::Answer> answers(n - 1);
        answers.insert(answers.end(), inARow, answer);
        std::size_t calls;
        {
            const SystemFaults faults(call, answers);
            operation();
            calls = faults.calls();
        }
        const Fault fault{call, answer, calls < n ? 0 : n};
        SCOPED_TRACE(describe(fault));
        EXPECT_EQ(openDescriptors(), before);
        check(fault);
        if (fault.n == 0)
            return n - 1;
        ++tried_;
        EXPECT_LT(n, tooMany);
        if (n >= tooMany)
            return n;
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
            if (call != SystemFaults::onClose || error != EINTR)
                run(call, {error});
        if (movesBytes(call))
            run(call, {0, 1});
    }
    return broken;
}

void FaultTrial::report(const char* what) const {
    std::cout << "faults tried: " << tried_ << " (" << what << ")\n";
}
