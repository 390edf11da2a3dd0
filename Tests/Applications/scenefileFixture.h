// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <clocale>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TempFolder.h"

#include "Applications/printedText.h"
#include "Shared/output.h"
#include "command/command.h"

/// Runs scenefile within this process, in a folder of its own.
class Scenefile : public testing::Test {
protected:
    struct Result {
        int code;
        std::string out;
        std::string err;
    };

    Scenefile() {
        std::setlocale(LC_CTYPE, "C.UTF-8");
        app::results().open(out_.path(), true);
        app::messages().open(err_.path(), true);
    }
    ~Scenefile() override {
        app::results().close();
        app::messages().close();
        std::setlocale(LC_CTYPE, "C");
    }

    Result run(const std::vector<std::string>& arguments) const {
        const int code = scenefile::run(arguments);
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

    /// The document that `model` makes.
    std::string importText(const std::string& model, const std::string& method,
                           const std::string& options = {}) const {
        folder_.write("in.obj", model);
        const Result result = command("import @in.obj @made --method " + method + " " + options);
        EXPECT_EQ(result.code, 0) << result.err << model;
        return folder_.read("made");
    }

    /// The document that `model` makes, with transforms from options.
    std::string transformText(const std::string& model, const std::string& method,
                              const std::string& options) const {
        importText(model, method);
        const Result result = command("transform @made " + options);
        EXPECT_EQ(result.code, 0) << result.err << options;
        return folder_.read("made");
    }

    /// The model that the document `content` exports, or the message of its refusal.
    std::string exportText(const std::string& content) const {
        folder_.write("out.zd", content);
        const Result result = command("export @out.zd @out.obj");
        return result.code == 0 ? folder_.read("out.obj") : result.err;
    }

    /// What becomes of the document `content`, which lies in the file "damaged".
    Result verify(const std::string& content) const {
        std::filesystem::remove(path("damaged")); // much faster than to overwrite it
        folder_.write("damaged", content);
        return command("verify @damaged");
    }

    std::vector<std::string> filesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    TempFolder folder_;
    PrintedText out_;
    PrintedText err_;
};

/// A model that makes packets of every type, and chunks and sub-packets of every form.
inline constexpr const char* fullModel = R"(mtllib house.mtl
v 0 0 0
v 1 0 0
v 1 1 0.1
v 0 1 -0.001
vt 0 0
vt 1 0.5
vn 0 0 1
p 1
o house
g walls south
usemtl red {brick}
s 3
f 1/1/1 2/2/1 3/1/1
f 1/1/1 2/2/1 3/1/1 4/2/1
g
f 1//1 2//1 3//1
usemtl
s 0
l 1/1 2/2
o empty
o "roof" <1>
usemtl a
f 1 2 3
f 2 3 4
)";
