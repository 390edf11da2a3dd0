// SPDX-License-Identifier: MIT

// The file layer with each of its system calls failing in turn: the code and text that come back,
// and what stands on disk afterwards, which is the old file or the new one wherever that is
// promised.

#include <cerrno>
#include <cstring>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFilesystem.h"
#include "Support/FaultTrial.h"

#include "OS/files/FileFixture.h"

using zeOS::File;
using zeString::IString;

using enum SystemFaults::Call;

namespace {

const std::string content(10000, 'n'); // three blocks
const std::string ioError = "4: An I/O problem has occurred";

class FileFaults : public FileFixture {
protected:
    void SetUp() override {
        trial.prepare = [this] {
            for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
                std::filesystem::remove_all(entry);
            folder.write("new", content);
            folder.write("old", "old");
            makeFolder("d");
            result = "not run";
        };
    }

    /// `calls`: the names of those that the operation makes.
    void tryEverything(const std::string& calls) {
        EXPECT_EQ(trial.runAll(), calls);
        trial.report(testing::UnitTest::GetInstance()->current_test_info()->name());
    }

    /// What the system says of the fault's error, with the code before it.
    static std::string systemError(int code, const Fault& fault) {
        return std::to_string(code) + ": " + std::strerror(fault.answer.error);
    }

    FaultTrial trial;
    std::string result;
};

/// Whether the fault is a failure of that call, at its n-th time or at any.
bool failed(const Fault& fault, SystemFaults::Call call, std::size_t n = 0) {
    return fault.n > 0 && fault.answer.error && fault.call == call && (n == 0 || n == fault.n);
}

bool isInterruption(const Fault& fault) {
    return fault.answer.error == EINTR;
}

} // namespace

// No part of a file is ever left: the old file stands, or the new one, or, after a read or a write
// that failed, none.
TEST_F(FileFaults, InCopying) {
    trial.operation = [&] { result = text(zeOS::fileCopy(at("new"), at("old"), true)); };
    trial.check = [&](const Fault& fault) {
        std::string expected;
        std::string target = content;
        bool targetStays = true;
        if (failed(fault, onStat, 1)) {
            expected = systemError(2, fault);
            target = "old";
        } else if (failed(fault, onOpen) && !isInterruption(fault)) {
            expected = fault.n == 1 ? "1: Can't open " + folder.path("new") + " for reading"
                                    : "1: Can't create " + folder.path("old");
            target = "old";
        } else if ((failed(fault, onRead) || failed(fault, onWrite)) && !isInterruption(fault)) {
            expected = "1: Error reading file " + folder.path("new") + ".";
            targetStays = false;
        }
        EXPECT_EQ(result, expected);
        EXPECT_EQ(isThere("old"), targetStays);
        EXPECT_EQ(folder.read("old"), targetStays ? target : "");
        EXPECT_EQ(folder.read("new"), content);
    };
    tryEverything("open close read write stat");
}

TEST_F(FileFaults, InMoving) {
    trial.operation = [&] { result = text(zeOS::fileMove(at("new"), at("d/new"), false)); };
    trial.check = [&](const Fault& fault) {
        // Wherever a fault strikes, one complete file is left; a success may leave two.
        const bool moved = result.empty();
        EXPECT_EQ(folder.read(moved ? "d/new" : "new"), content);
        EXPECT_EQ(isThere("d/new"), moved);
        EXPECT_EQ(isThere("new"), !moved || failed(fault, onUnlink));
        EXPECT_TRUE(moved || fault.n > 0);
    };
    tryEverything("open close read write unlink stat");
}

TEST_F(FileFaults, InRenamingAndDeleting) {
    std::string deleted;
    trial.operation = [&] {
        result = text(zeOS::fileRename(at("new"), at("old")));
        deleted = text(zeOS::fileDelete(at("old")));
    };
    trial.check = [&](const Fault& fault) {
        const bool notRenamed = failed(fault, onRename);
        const bool notDeleted = failed(fault, onUnlink);
        EXPECT_EQ(result, notRenamed ? "6: Unkown system error." : "");
        EXPECT_EQ(deleted, notDeleted ? systemError(1, fault) : "");
        EXPECT_EQ(folder.read("new"), notRenamed ? content : "");
        EXPECT_EQ(folder.read("old"), notDeleted ? content : "");
    };
    tryEverything("rename unlink");
}

