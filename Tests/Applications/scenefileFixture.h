// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Applications/commandFixture.h"
#include "command/command.h"

class Scenefile : public Command<scenefile::run> {
protected:
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
