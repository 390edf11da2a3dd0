// SPDX-License-Identifier: MIT

// What becomes of a package when changing it is broken off or fails.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSAppOutput.h"
#include "Support/FaultTrial.h"
#include "Support/TempFolder.h"

#include "zepackage/command.h"

namespace {

namespace fs = std::filesystem;
using zepackage::run;

/// A package in a folder of its own, whose changes need every way of the library: an entry that is
/// replaced by a larger one, free space that is used again, and an entry at the end.
class ZepackageSafety : public testing::Test {
protected:
    ZepackageSafety() {
        output_.application1.open("/dev/null", true);
        folder_.write("a", std::string(5000, 'a'));
        folder_.write("b", std::string(3000, 'b'));
        folder_.write("c", "c");
        EXPECT_EQ(run({"create", path("p"), "a", "b", "c", "-C", path("")}), 0);
        EXPECT_EQ(run({"delete", path("p"), "b"}), 0);
        old_ = folder_.read("p");
        folder_.write("a", std::string(9000, 'A'));
        folder_.write("d", std::string(3000, 'd'));
    }

    ~ZepackageSafety() override { output_.application1.close(); }

    std::string path(const std::string& name) const { return folder_.path(name); }

    /// The old package, and nothing that a broken change left.
    void restore() const {
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            if (entry.path().filename().string().size() > 1)
                fs::remove_all(entry.path());
        folder_.write("p", old_);
    }

    std::vector<std::string> leftovers(const std::string& ending) const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            if (entry.path().filename().string().ends_with(ending))
                found.push_back(entry.path().filename());
        return found;
    }

    /// Kills it in the place of its `n`-th system call; false if it comes to its end before.
    static bool isKilled(const std::vector<std::string>& arguments, std::size_t n,
                         int signal = SIGKILL) {
        const pid_t child = fork();
        if (child == 0) {
            SystemFaults::killAt(n, open("/dev/null", O_WRONLY), signal);
            _exit(run(arguments));
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == signal : WEXITSTATUS(status) == 0);
        return WIFSIGNALED(status);
    }

    zeOS::AppOutput& output_ = zeOS::AppOutput::getInstance();
    TempFolder folder_{TempFolder::memory()};
    std::string old_;
    const std::vector<std::vector<std::string>> changes_ = {
        {"add", path("p"), "a", "d", "--compress", "-C", path("")},
        {"add", path("p"), "d", "-C", path("")},
        {"delete", path("p"), "a"},
        {"delete", path("p"), "a", "c"},
        {"compact", path("p")},
        {"create", path("p"), "d", "--force", "-C", path("")},
    };
};

} // namespace

TEST_F(ZepackageSafety, APackageIsTheOldOrTheNewOneAtEveryKill) {
    std::size_t kills = 0;
    for (const auto& change : changes_) {
        restore();
        ASSERT_EQ(run(change), 0) << change[0];
        const std::string changed = folder_.read("p");
        ASSERT_NE(changed, old_);
        std::size_t n = 1;
        bool wasOld = false;
        bool wasNew = false;
        for (; restore(), isKilled(change, n); ++n) {
            SCOPED_TRACE(change[0] + " killed at call " + std::to_string(n));
            // Between the two renames the old one has the name that every command tells.
            if (!fs::exists(path("p"))) {
                ASSERT_EQ(leftovers(".1.tmp").size(), 1U);
                EXPECT_TRUE(folder_.read(leftovers(".1.tmp")[0]) == old_);
                continue;
            }
            const std::string found = folder_.read("p");
            wasOld = wasOld || found == old_;
            wasNew = wasNew || found == changed;
            ASSERT_TRUE(found == old_ || found == changed);
            ASSERT_EQ(run({"verify", path("p")}), 0);
        }
        EXPECT_TRUE(wasOld && wasNew) << change[0];
        EXPECT_TRUE(folder_.read("p") == changed);
        kills += n - 1;
    }
    std::printf("kills tried: %zu, in the middle of zepackage's changes\n", kills);
}

TEST_F(ZepackageSafety, AnInterruptionLeavesNoUnfinishedFile) {
    for (const auto& change : changes_) {
        restore();
        ASSERT_EQ(run(change), 0);
        const std::string changed = folder_.read("p");
        for (std::size_t n = 1; restore(), isKilled(change, n, SIGINT); ++n) {
            EXPECT_TRUE(folder_.read("p") == old_ || folder_.read("p") == changed);
            EXPECT_TRUE(leftovers(".tmp").empty()) << change[0] << " at call " << n;
        }
    }
    const std::string into = path("out");
    for (const bool force : {false, true}) {
        std::vector<std::string> extract = {"extract", path("p"), "-C", into};
        if (force)
            extract.emplace_back("--force");
        const auto prepare = [&] {
            restore();
            fs::create_directory(into);
            if (force)
                folder_.write("out/a", "before");
        };
        for (std::size_t n = 1; prepare(), isKilled(extract, n, SIGINT); ++n)
            for (const auto& entry : fs::directory_iterator(into)) {
                const std::string name = entry.path().filename();
                const std::string found = folder_.read("out/" + name);
                EXPECT_TRUE(name == "a" ? found == std::string(5000, 'a') || found == "before"
                                        : name == "c" && found == "c")
                    << name << " at call " << n;
            }
    }
}

TEST_F(ZepackageSafety, AChangeThatFailsLeavesThePackageAsItWas) {
    for (const auto& change : changes_) {
        restore();
        ASSERT_EQ(run(change), 0);
        const std::string changed = folder_.read("p");
        int code = 0;
        FaultTrial trial;
        trial.prepare = [&] { restore(); };
        trial.operation = [&] { code = run(change); };
        trial.check = [&](const Fault& fault) {
            EXPECT_TRUE(folder_.read("p") == (code == 0 ? changed : old_)) << change[0];
            // What cannot be looked at or deleted is left behind.
            if (fault.call != SystemFaults::onStat && fault.call != SystemFaults::onUnlink) {
                EXPECT_TRUE(leftovers(".tmp").empty()) << change[0];
            }
        };
        trial.runAll();
        trial.report(("zepackage " + change[0]).c_str());
    }
}
