// SPDX-License-Identifier: MIT

// Packages at each system call that fails, and killed at each.

#include <sys/wait.h>
#include <unistd.h>

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

/// One change of a package, and what it makes of the entries.
struct Change {
    const char* what;
    std::function<zeUtil::Error(ioPackageFile&, const TempFolder&)> make;
    Contents after;
    std::string replaced; ///< this entry may hold anything as long as the directory is the old one
    std::string calls;    ///< what runAll() finds
};

void PrintTo(const Change& change, std::ostream* stream) {
    *stream << change.what;
}

const std::string large(5'000, 'l');
const std::string packed(9'000, 'p');
const Contents before{{"a", large}, {"b", "bbbb"}, {"dir/c", packed}};

Contents with(const std::string& name, const std::string& content) {
    Contents result = before;
    result[name] = content;
    return result;
}

Contents without(const std::string& name) {
    Contents result = before;
    result.erase(name);
    return result;
}

class PackageFaults : public testing::Test {
protected:
    PackageFaults() {
        fs::create_directory(folder.path("tmp"));
        setenv("TMPDIR", folder.path("tmp").c_str(), 1);
        ioPackageFile package;
        EXPECT_EQ(package.open(wide(folder.path("p"))).code(), 0);
        for (const auto& [name, content] : before)
            EXPECT_EQ(package.addEntry(source(content), wide(name), name == "dir/c").code(), 0);
        EXPECT_EQ(package.update().code(), 0);
        whole = folder.read("p");
        folder.write("source", std::string(6'000, 'n')); // for the changes
        folder.write("four", "BBBB");
    }
    ~PackageFaults() override { unsetenv("TMPDIR"); }

    zeString::IString source(const std::string& content) const {
        return wide(folder.write("source", content));
    }

    void prepare() {
        folder.write("p", whole);
        fs::remove(folder.path("q"));
        fs::remove_all(folder.path("out"));
        fs::remove_all(folder.path("tmp"));
        fs::create_directory(folder.path("tmp"));
    }

    /// Makes the change, and the directory of it. Notes what the package then says it holds.
    void make(const Change& change, int attempts = 1) {
        ioPackageFile package;
        listed.reset();
        updated = false;
        if (package.open(wide(folder.path("p"))).code() != 0 || package.update().code() != 0)
            return; // the latter as one that does not know that it may be written
        changed = change.make(package, folder).code() == 0;
        for (; attempts > 0 && !updated; --attempts)
            updated = package.update().code() == 0;
        listed.emplace();
        const Contents& now = changed ? change.after : before;
        for (const auto& [name, index] : package.getDirectory())
            (*listed)[name.asUTF8()] = now.at(name.asUTF8());
    }

    /// The entries of the last update() or of the one in progress, or a refusal.
    void checkFile(const Change& change) const {
        std::string refused;
        Contents found = packages::reopened(folder.path("p"), &refused);
        if (updated) {
            EXPECT_EQ(refused, "");
            EXPECT_EQ(found, *listed);
            return;
        }
        if (!refused.empty()) {
            EXPECT_EQ(refused.substr(0, 3), "17 ");
            return;
        }
        const bool isNew = found == change.after;
        Contents old = before;
        if (!change.replaced.empty() && found.count(change.replaced) != 0)
            old[change.replaced] = found[change.replaced];
        EXPECT_TRUE(isNew || found == old || (listed && found == *listed));
    }

    TempFolder folder{TempFolder::memory()};
    std::string whole;
    std::optional<Contents> listed;
    bool changed = false;
    bool updated = false;
};

class PackageChanges : public PackageFaults, public testing::WithParamInterface<Change> {};

const Change changes[] = {
    {"nothing", [](ioPackageFile&, const TempFolder&) { return zeUtil::Error(); }, before, "",
     "open close read stat access lseek"},
    {"adding",
     [](ioPackageFile& package, const TempFolder& folder) {
         return package.addEntry(wide(folder.path("source")), L"d", false);
     },
     with("d", std::string(6'000, 'n')), "", "open close read write stat access lseek"},
    {"adding compressed",
     [](ioPackageFile& package, const TempFolder& folder) {
         return package.addEntry(wide(folder.path("source")), L"d", true);
     },
     with("d", std::string(6'000, 'n')), "",
     "open close read write unlink tempnam stat access lseek"},
    {"replacing",
     [](ioPackageFile& package, const TempFolder& folder) {
         return package.addEntry(wide(folder.path("four")), L"b", false);
     },
     with("b", "BBBB"), "b", "open close read write stat access lseek"},
    {"deleting",
     [](ioPackageFile& package, const TempFolder&) { return package.deleteEntry(L"b"); },
     without("b"), "", "open close read write stat access lseek"},
    {"deleting the last",
     [](ioPackageFile& package, const TempFolder&) { return package.deleteEntry(L"dir/c"); },
     without("dir/c"), "", "open close read write stat access lseek"},
};

} // namespace

TEST_P(PackageChanges, LeaveTheOldEntriesTheNewOnesOrARefusal) {
    const Change& change = GetParam();
    FaultTrial trial;
    trial.prepare = [this] { prepare(); };
    trial.operation = [&] { make(change); };
    trial.check = [&](const Fault& fault) {
        checkFile(change);
        EXPECT_TRUE(fault.n > 0 || (changed && updated));
        const bool mayStay =
            fault.call == SystemFaults::onUnlink || fault.call == SystemFaults::callCount;
        EXPECT_TRUE(mayStay || fs::is_empty(folder.path("tmp")));
    };
    EXPECT_EQ(trial.runAll(), change.calls);
    trial.run(SystemFaults::onWrite, {ENOSPC}, 1000); // full, and stays so
    trial.runPairs(EIO);
    trial.report(change.what);
}

// What is in memory is right after any failure, so that a second update() makes it good.
TEST_P(PackageChanges, LoseNothingIfUpdateIsRepeated) {
    const Change& change = GetParam();
    FaultTrial trial;
    trial.prepare = [this] { prepare(); };
    trial.operation = [&] { make(change, 2); };
    trial.check = [&](const Fault&) {
        EXPECT_TRUE(updated || !listed) << "or could not be changed at all";
        checkFile(change);
    };
    trial.runAll();
}

TEST_P(PackageChanges, LeaveTheSameWhenTheyAreKilled) {
    const Change& change = GetParam();
    int kills = 0;
    for (std::size_t n = 1;; ++n, ++kills) {
        prepare();
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            SystemFaults::killAt(n, -1);
            make(change);
            _exit(updated ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        SCOPED_TRACE(n);
        listed.reset();
        updated = false;
        checkFile(change);
        if (WIFEXITED(status)) {
            EXPECT_EQ(WEXITSTATUS(status), 0);
            EXPECT_EQ(packages::reopened(folder.path("p")), change.after);
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
    zeUtil::Error error;
    const std::string path = folder.path("p");
    FaultTrial trial;
    const auto outcome = [&](const Fault& fault, const auto& isComplete) {
        EXPECT_TRUE(fault.n > 0 || error.code() == 0) << packages::text(error);
        EXPECT_TRUE(error.code() != 0 || isComplete());
        EXPECT_EQ(packages::reopened(path), before);
    };
    trial.prepare = [this] {
        prepare();
        fs::create_directory(folder.path("out"));
        folder.write("out/a", "what is there already");
    };
    trial.operation = [&] {
        ioPackageFile package;
        error = package.open(wide(path));
        if (error.code() == 0)
            error = package.expand(wide(folder.path("out")));
    };
    trial.check = [&](const Fault& fault) {
        outcome(fault, [&] {
            return folder.read("out/a") == large && folder.read("out/b") == "bbbb" &&
                   folder.read("out/dir/c") == packed;
        });
    };
    EXPECT_EQ(trial.runAll(),
              "open openat close read write stat fstat access lseek ftruncate mkdirat");
    trial.operation = [&] {
        ioPackageFile package;
        error = package.open(wide(path));
        if (error.code() == 0)
            error = package.write(wide(folder.path("q")));
    };
    trial.check = [&](const Fault& fault) {
        outcome(fault, [&] { return packages::reopened(folder.path("q")) == before; });
    };
    EXPECT_EQ(trial.runAll(), "open close read write stat access lseek");
    trial.runPairs(EIO);
    trial.report("expanding and copying a package");
}
