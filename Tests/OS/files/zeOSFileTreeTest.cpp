// SPDX-License-Identifier: MIT

// Directories with all that they hold: deleted while somebody else exchanges their parts, deeper
// than the longest path, and with entries that cannot be copied.

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFile.h"
#include "Base/Utility/zeUtilDescriptor.h"

#include "OS/files/FileFixture.h"
#include "OS/files/OtherProcess.h"

using zeOS::File;

namespace {

class FileTree : public FileFixture {
protected:
    /// Makes a chain of directories with a file at its end, which may lie deeper than any path
    /// reaches.
    void makeChain(const std::string& top, int depth) const {
        zeUtil::Descriptor at(open(folder.path().c_str(), O_RDONLY | O_CLOEXEC));
        const auto enter = [&at](const char* name) {
            mkdirat(at.get(), name, 0777);
            at = zeUtil::Descriptor(openat(at.get(), name, O_RDONLY | O_CLOEXEC));
        };
        enter(top.c_str());
        for (int i = 0; i < depth; ++i)
            enter("d");
        const zeUtil::Descriptor file(
            openat(at.get(), "leaf", O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
        ASSERT_TRUE(file.isOpen());
    }

    /// Runs `action` on a thread with a stack of 128 KiB.
    static zeUtil::Error onSmallStack(const std::function<zeUtil::Error()>& action) {
        pthread_attr_t before;
        pthread_attr_t small;
        pthread_getattr_default_np(&before);
        pthread_attr_init(&small);
        EXPECT_EQ(pthread_attr_setstacksize(&small, 1 << 17), 0);
        pthread_setattr_default_np(&small);
        zeUtil::Error result(-1, "not run");
        std::thread([&] { result = action(); }).join();
        pthread_setattr_default_np(&before);
        pthread_attr_destroy(&small);
        return result;
    }
};

} // namespace

TEST_F(FileTree, IsDeletedWithoutLeavingItWhileADirectoryIsExchangedWithALink) {
    makeFolder("outside");
    folder.write("outside/kept", "content");
    link(folder.path("outside"), "link");
    const std::string directory = folder.path("tree/directory");
    const std::string other = folder.path("link");
    const OtherProcess exchanging(
        [&] { renameat2(AT_FDCWD, directory.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE); });
    repeatForAWhile([&] {
        makeFolder("tree/directory");
        folder.write("tree/directory/a", "");
        File(at("tree")).deleteSelf(File::DeleteRecursive);
        if (!std::filesystem::is_symlink(other)) {
            std::error_code ignored; // the other process goes on exchanging meanwhile
            std::filesystem::remove_all(other, ignored);
            std::filesystem::create_symlink(folder.path("outside"), other, ignored);
        }
        return isThere("outside/kept");
    });
    EXPECT_EQ(folder.read("outside/kept"), "content");
}

TEST_F(FileTree, IsDeletedAndCopiedAtAnyDepthOnASmallStack) {
    makeChain("tree", 2500); // no path reaches its end
    EXPECT_EQ(text(onSmallStack([&] { return File(at("tree")).deleteSelf(0); })), "");
    EXPECT_FALSE(isThere("tree"));
    constexpr int depth = 500;
    makeChain("tree", depth);
    File copy(at("copy"));
    EXPECT_EQ(text(onSmallStack([&] { return File(at("tree")).copyTo(copy); })), "");
    std::string leaf = "copy";
    for (int i = 0; i < depth; ++i)
        leaf += "/d";
    EXPECT_TRUE(isThere(leaf + "/leaf"));
    for (const char* top : {"tree", "copy"})
        File(at(top)).deleteSelf(0);
}

TEST_F(FileTree, IsDeletedAtAnyDepthWithTwoDescriptors) {
    makeChain("tree", 40);
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const int first = dup(0); // the lowest that is free, in a process without gaps
    close(first);
    const rlimit few = {static_cast<rlim_t>(first) + 2, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const std::string result = text(File(at("tree")).deleteSelf(0));
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(result, "");
    EXPECT_FALSE(isThere("tree"));
}

TEST_F(FileTree, IsCopiedButForEntriesThatAreNeitherFileNorDirectory) {
    makeFolder("tree/sub");
    for (const char* name : {"tree/a", "tree/sub/b", "tree/z"})
        folder.write(name, "content");
    ASSERT_EQ(mkfifo(folder.path("tree/sub/pipe").c_str(), 0666), 0);
    makeFolder("copy");
    ASSERT_EQ(mkfifo(folder.path("copy/z").c_str(), 0666), 0);

    alarm(10); // ends the test, should it wait for somebody at the other end of a pipe
    File copy(at("copy"));
    EXPECT_EQ(text(File(at("tree")).copyTo(copy)), "4: An I/O problem has occurred");
    alarm(0);
    EXPECT_EQ(folder.read("copy/a"), "content");
    EXPECT_EQ(folder.read("copy/sub/b"), "content");
    EXPECT_FALSE(isThere("copy/sub/pipe"));
    EXPECT_TRUE(std::filesystem::is_fifo(folder.path("copy/z")));
}

// Names are bytes to the system; readDir() decodes them, and loses what is no text.
TEST_F(FileTree, KeepsNamesThatBeginWithAByteOrderMark) {
    for (const char* name : {"tree/\xEF\xBB\xBF", "tree/\xEF\xBB\xBFx"}) {
        makeFolder("tree");
        folder.write(name, "marked");
    }
    folder.write("tree/x", "x");
    folder.write("tree/bad\xFF", "");
    File copy(at("copy"));
    EXPECT_EQ(text(File(at("tree")).copyTo(copy)), "");
    EXPECT_EQ(folder.read("copy/\xEF\xBB\xBF"), "marked");
    EXPECT_EQ(folder.read("copy/\xEF\xBB\xBFx"), "marked");
    EXPECT_EQ(folder.read("copy/x"), "x");
    EXPECT_EQ(text(File(at("tree")).deleteSelf(0)), "");
}
