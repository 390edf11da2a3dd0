// SPDX-License-Identifier: MIT

#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Support/TempFolder.h"

/// A folder in which the program frameProbe runs.
class Probe : public testing::Test {
protected:
    using Texts = std::vector<std::string>;

    /// What it prints, started in the folder as `name` with `arguments` behind it, and with
    /// `environment` alone. Where its file lies does not matter.
    std::string ask(const std::string& name, Texts arguments, Texts environment = {}) const {
        arguments.insert(arguments.begin(), name);
        int output[2];
        EXPECT_EQ(pipe2(output, O_CLOEXEC), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(output[1], STDOUT_FILENO);
            if (chdir(folder.path().c_str()) == 0)
                execve(FRAME_PROBE, pointers(arguments).data(), pointers(environment).data());
            _exit(127);
        }
        close(output[1]);
        std::string text;
        char block[4096];
        for (ssize_t n; (n = read(output[0], block, sizeof block)) > 0;)
            text.append(block, static_cast<std::size_t>(n));
        close(output[0]);
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        return text;
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
