// SPDX-License-Identifier: MIT

// Runs the examples of the public headers in a folder of their own, so that they may write files by
// plain names.

#include <stdlib.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::string folder =
        (std::filesystem::temp_directory_path() / "zeBaseExamples.XXXXXX").string();
    if (!mkdtemp(folder.data()))
        return 1;
    std::filesystem::current_path(folder);
    const int failed = RUN_ALL_TESTS();
    std::filesystem::remove_all(folder);
    return failed;
}
