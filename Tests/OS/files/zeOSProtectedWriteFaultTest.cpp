// SPDX-License-Identifier: MIT

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSProtectedWrite.h"
#include "Support/FaultTrial.h"

#include "OS/files/SaveFolder.h"

using enum SystemFaults::Call;

namespace {

using testing::AnyOf;
using testing::HasSubstr;
using zeOS::ProtectedWrite;

/// A save with faults in it, by either strategy.
class BrokenSave : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        trial.prepare = [this] { folder.emplace(); };
        trial.operation = [this] {
            ProtectedWrite save(folder->mainName());
            if (copies())
                save.useCopyStrategy();
            result = saveNewContent(save);
            EXPECT_TRUE(result.finalized || !save.finalize()); // must not clear the backup away
        };
    }

    bool copies() const { return GetParam(); }

    std::optional<SaveFolder> folder;
    SaveResult result{};
    FaultTrial trial;
};

INSTANTIATE_TEST_SUITE_P(Strategy, BrokenSave, testing::Bool(),
                         [](const auto& test) { return test.param ? "Copying" : "Renaming"; });

} // namespace

TEST_P(BrokenSave, LeavesTheOldFileOrTheNewOneWhateverFails) {
    trial.check = [this](const Fault& fault) {
        EXPECT_EQ(result.finalized, result.status == ProtectedWrite::StatusOk);
        // What cannot be looked at counts as missing, and so is not cleared away. Nor is what
        // cannot be deleted.
        const bool mayLeave = fault.call == onStat || fault.call == onUnlink;
        const std::string main = result.finalized ? "main new" : "main old";
        EXPECT_THAT(folder->state(), AnyOf(main, mayLeave ? "backup old, " + main : main,
                                           mayLeave ? main + ", temp new" : main));
        EXPECT_TRUE(result.finalized || fault.n > 0);
    };
    EXPECT_EQ(trial.runAll(), copies()
                                  ? "open close read write fsync unlink tempnam stat fstat access"
                                  : "open close write fsync rename unlink tempnam stat access");
    trial.report(copies() ? "protected write by copying" : "protected write by renaming");
}

TEST_P(BrokenSave, SaysWhatFailed) {
    constexpr int ok = ProtectedWrite::StatusOk;
    constexpr int notWritable = ProtectedWrite::StatusNotWritable;
    constexpr int cannotClear = ProtectedWrite::StatusCannotClearTemp;
    constexpr int cannotBackup = ProtectedWrite::StatusCannotBackup;
    constexpr int invalidated = ProtectedWrite::StatusInvalidated;
    const struct {
        SystemFaults::Call call;
        std::size_t n;
        int byRenaming;
        int byCopying;
    } cases[] = {
        // In the order of the calls. Whether something is there is not known when stat fails.
        {onTempnam, 1, cannotClear, invalidated},
        {onTempnam, 2, cannotClear, cannotBackup},
        {onOpen, 1, invalidated, invalidated},
        {onWrite, 2, invalidated, invalidated},
        {onClose, 1, invalidated, invalidated},
        {onAccess, 2, notWritable, notWritable},
        // What is only for the case of a power cut.
        {onOpen, 2, ok, ok},
        {onFsync, 1, cannotBackup, cannotBackup},
        {onFsync, 2, ok, ok},
        // The main file to the backup: a rename, or an open, a read and a write of each file.
        {onRename, 1, cannotBackup, ok},
        {onOpen, 3, ok, cannotBackup},
        {onRead, 1, ok, cannotBackup},
        {onWrite, 3, ok, cannotBackup},
        // The temporary file to the main name.
        {onRename, 2, notWritable, ok},
        {onWrite, 6, ok, notWritable},
        // What a network file system reports only in closing a copy.
        {onClose, 3, ok, cannotBackup},
        {onClose, 7, ok, notWritable},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << SystemFaults::name(test.call) << ' ' << test.n);
        std::vector<SystemFaults::Answer> answers(test.n);
        answers.back() = {EIO};
        trial.prepare();
        const SystemFaults faults(test.call, answers);
        trial.operation();
        const int status = copies() ? test.byCopying : test.byRenaming;
        EXPECT_EQ(result.status, status);
    }
    // A file that cannot be synced at all is no failure.
    for (const int error : {EINVAL, EROFS, ENOTSUP}) {
        trial.prepare();
        const SystemFaults faults(SystemFaults::onFsync, {{error}});
        trial.operation();
        EXPECT_EQ(result.status, ProtectedWrite::StatusOk) << std::strerror(error);
    }
}