TEST_F(FileFaults, InLooking) {
    bool exists = false;
    bool isWritable = false;
    zeOS::FileStatus status;
    trial.operation = [&] {
        exists = zeOS::doesFileExist(at("old"));
        isWritable = zeOS::isFileWritable(at("old"));
        result = text(File::query(at("old"), status));
    };
    trial.check = [&](const Fault& fault) {
        const bool noStat = failed(fault, onStat);
        const bool noAccess = failed(fault, onAccess);
        EXPECT_EQ(exists, !(noStat && fault.n == 1));
        EXPECT_EQ(isWritable, !(noStat && fault.n == 2) && !(noAccess && fault.n == 1));
        EXPECT_EQ(result, noStat && fault.n == 3 ? systemError(4, fault) : "");
        EXPECT_EQ(status.isReadable(), status.exists() && !(noAccess && fault.n == 2));
        EXPECT_EQ(status.isWritable(), status.exists() && !(noAccess && fault.n == 3));
    };
    tryEverything("stat access");
}

TEST_F(FileFaults, InWritingAndReadingAStream) {
    std::string readBack;
    std::string bytes;
    trial.operation = [&] {
        File file(at("old"));
        char block[8];
        unsigned long done = 7;
        result = text(file.open(File::ModeWrite)) + ";";
        result += text(file.write("new", 3, &done)) + ";";
        result += std::to_string(done) + text(file.close());
        readBack = text(file.open(File::ModeRead)) + ";";
        readBack += text(file.read(block, 8, &done)) + ";";
        bytes.assign(block, done);
        file.close();
    };
    trial.check = [&](const Fault& fault) {
        const bool shortCount = fault.n && !fault.answer.error;
        std::string written = ";;3";
        if (failed(fault, onFopen, 1))
            written = ioError + ";" + ioError + ";08: File is not open";
        else if (fault.n && fault.call == onFwrite)
            written = ";" + ioError + (shortCount ? ";1" : ";0");
        EXPECT_EQ(result, written); // and nothing of a close that fails
        std::string read = ";3: End Of File;";
        std::string expected = folder.read("old");
        if (failed(fault, onFopen, 2)) {
            read = ioError + ";" + ioError + ";";
            expected = "";
        } else if (fault.n && fault.call == onFread) {
            read = ";;"; // a success with a short count
            expected = shortCount ? "n" : "";
        }
        EXPECT_EQ(readBack, read);
        EXPECT_EQ(bytes, expected);
    };
    tryEverything("fopen fread fwrite fclose");
}

// The copies of handles lose what the closes do not say, a short or an empty target among it; but
// they end, close what they opened, and never touch the source.
TEST_F(FileFaults, InCopyingATree) {
    trial.prepare = [this, prepare = trial.prepare] {
        prepare();
        makeFolder("d/e");
        folder.write("d/e/a", content);
        folder.write("d/b", content);
    };
    trial.operation = [&] {
        File source(at("d"));
        File copy(at("copy"));
        result = text(source.copyTo(copy));
    };
    trial.check = [&](const Fault& fault) {
        EXPECT_TRUE(result.empty() || fault.n > 0);
        EXPECT_EQ(folder.read("d/e/a"), content);
        EXPECT_EQ(folder.read("d/b"), content);
        if (fault.n == 0) {
            EXPECT_EQ(folder.read("copy/e/a"), content);
            EXPECT_EQ(folder.read("copy/b"), content);
        }
        // In the order of the disk: which entry it hits is open, not what it says.
        if (failed(fault, onMkdir)) {
            EXPECT_EQ(result, ioError);
        }
    };
    tryEverything("fopen fread fwrite fclose mkdir opendir readdir stat");
}

TEST_F(FileFaults, InMovingAHandle) {
    trial.operation = [&] {
        File source(at("new"));
        File target(at("old"));
        result = text(source.moveTo(target));
    };
    trial.check = [&](const Fault& fault) {
        // A rename that fails is made good by a copy.
        const bool queryFailed = failed(fault, onStat, 1);
        EXPECT_EQ(result, queryFailed ? systemError(4, fault) : "");
        EXPECT_EQ(folder.read("old"), queryFailed ? "old" : content);
        EXPECT_EQ(isThere("new"), queryFailed);
    };
    tryEverything("rename stat access");
}

