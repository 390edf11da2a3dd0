// SPDX-License-Identifier: MIT

// Packages at each system call that fails, and killed at each.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <optional>

#include <gtest/gtest.h>

#include "Base/IO/ioPackageFile.h"
#include "Support/FaultTrial.h"
#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

#include "IO/package/PackageSupport.h"

using packages::Contents;
using packages::wide;

namespace {

namespace fs = std::filesystem;

/// One change of a package.
struct Change {
    const char* what;
    const char* name; ///< of what is added or deleted; empty for no change at all
    int size;         ///< of what is added; -1 to delete
    bool compress;
    std::string calls; ///< what runAll() finds
};

void PrintTo(const Change& change, std::ostream* stream) {
    *stream << change.what;
}

const std::string large(5'000, 'l');
const std::string packed(9'000, 'p');
const Contents before{{"a", large}, {"b", "bbbb"}, {"dir/c", packed}};

class PackageFaults : public testing::Test {
protected:
    PackageFaults() {
        fs::create_directory(folder.path("tmp"));
        setenv("TMPDIR", folder.path("tmp").c_str(), 1);
        ioPackageFile package;
        EXPECT_EQ(package.open(path).code(), 0);
        for (const auto& [name, content] : before) {
            const auto source = wide(folder.write("source", content));
            EXPECT_EQ(package.addEntry(source, wide(name), name == "dir/c").code(), 0);
        }
        EXPECT_EQ(package.update().code(), 0);
        whole = folder.read("p");
    }
    ~PackageFaults() override { unsetenv("TMPDIR"); }

    void prepare() {
        folder.write("p", whole);
        fs::remove(folder.path("q"));
        for (const char* made : {"out", "tmp"})
            fs::remove_all(folder.path(made));
        fs::create_directory(folder.path("tmp"));
    }

    TempFolder folder{TempFolder::memory()};
    const zeString::IString path = wide(folder.path("p"));
    std::string whole;
};

class PackageChanges : public PackageFaults, public testing::WithParamInterface<Change> {
protected:
    PackageChanges() {
        if (change.size < 0)
            after.erase(change.name);
        else
            after[change.name] = std::string(std::size_t(change.size), 'n');
        after.erase("");
        folder.write("new", std::string(std::size_t(std::max(change.size, 0)), 'n'));
    }

    zeUtil::Error makeChange(ioPackageFile& package) const {
        if (*change.name == '\0')
            return zeUtil::Error();
        return change.size < 0
                   ? package.deleteEntry(change.name)
                   : package.addEntry(wide(folder.path("new")), change.name, change.compress);
    }

    /// Makes the change, and the directory of it. Notes what the package then says it holds.
    void make(int attempts = 1) {
        ioPackageFile package;
        listed.reset();
        updated = false;
        if (package.open(path).code() != 0 || package.update().code() != 0)
            return; // the latter as one that does not know that it may be written
        changed = makeChange(package).code() == 0;
        for (; attempts > 0 && !updated; --attempts)
            updated = package.update().code() == 0;
        listed.emplace();
        for (const auto& [name, index] : package.getDirectory())
            (*listed)[name.asUTF8()] = (changed ? after : before).at(name.asUTF8());
    }

    /// The entries of the last update() or of the one in progress, or a refusal.
    void checkFile() const {
        std::string refused;
        Contents found = packages::reopened(folder.path("p"), &refused);
        if (updated) {
            EXPECT_EQ(refused, "");
            EXPECT_EQ(found, *listed);
        } else if (!refused.empty()) {
            EXPECT_EQ(refused.substr(0, 3), "17 ");
        } else if (found != after && !(listed && found == *listed)) {
            // What is replaced may hold anything as long as the directory is the old one.
            if (change.size >= 0 && before.count(change.name) != 0)
                found[change.name] = before.at(change.name);
            EXPECT_EQ(found, before);
        }
    }

    const Change& change = GetParam();
    Contents after = before;
    std::optional<Contents> listed;
    bool changed = false;
    bool updated = false;
};

const std::string looks = "stat access lseek";
const Change changes[] = {
    {"nothing", "", -1, false, "open close read " + looks},
    {"adding", "d", 6'000, false, "open close read write " + looks},
    {"adding compressed", "d", 6'000, true, "open close read write unlink tempnam " + looks},
    {"replacing", "b", 4, false, "open close read write " + looks},
    {"deleting", "b", -1, false, "open close read write " + looks},
    {"deleting the last", "dir/c", -1, false, "open close read write " + looks},
};

} // namespace

TEST_P(PackageChanges, LeaveTheOldEntriesTheNewOnesOrARefusal) {
    int attempts = 1;
    FaultTrial trial;
    trial.prepare = [this] { prepare(); };
    trial.operation = [&] { make(attempts); };
    trial.check = [&](const Fault& fault) {
        checkFile();
        EXPECT_TRUE(fault.n > 0 || (changed && updated));
        // What is in memory is right after any failure: a second update() makes it good.
        EXPECT_TRUE(attempts == 1 || updated || !listed);
        const bool mayStay =
            fault.call == SystemFaults::onUnlink || fault.call == SystemFaults::callCount;
        EXPECT_TRUE(mayStay || fs::is_empty(folder.path("tmp")));
    };
    EXPECT_EQ(trial.runAll(), change.calls);
    trial.run(SystemFaults::onWrite, {ENOSPC}, 1000); // full, and stays so
    trial.runPairs(EIO);
    attempts = 2;
    trial.runAll();
    trial.report(change.what);
}

TEST_P(PackageChanges, LeaveTheSameWhenTheyAreKilled) {
    int kills = 0;
    for (std::size_t n = 1;; ++n, ++kills) {
        prepare();
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            SystemFaults::killAt(n, -1);
            make();
            _exit(updated ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        SCOPED_TRACE(n);
        listed.reset();
        updated = false;
        checkFile();
        if (WIFEXITED(status)) {
            EXPECT_EQ(WEXITSTATUS(status), 0);
            EXPECT_EQ(packages::reopened(folder.path("p")), after);
            break;
        }
        ASSERT_EQ(WTERMSIG(status), SIGKILL);
    }
    EXPECT_GT(kills, 5);
    std::cout << "kills tried: " << kills << " (" << change.what << " in a package)\n";
}

INSTANTIATE_TEST_SUITE_P(Faults, PackageChanges, testing::ValuesIn(changes));

// Success means that everything is there, and a failure leaves the package alone.
TEST_F(PackageFaults, ShowInWhatComesOut) {
    const zeString::IString out = wide(folder.path("out"));
    const zeString::IString copy = wide(folder.path("q"));
    for (const bool copying : {false, true}) {
        zeUtil::Error error;
        FaultTrial trial;
        trial.prepare = [&] {
            prepare();
            fs::create_directory(folder.path("out"));
            folder.write("out/a", "what is there already");
        };
        trial.operation = [&] {
            ioPackageFile package;
            error = package.open(path);
            if (error.code() == 0)
                error = copying ? package.write(copy) : package.expand(out);
        };
        trial.check = [&](const Fault& fault) {
            EXPECT_TRUE(fault.n > 0 || error.code() == 0) << packages::text(error);
            EXPECT_EQ(packages::reopened(folder.path("p")), before);
            if (error.code() == 0 && copying) {
                EXPECT_EQ(packages::reopened(folder.path("q")), before);
            }
            for (const auto& [name, content] : before)
                EXPECT_TRUE(error.code() != 0 || copying || folder.read("out/" + name) == content);
        };
        EXPECT_EQ(trial.runAll(), copying ? "open close read write stat access lseek"
                                          : "open openat close read write stat fstat access lseek "
                                            "ftruncate mkdirat");
        if (copying)
            trial.runPairs(EIO);
        trial.report(copying ? "copying a package" : "expanding a package");
    }
}