// The old file is left, complete, or the new one has its place. Where the way forward fails and so
// does the way back, the only old file is the backup, which stays.
TEST_P(BrokenSave, LeavesACompleteFileWhateverTwoCallsFail) {
    bool wasBackup = false;
    trial.check = [&](const Fault&) {
        const std::string state = folder->state();
        EXPECT_EQ(result.finalized, result.status == ProtectedWrite::StatusOk);
        if (result.finalized)
            EXPECT_THAT(state, HasSubstr("main new"));
        else
            EXPECT_THAT(state, AnyOf(HasSubstr("main old"), HasSubstr("backup old")));
        if (state == "backup old") {
            wasBackup = true;
            EXPECT_EQ(result.status, ProtectedWrite::StatusNotWritable);
        }
    };
    for (const int error : {EIO, ENOENT, EEXIST})
        trial.runPairs(error);
    EXPECT_GT(trial.faultsTried(), 500u);
    EXPECT_TRUE(wasBackup);
    trial.report(copies() ? "pairs, protected write by copying"
                          : "pairs, protected write by renaming");
}

namespace {

struct KilledSave {
    std::string call; ///< instead of which it was killed; empty: it came to its end
    std::string output;
    std::string state;
};

/// Runs the program that kills itself.
KilledSave runKilled(const SaveFolder& folder, const char* strategy, const std::string& n) {
    const std::string command = "exec " PROTECTED_SAVE " " + folder.main + " " +
                                folder.temporary() + " " + strategy + " " + n;
    std::FILE* const program = popen(command.c_str(), "r");
    std::string output;
    for (int byte; (byte = std::fgetc(program)) != EOF;)
        output += static_cast<char>(byte);
    const int status = pclose(program);
    if (WIFSIGNALED(status)) {
        EXPECT_EQ(WTERMSIG(status), SIGKILL);
        return {output, "", folder.state()};
    }
    EXPECT_EQ(WEXITSTATUS(status), 0) << output;
    return {"", output, folder.state()};
}

/// A call that changed what lies on disk, or waited for the disk, and what lay there after it.
struct Step {
    std::string call;
    std::string state;
    friend bool operator==(const Step&, const Step&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Step& step) {
        return out << step.call << " -> " << step.state << "\n";
    }
};

/// Kills a save at its first system call, a new one at the second, and so on.
std::vector<Step> killEverywhere(const char* strategy) {
    std::vector<Step> steps;
    KilledSave before{"", "", "main old"};
    for (int n = 1;; ++n) {
        const SaveFolder folder;
        KilledSave now = runKilled(folder, strategy, std::to_string(n));
        if (before.call == "fsync" || now.state != before.state)
            steps.push_back({before.call, now.state});
        if (now.call.empty()) {
            std::cout << "kills tried: " << n - 1 << " (protected write, " << strategy << ")\n";
            return steps;
        }
        before = std::move(now);
    }
}

} // namespace

// These two tables are those of Documentation/architecture.md.
TEST(KilledSave, LeavesWhatIsDocumentedByRenaming) {
    EXPECT_THAT(killEverywhere("rename"),
                testing::ElementsAre(
                    Step{"open", "main old, temp empty"},
                    Step{"write", "main old, temp part of new"},
                    Step{"write", "main old, temp new"}, Step{"fsync", "main old, temp new"},
                    Step{"rename", "backup old, temp new"}, Step{"rename", "backup old, main new"},
                    Step{"fsync", "backup old, main new"}, Step{"unlink", "main new"}));
}

TEST(KilledSave, LeavesWhatIsDocumentedByCopying) {
    EXPECT_THAT(
        killEverywhere("copy"),
        testing::ElementsAre(
            Step{"open", "main old, temp empty"}, Step{"write", "main old, temp part of new"},
            Step{"write", "main old, temp new"}, Step{"fsync", "main old, temp new"},
            Step{"open", "backup empty, main old, temp new"},
            Step{"write", "backup part of old, main old, temp new"},
            Step{"write", "backup old, main old, temp new"},
            Step{"fsync", "backup old, main old, temp new"},
            Step{"fsync", "backup old, main old, temp new"}, Step{"unlink", "backup old, temp new"},
            Step{"open", "backup old, main empty, temp new"},
            Step{"write", "backup old, main part of new, temp new"},
            Step{"write", "backup old, main new, temp new"},
            Step{"fsync", "backup old, main new, temp new"},
            Step{"fsync", "backup old, main new, temp new"}, Step{"unlink", "backup old, main new"},
            Step{"unlink", "main new"}));
}

// Looked at once in a process: hence a process for each.
TEST(ProtectedWrite, TakesItsStrategyFromTheEnvironment) {
    const SaveFolder folder;
    const char* variable = "ZEPHI_PROTECTED_WRITE_USE_COPY";
    unsetenv(variable);
    EXPECT_TRUE(runKilled(folder, "default", "0").output.starts_with(folder.documents()));
    for (const char* value : {"1", "0", ""}) {
        setenv(variable, value, 1);
        EXPECT_TRUE(runKilled(folder, "default", "0").output.starts_with(folder.temporary()));
    }
    unsetenv(variable);
}
