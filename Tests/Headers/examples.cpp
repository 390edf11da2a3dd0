// SPDX-License-Identifier: MIT

// Runs the examples of the public headers in a folder of their own, so that they may write files by
// plain names.

#include "Headers/examples.h"

#include <stdlib.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

class ExampleTest : public testing::Test {
public:
    explicit ExampleTest(void (*example)()) : example_(example) {}

    void TestBody() override { example_(); }

private:
    void (*example_)();
};

} // namespace

bool registerExample(const char* header, int number, void (*example)()) {
    const std::string name = "Example" + std::to_string(number);
    testing::RegisterTest(header, name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [example]() -> testing::Test* { return new ExampleTest(example); });
    return true;
}

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
