// SPDX-License-Identifier: MIT

/// @file
/// Breaks an operation at every system call that it makes.
///
/// @code
/// zeUtil::Error error;
/// FaultTrial trial;
/// trial.prepare = [&] { folder.write("a", "content"); };
/// trial.operation = [&] { error = zeOS::fileRename(name("a"), name("b")); };
/// trial.check = [&](const Fault& fault) {
///     EXPECT_EQ(error.code(), fault.n ? 6 : 0);
///     EXPECT_EQ(folder.read(fault.n ? "a" : "b"), "content");
/// };
/// trial.run(SystemFaults::onRename, {EACCES});
/// trial.report("renaming");
/// @endcode

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Support/SystemFaults.h"

/// What one run of an operation met.
struct Fault {
    SystemFaults::Call call;
    SystemFaults::Answer answer;
    std::size_t n; ///< which of the calls it was, from 1; 0 in the last run, which met none
    /// In runPairs(): the place of the call that failed after it, 0 for none. `n` is a place, too,
    /// and `call` is callCount.
    std::size_t second = 0;
};

class FaultTrial {
public:
    /// Sets the scene.
    std::function<void()> prepare = [] {};
    /// What is tried: the only part that meets the fault. It closes what it opens.
    std::function<void()> operation;
    /// Looks at what the operation left behind.
    std::function<void(const Fault&)> check = [](const Fault&) {};

    /// Runs the operation with its first `call` answered so, then with its second, and so on until
    /// a run makes no call that is left to fail; that run passes untouched, and is checked too. A
    /// descriptor that a run leaves open is a failure of the test, and so is one that
    /// a child process would inherit. With `inARow` as many calls get
    /// the answer, one after the other: a disk that is full and stays so. Returns how many faults
    /// that made.
    std::size_t run(SystemFaults::Call call, SystemFaults::Answer answer, std::size_t inARow = 1);

    /// Fails each pair of calls with `error`, of whatever names: each call with each one after it,
    /// which may be one that only the first failure leads to. Each call alone is tried too.
    void runPairs(int error);

    /// The same as run() for every call there is, with each error that calls are known for (ENOSPC,
    /// EIO, EACCES, EINTR), and a byte at a time where a call moves bytes. Left out are a `close`
    /// that is interrupted (see SystemFaults::Answer), and a seek, which cannot be. Returns the
    /// names of the calls that the operation makes, in the order of SystemFaults::Call, so that a
    /// test notices one that it no longer breaks.
    std::string runAll();

    std::size_t faultsTried() const { return tried_; }

    /// Prints how many faults were tried, in a line that `./dev test` collects.
    void report(const char* what) const;

private:
    struct Run;

    /// Runs the operation once, with faults made of `arguments`.
    template<class... Arguments>
    Run runOnce(const Arguments&... arguments);
    void judge(const Run& run, const Fault& fault);

    std::size_t tried_ = 0;
};
