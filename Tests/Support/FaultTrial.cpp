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

void FaultTrial::run(SystemFaults::Call call, SystemFaults::Answer answer) {
    for (Fault fault{call, answer, 1};; ++fault.n) {
        prepare();
        const std::ptrdiff_t before = openDescriptors();
        {
            std::vector<SystemFaults::Answer> answers(fault.n);
            answers.back() = answer;
            const SystemFaults faults(call, answers);
            operation();
            if (faults.calls() < fault.n)
                fault.n = 0;
        }
        SCOPED_TRACE(describe(fault));
        EXPECT_EQ(openDescriptors(), before);
        check(fault);
        if (fault.n == 0)
            return;
        ++tried_;
        ASSERT_LT(fault.n, tooMany);
    }
}

void FaultTrial::runAll() {
    for (int i = 0; i < SystemFaults::callCount; ++i) {
        const auto call = static_cast<SystemFaults::Call>(i);
        for (const int error : {ENOSPC, EIO, EACCES, EINTR})
            if (call != SystemFaults::onClose || error != EINTR)
                run(call, {error});
        if (movesBytes(call))
            run(call, {0, 1});
    }
}

void FaultTrial::report(const char* what) const {
    std::cout << "faults tried: " << tried_ << " (" << what << ")\n";
}