TEST_F(FileFaults, InDeletingATree) {
    std::string deep = "d"; // so that directories are closed on the way down, and opened again
    for (int i = 0; i < 18; ++i)
        deep += "/e";
    trial.prepare = [this, deep, prepare = trial.prepare] {
        prepare();
        makeFolder(deep);
        folder.write(deep + "/a", content);
        folder.write("d/b", content);
        makeFolder("outside");
        folder.write("outside/kept", content);
        link("../outside", "d/link");
    };
    trial.operation = [&] { result = text(File(at("d")).deleteSelf(File::DeleteRecursive)); };
    trial.check = [&](const Fault& fault) {
        EXPECT_EQ(result.empty(), !isThere("d"));
        EXPECT_TRUE(result.empty() || fault.n > 0);
        EXPECT_TRUE(result.empty() || result == ioError);
        EXPECT_EQ(folder.read("outside/kept"), content); // not followed, whatever fails
    };
    tryEverything("openat unlinkat rmdir fdopendir readdir stat fstat");
}

TEST_F(FileFaults, InMakingDirectories) {
    IString temporary;
    trial.operation = [&] {
        result = text(File(at("d/a/b/c/e")).makeDirectoryAll());
        File beside(at("d/x"));
        result += ";" + text(beside.makeTempDirectory());
        temporary = beside.getFullName();
    };
    trial.check = [&](const Fault& fault) {
        // Four calls for the path, and up to three attempts for the temporary directory. A stat
        // that fails looks like a directory that is not there, which others then find.
        std::string expected = ";";
        if (failed(fault, onMkdir) && fault.n <= 4)
            expected = ioError + ";";
        else if (failed(fault, onStat) && fault.n == 5)
            expected = "2: File Exists;";
        EXPECT_EQ(result, expected);
        EXPECT_EQ(isThere("d/a/b/c/e"), expected == ";");
        EXPECT_TRUE(std::filesystem::is_directory(temporary.asUTF8()));
    };
    tryEverything("mkdir stat");
}

TEST_F(FileFaults, InOpeningATemporaryFile) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    trial.operation = [&] {
        File file("a.b");
        result = text(file.openTemp(File::ModeWrite));
        EXPECT_EQ(file.isOpen(), result.empty());
        file.close();
    };
    trial.check = [&](const Fault& fault) {
        const bool noFile = failed(fault, onMkostemp) || failed(fault, onFdopen);
        EXPECT_EQ(result, noFile ? ioError : "");
    };
    tryEverything("fdopen fclose mkostemp");
    // Names that are taken are tried again, ten times in all.
    const struct {
        std::size_t attempts;
        const char* result;
    } rows[] = {{1, ""}, {9, ""}, {10, "2: File Exists"}};
    for (const auto& row : rows) {
        trial.prepare();
        SystemFaults faults(SystemFaults::onMkostemp,
                            std::vector<SystemFaults::Answer>(row.attempts, {EEXIST}));
        trial.operation();
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(faults.calls(), std::min<std::size_t>(row.attempts + 1, 10));
    }
    std::filesystem::current_path(before);
}

TEST_F(FileFaults, InChangingTheCurrentDirectory) {
    using zeOS::Filename;
    const Filename before = Filename::getCwd();
    trial.operation = [&] {
        result = Filename(at("d")).setCwd() ? Filename::getCwd().path().asUTF8() : "no";
    };
    trial.check = [&](const Fault& fault) {
        const bool notChanged = failed(fault, onChdir);
        const bool notTold = failed(fault, onGetcwd);
        EXPECT_EQ(result, notChanged ? "no" : notTold ? "" : folder.path("d"));
        EXPECT_TRUE(before.setCwd());
    };
    tryEverything("getcwd chdir");
    EXPECT_FALSE(Filename(IString(wchar_t(0x80000000))).setCwd()) << "no such name in UTF-8";
}

TEST_F(FileFaults, InReadingADirectoryAndTheSizeOfAVolume) {
    std::vector<IString> names;
    std::string volume;
    trial.operation = [&] {
        result = text(File(at("")).readDir(names, true));
        volume = text(zeOS::Filesystem(at("")).stat());
    };
    trial.check = [&](const Fault& fault) {
        EXPECT_EQ(result, failed(fault, onStat) ? "10: Resource is not a directory" : "");
        std::size_t expected = 5;
        if (failed(fault, onOpendir))
            expected = 0;
        else if (failed(fault, onReaddir))
            expected = fault.n - 1; // ends there, without a word
        if (!failed(fault, onStat)) {
            EXPECT_EQ(names.size(), expected);
        }
        // The text is that of -1, never of the reason.
        EXPECT_EQ(volume, failed(fault, onStatvfs)
                              ? "1: Filesystem::stat(): stat failed: Unknown error -1"
                              : "");
    };
    tryEverything("opendir readdir stat statvfs");
}
