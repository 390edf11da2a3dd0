// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileOperations.h"

#include <gtest/gtest.h>

#include "OS/files/FileFixture.h"

using zeOS::File;
using zeString::IString;

namespace {

class FileOperations : public FileFixture {
protected:
    /// What a message says of an entry.
    std::string full(const std::string& entry) const { return folder.path(entry); }
};

} // namespace

TEST_F(FileOperations, CopyOnlyOverWhatMayBeReplaced) {
    const std::string noRoom = "1: Error reading file " + full("a") + "."; // a write failed
    const struct {
        const char* from;
        const char* to;
        bool overwrite;
        std::string result;
        std::string target; // afterwards; "" if it is no file any more, or was none
    } rows[] = {
        {"missing", "b", true, "2: No such file or directory", "old"},
        {"loop", "b", true, "2: Too many levels of symbolic links", "old"},
        {"a", "b", false,
         "3: File " + full("b") + " exists, and 'overwrite' flag is not specified.", "old"},
        {"a", "link", true, "", "new"}, // through it
        {"a", "new", false, "", "new"},
        {"a", "hard", true, "5: Can't copy " + full("a") + " to itself.", "new"},
        {"soft", "a", true, "5: Can't copy " + full("soft") + " to itself.", "new"},
        {"a", "d", true, "4: Qualified destination file " + full("d") + " is a directory.", ""},
        {"a", "no/b", true, "1: Can't create " + full("no/b"), ""},
        {"d", "b", true, "1: Error reading file " + full("d") + ".", ""},    // the old b is lost
        {"a", "full", true, "1: Error reading file " + full("a") + ".", ""}, // and the link
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.from + std::string(" to ") + row.to);
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
            std::filesystem::remove_all(entry);
        folder.write("a", "new");
        folder.write("b", "old");
        makeFolder("d");
        std::filesystem::create_hard_link(full("a"), full("hard"));
        link("a", "soft");
        link("b", "link");
        link("loop", "loop");
        link("/dev/full", "full");
        EXPECT_EQ(text(zeOS::fileCopy(at(row.from), at(row.to), row.overwrite)), row.result);
        EXPECT_EQ(std::filesystem::is_directory(full(row.to)) ? "" : folder.read(row.to),
                  row.target);
        EXPECT_EQ(folder.read("a"), "new");
    }
    EXPECT_FALSE(isThere("full"));
}

TEST_F(FileOperations, RenameInOneStepOnlyWithinADirectory) {
    makeFolder("d/e");
    folder.write("b", "new");
    EXPECT_EQ(text(zeOS::fileRename(at("d"), at("f"))), ""); // directories as well
    EXPECT_TRUE(isThere("f/e"));
    // Every failure has this text: what rename() returns is not what is looked for.
    EXPECT_EQ(text(zeOS::fileRename(at("a").asWChar(), at("b").asWChar())),
              "6: Unkown system error.");
    EXPECT_EQ(text(zeOS::fileRename(at("b"), at("f"))), "6: Unkown system error.");
    EXPECT_EQ(text(zeOS::fileRename(at("f"), at("f/e"))),
              "4: Qualified destination file " + full("f/e") + " is a directory.");

    // To another directory it is a copy, as it is to the same one by another text.
    EXPECT_EQ(text(zeOS::fileRename(at("b"), at("f/b"))), "");
    const ino_t copied = inode("f/b");
    std::filesystem::create_hard_link(full("f/b"), full("hard")); // so that its number stays taken
    EXPECT_EQ(text(zeOS::fileRename(at("f/b"), at("f/./c"))), "");
    EXPECT_NE(inode("f/c"), copied);
    EXPECT_EQ(text(zeOS::fileMove(at("f/c").asWChar(), at("hard").asWChar(), false)),
              "3: File " + full("hard") + " exists, and 'overwrite' flag is not specified.");
    EXPECT_TRUE(isThere("f/c"));
}
