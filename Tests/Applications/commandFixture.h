// SPDX-License-Identifier: MIT

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Support/TempFolder.h"

#include "Shared/output.h"

/// A file without a name that a stream of messages prints to.
class PrintedText {
public:
    PrintedText() : file_(memfd_create("printed", MFD_CLOEXEC)) {}

    zeString::IString path() const {
        return ("/proc/self/fd/" + std::to_string(file_.get())).c_str();
    }

    /// What was printed since the last call, found out without any call that tests let fail.
    std::string take() const {
        std::string text;
        char buffer[4096];
        for (ssize_t size = 0; (size = pread(file_.get(), buffer, sizeof buffer, taken_)) > 0;
             taken_ += size)
            text.append(buffer, static_cast<std::size_t>(size));
        return text;
    }

private:
    zeUtil::Descriptor file_;
    mutable off_t taken_ = 0;
};

/// Runs a program within this process, in a folder of its own.
template<int (*program)(const std::vector<std::string>&)>
class Command : public testing::Test {
protected:
    struct Result {
        int code;
        std::string out;
        std::string err;
    };

    Command() {
        std::setlocale(LC_CTYPE, "C.UTF-8");
        app::results().open(out_.path(), true);
        app::messages().open(err_.path(), true);
    }
    ~Command() override {
        app::results().close();
        app::messages().close();
        std::setlocale(LC_CTYPE, "C");
    }

    Result run(const std::vector<std::string>& arguments) const {
        const int code = program(arguments);
        return {code, out_.take(), err_.take()};
    }

    std::string path(const std::string& name) const { return folder_.path(name); }

    /// Runs the words of a line; "@name" is a file in the folder.
    Result command(const std::string& line) const {
        std::istringstream words(line);
        std::vector<std::string> arguments;
        for (std::string word; words >> word;)
            arguments.push_back(word[0] == '@' ? path(word.substr(1)) : word);
        return run(arguments);
    }

    /// Whatever --help describes, the man page describes as well, and nothing else.
    void expectSameOptionsIn(const std::string& manual) const {
        const std::string help = command("--help").out;
        EXPECT_THAT(help, testing::Not(testing::ContainsRegex("[^\n]{81}"))); // fits on a terminal
        const std::string page =
            std::regex_replace(folder_.read(manual), std::regex(R"(\\-)"), "-");
        const std::set<std::string> described = matches(help, "\n  -([a-z-]+)");
        EXPECT_EQ(matches(page, "[^A-Za-z/]-([a-z][a-z-]*)"), described);
        EXPECT_GE(described.size(), 7U);
    }

    /// All that the group of the pattern matches.
    static std::set<std::string> matches(const std::string& text, const char* pattern) {
        const std::regex expression(pattern);
        const std::sregex_token_iterator first(text.begin(), text.end(), expression, 1);
        return {first, std::sregex_token_iterator()};
    }

    /// Sorted; of the folder, or of one in it.
    std::vector<std::string> filesInFolder(const std::string& name = {}) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path(name)))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    TempFolder folder_;
    PrintedText out_;
    PrintedText err_;
};
