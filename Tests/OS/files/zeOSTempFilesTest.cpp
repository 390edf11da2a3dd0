// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSTempFiles.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Base/OS/zeOSTempDirectory.h"
#include "Support/FaultTrial.h"

#include "OS/files/FileFixture.h"

namespace {

class TempFiles : public FileFixture {
protected:
    TempFiles() {
        unsetenv("TMPDIR");
        zeOS::setTempDirectory(folder.path().c_str());
    }
    ~TempFiles() override {
        unsetenv("TMPDIR");
        zeOS::setTempDirectory(L"");
    }

    std::string directory(const std::string& name) const {
        std::filesystem::create_directory(folder.path(name));
        return folder.path(name);
    }

    /// A file that was last changed so many days ago.
    void write(const std::string& name, double days) const {
        using namespace std::chrono;
        const auto age = duration_cast<seconds>(duration<double, days_>(days));
        std::filesystem::last_write_time(folder.write(name, "left over"),
                                         std::filesystem::file_time_type::clock::now() - age);
    }

private:
    using days_ = std::ratio<86400>;
};

} // namespace

TEST_F(TempFiles, AreNamedAfterPrefixAndSuffixInTheDirectoryThatCounts) {
    const std::string ours = folder.path();
    const std::string other = directory("\u00FCbrige");
    const std::string environment = directory("environment");
    const std::string missing = folder.path("missing");
    const std::string process = std::to_string(getpid());
    const struct {
        std::string tempDirectory;
        const char* tmpdir;    ///< null: not set
        std::string variantOf; ///< empty: createTmpFilename
        const wchar_t* prefix;
        const wchar_t* suffix;
        std::string directory;
        std::string begin;
        std::string end;
    } cases[] = {
        {ours, nullptr, "", nullptr, L"txt", ours, "ASTMP", ".txt"},
        {ours, nullptr, "", L"longer", L"0.tmp", ours, "longe", ".0.tmp"},
        {ours, nullptr, "", L"ab", L"", ours, "ab." + process.substr(0, 2), ""},
        {ours, nullptr, "", L"", L"", ours, "." + process.substr(0, 4), ""},
        {ours, nullptr, "", L"abc\u20AC", L"\u00FC", ours, "abc", ".\u00FC"},
        {ours, nullptr, other, nullptr, L"zd", other, "recov", ".zd"},
        {ours, nullptr, other, L"doc", L"zd", other, "doc." + process.substr(0, 1), ".zd"},
        // The C library puts the environment above all, if its directory is there.
        {ours, environment.c_str(), "", nullptr, L"", environment, "ASTMP", ""},
        {ours, environment.c_str(), other, nullptr, L"", environment, "recov", ""},
        {ours, missing.c_str(), "", nullptr, L"", ours, "ASTMP", ""},
        {missing, nullptr, "", nullptr, L"", "/tmp", "ASTMP", ""},
    };
    for (const auto& test : cases) {
        zeOS::setTempDirectory(wide(test.tempDirectory));
        if (test.tmpdir)
            setenv("TMPDIR", test.tmpdir, 1);
        else
            unsetenv("TMPDIR");
        const zeOS::Filename name =
            test.variantOf.empty()
                ? zeOS::createTmpFilename(test.suffix, test.prefix)
                : zeOS::createNewFilenameVariant(wide(test.variantOf), test.prefix, test.suffix);
        const std::string path = name.path().asUTF8();
        SCOPED_TRACE(path);
        EXPECT_TRUE(path.starts_with(test.directory + "/" + test.begin));
        EXPECT_TRUE(path.ends_with(test.end));
        EXPECT_EQ(path.size(), test.directory.size() + 1 + test.begin.size() + 6 + test.end.size());
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST_F(TempFiles, AreEmptyNamesWhereNoneCanBeFound) {
    const SystemFaults faults(SystemFaults::onTempnam, {{ENOENT}, {ENOENT}, {ENOENT}});
    EXPECT_TRUE(zeOS::createTmpFilename(L"txt", nullptr).path().isEmpty());
    EXPECT_EQ(zeOS_CreateTemporaryFileName("txt"), nullptr);
    EXPECT_EQ(zeOS_CreateTemporaryFileNameW(L"txt"), nullptr);
}

TEST_F(TempFiles, AreNamedForPlainCallersToo) {
    const auto take = [](auto* text) {
        std::unique_ptr<std::remove_pointer_t<decltype(text)>, decltype(&free)> owned(text, &free);
        return zeString::IString(owned.get());
    };
    EXPECT_EQ(take(zeOS_GetTemporaryDirectory()), wide(folder.path()));
    EXPECT_EQ(take(zeOS_GetTemporaryDirectoryW()), wide(folder.path()));
    for (const auto& name :
         {take(zeOS_CreateTemporaryFileName("txt")), take(zeOS_CreateTemporaryFileNameW(L"txt"))}) {
        EXPECT_EQ(name.find(wide(folder.path("ASTMP"))), 0u);
        EXPECT_EQ(zeOS::Filename(name).baseSuffix(), L"txt");
    }
}

TEST_F(TempFiles, AreSweptByNameAndAge) {
    const struct {
        const char* name;
        double days;
        bool isSwept;
    } cases[] = {
        {"eru012.unload", 8, true},
        {"eru12.unload", 8, false},
        {"xeru01234.unload", 8, false},
        {"erubaTempWire.1", 8, true},
        {"erubaTempWire.2", 6.9, false},
        {"a.ac$", 7.1, true},
        {".ac$", 8, false},
        {"jam123out4", 8, true},
        {"jam12out4", 8, false},
        {"jam123cmd4.bat", 8, true},
        {"jam123cmdx.bat", 8, false},
        {"b\u00FCcher \n.ac$", 8, true},
    };
    const auto prepare = [&] {
        int swept = 0;
        for (const auto& test : cases) {
            write(test.name, test.days);
            swept += test.isSwept;
        }
        return swept;
    };
    for (const char* end : {"", "/"}) {
        const int expected = prepare();
        EXPECT_EQ(zeOS::cleanupTempDirectory(wide(folder.path() + end)), expected);
        for (const auto& test : cases)
            EXPECT_NE(isThere(test.name), test.isSwept) << test.name;
    }
    // What goes by a shorter name than was asked for is not touched.
    const std::string other = directory("other");
    write("other/a.ac$", 8);
    EXPECT_EQ(zeOS::cleanupTempDirectory(wide("file:" + other)), 0);
    EXPECT_EQ(zeOS::cleanupTempDirectory(wide(folder.path("missing"))), 0);
    EXPECT_EQ(zeOS::cleanupTempDirectory(L""), 0);
}

TEST_F(TempFiles, AreLeftWhereTheyAreNoFilesOrCannotBeDeleted) {
    std::filesystem::create_directory(folder.path("old.ac$"));
    std::filesystem::last_write_time(folder.path("old.ac$"), {});
    EXPECT_EQ(zeOS::cleanupTempDirectory(wide(folder.path())), 0);
    EXPECT_TRUE(isThere("old.ac$"));

    int swept = 0;
    FaultTrial trial;
    trial.prepare = [&] {
        write("new.ac$", 1);
        write("older.ac$", 8);
    };
    trial.operation = [&] { swept = zeOS::cleanupTempDirectory(wide(folder.path())); };
    trial.check = [&](const Fault& fault) {
        EXPECT_TRUE(isThere("new.ac$"));
        EXPECT_EQ(isThere("older.ac$"), swept == 0);
        EXPECT_TRUE(swept == 1 || fault.n > 0);
    };
    trial.runAll();
    trial.report("sweep of a temporary directory");
}

// Not to sweep the machine's own "/tmp", it is made to look as if it could not be opened.
TEST_F(TempFiles, AreSweptFromTheCommonDirectoryAsWell) {
    write("a.ac$", 8);
    {
        const SystemFaults faults(SystemFaults::onOpendir, {{}, {EACCES}});
        EXPECT_EQ(zeOS::cleanupTempDirectory(), 1);
        EXPECT_EQ(faults.calls(), 2u);
    }
    zeOS::setTempDirectory(L"/tmp");
    const SystemFaults faults(SystemFaults::onOpendir, {{EACCES}});
    EXPECT_EQ(zeOS::cleanupTempDirectory(), 0);
    EXPECT_EQ(faults.calls(), 1u);
}
