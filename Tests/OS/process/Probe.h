// SPDX-License-Identifier: MIT

#pragma once

#include <unistd.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TempFolder.h"

/// A folder in which the program frameProbe runs.
class Probe : public testing::Test {
protected:
    using Texts = std::vector<std::string>;

    /// It prints what is `expected`, started in the folder as `name` with `arguments` behind it,
    /// and with `environment` alone. Where its file lies does not matter.
    void ask(const std::string& name, Texts arguments, const std::string& expected,
             Texts environment = {}) const {
        const auto run = [&] {
            arguments.insert(arguments.begin(), name);
            dup2(STDERR_FILENO, STDOUT_FILENO);
            if (chdir(folder.path().c_str()) == 0)
                execve(FRAME_PROBE, pointers(arguments).data(), pointers(environment).data());
        };
        EXPECT_EXIT(run(), testing::ExitedWithCode(0), testing::StrEq(expected)) << name;
    }

    void makeFolder(const std::string& name) const {
        std::filesystem::create_directories(folder.path(name));
    }

    TempFolder folder{TempFolder::memory()};

private:
    static std::vector<char*> pointers(Texts& texts) {
        std::vector<char*> result;
        for (std::string& text : texts)
            result.push_back(text.data());
        result.push_back(nullptr);
        return result;
    }
};
