// SPDX-License-Identifier: MIT

#include <regex>

#include "scenefileFixture.h"

using testing::AllOf;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

/// With a normal that is not of unit length.
const char* const triangle = "v 1 0 0\nv 1 2 0\nv 1 0 3\nvn 2 0 0\nf 1//1 2//1 3//1\n";

class Transform : public Scenefile {
protected:
    /// What `model` exports as, behind the comment.
    std::string transformed(const std::string& model, const std::string& options) const {
        const std::string exported = exportText(transformText(model, "binary", options));
        return exported.substr(exported.find('\n') + 1);
    }
};

} // namespace

/// The numbers are exact, so that each case states its result.
TEST_F(Transform, ActsInTheOrderOfItsOptions) {
    const std::pair<std::string, const char*> cases[] = {
        {"--translate 10,20,-30",
         "v 11 20 -30\nv 11 22 -30\nv 11 20 -27\nvn 2 0 0\nf 1//1 2//1 3//1\n"},
        {"--scale 4,1,0.5", "v 4 0 0\nv 4 2 0\nv 4 0 1.5\nvn 1 0 0\nf 1//1 2//1 3//1\n"},
        {"--rotate 90,x", "v 1 0 0\nv 1 0 2\nv 1 -3 0\nvn 1 0 0\nf 1//1 2//1 3//1\n"},
        {"--rotate 90,y", "v 0 0 -1\nv 0 2 -1\nv 3 0 -1\nvn 0 0 -1\nf 1//1 2//1 3//1\n"},
        {"--rotate 90,0,5,0", "v 0 0 -1\nv 0 2 -1\nv 3 0 -1\nvn 0 0 -1\nf 1//1 2//1 3//1\n"},
        {"--rotate 450,0,0,1e-300", "v 0 1 0\nv -2 1 0\nv 0 1 3\nvn 0 1 0\nf 1//1 2//1 3//1\n"},
        {"--rotate -180,0,0,-1e300",
         "v -1 0 0\nv -1 -2 0\nv -1 0 3\nvn -1 0 0\nf 1//1 2//1 3//1\n"},
        {"--translate 1,0,0 --rotate 90,z",
         "v 0 2 0\nv -2 2 0\nv 0 2 3\nvn 0 1 0\nf 1//1 2//1 3//1\n"},
        {"--rotate 90,z --translate 1,0,0",
         "v 1 1 0\nv -1 1 0\nv 1 1 3\nvn 0 1 0\nf 1//1 2//1 3//1\n"},
        // mirrors
        {"--scale -1,1,1", "v -1 0 0\nv -1 2 0\nv -1 0 3\nvn -1 0 0\nf 1//1 3//1 2//1\n"},
        {"--scale -1", "v -1 0 0\nv -1 -2 0\nv -1 0 -3\nvn -1 0 0\nf 1//1 3//1 2//1\n"},
    };
    const std::regex step("--[^ ]+ [^ ]+");
    for (const auto& [options, model] : cases) {
        EXPECT_EQ(transformed(triangle, options), model) << options;
        importText(triangle, "text");
        for (std::sregex_iterator match(options.begin(), options.end(), step), end; match != end;
             ++match)
            EXPECT_EQ(command("transform @made " + match->str()).code, 0);
        EXPECT_THAT(exportText(folder_.read("made")), EndsWith(model)) << "one by one";
    }
}

/// The plane 3 x + 8 y = 0 becomes 3 x + 4 y = 0.
TEST_F(Transform, KeepsNormalsUpright) {
    EXPECT_THAT(transformed("v 0 0 0\nvn 3 8 0\np 1\n", "--scale 1,2,1"),
                AllOf(HasSubstr("\nvn 0.6"), HasSubstr(" 0.8 0\n")));
}

TEST_F(Transform, KeepsNormalsOfExtremeModelsUsable) {
    const char* model = "v 0 0 0\nvn 1e300 0 0\nvn 0 1e-320 0\nvn 0 0 0\nvn 0 0 -4\np 1\n";
    EXPECT_THAT(transformed(model, "--scale 1e-6,1e90,1e90"),
                HasSubstr("vn 1 0 0\nvn 0 1 0\nvn 0 0 0\nvn 0 0 -1\n"));
}

/// Nodes below the root have transforms too, and share vertices.
TEST_F(Transform, AppliesTheTransformsDownTheTree) {
    const char* model = "v 1 0 0 1 0 0\nv 0 1 0 0 1 0\nv 0 0 1 0 0 1\nvn 0 0 1\n"
                        "o a\nl 1 2\nf 1//1 2//1 2//1\no b\nl 2 1\nf 2//1 1//1 1//1\no c\np 1\n";
    std::string document = transformText(model, "text", "--translate 0,0,5");
    const std::size_t b = document.find("] \n  [ ] }", document.find("] \n  [ ] }") + 1);
    document.insert(b + 9, "\n  [ 0 1 0 -1 0 0 0 0 -2 10 0 0 ] "); // turns, mirrors and moves
    EXPECT_EQ(exportText(document),
              "# written by scenefile\n"
              "v 1 0 5 1 0 0\nv 0 1 5 0 1 0\nv 0 0 6 0 0 1\nv 9 0 5 0 1 0\nv 10 1 5 1 0 0\n"
              "vn 0 0 1\nvn 0 0 -1\n"
              "o a\nl 1 2\nf 1//1 2//1 2//1\no b\nl 4 5\nf 4//2 5//2 5//2\no c\np 1\n");
    EXPECT_THAT(command("show @out.zd").out,
                AllOf(HasSubstr("transform (1 0 0) (0 1 0) (0 0 1) (0 0 5)\n"
                                "bounds (0 0 5) to (10 1 5)\n"),
                      HasSubstr("  node b: mesh of 2 runs, bounds (9 0 5) to (10 1 5)\n"
                                "    transform (0 1 0) (-1 0 0) (0 0 -2) (10 0 0)\n")));
}

TEST_F(Transform, RefusesWhatCannotBeTakenBackAndLeavesTheDocument) {
    const std::string document = importText("v 1e300 0 0\np 1\n", "binary");
    const std::pair<std::string, const char*> cases[] = {
        {"--scale 1e-13", "no inverse"},
        {"--scale 1e60 --scale 1e60", "too large"},
        {"--translate 0,0,1e101", "too large"},
        {"--scale 1e10", "makes coordinates too large"},
    };
    for (const auto& [options, message] : cases) {
        const Result result = command("transform @made " + options);
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.err, HasSubstr(message));
        EXPECT_EQ(result.out, "");
    }
    EXPECT_EQ(folder_.read("made"), document);
    EXPECT_THAT(filesInFolder(), ElementsAreArray({"in.obj", "made"}));
}
