// SPDX-License-Identifier: MIT

// Documents from elsewhere, or damaged ones: scenefile must end with a message, and never by a
// signal. Sanitizer builds see errors that have no effect in others.

#include <cmath>
#include <limits>

#include "scenefileFixture.h"

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class Damaged : public Scenefile {
protected:
    /// The document of the full model, with a transform in its root.
    std::string movedDocument(const std::string& method) const {
        return transformText(fullModel, method, "--scale 2,-4,8 --translate 5,6,7");
    }

    /// Refused with the file's name and a place in it.
    void expectRefused(const std::string& content, const std::string& message) const {
        const Result result = verify(content);
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.err,
                    AllOf(StartsWith("scenefile: " + path("damaged") + ": "),
                          AnyOf(HasSubstr("byte "), HasSubstr("packet ")), HasSubstr(message)));
    }
};

class DamagedBy : public Damaged, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Method, DamagedBy,
                         testing::Values("binary", "text", "binary-debug", "text-debug"));

/// What each edit replaces, at the first place that fits, with what, and the message.
const std::tuple<std::string, std::string, std::string> edits[] = {
    // the header and the list of types
    {"^@\n", "^#\n", "byte 0: this is no document"},
    {"1 0 1\n", "1 4 1\n", "by a method that scenefile does not know"},
    {"1 0 1\n", "1 2 1\n", "type mismatch: got: CharArray (31) expected: Reference (72)"},
    {"1 0 1\n", "1 1 0\n", "byte 0: this is no document"},
    {"packetFile_EOF", "packetFile_string", "damaged or cut off"},
    // packets
    {"{ 2 0", "{ 2 2", "neither"},
    {"{ 2 0", "{ 2 1 1", "second scene, or has a reference"},
    {"{ 2 0", "{ 3 0", "no possible reference"},
    {"{ 1 0", "{ 3 1 999 }\n{ 1 0", "no possible reference"},
    {"{ 1 0", "{ 3 1 1 }\n{ 1 0", "that of a packet before it"},
    {"{ 1 0", "{ 6 1 40 \n  [ 3 ] }\n{ 1 0", "no possible reference"},
    {"scenefile_scene", "somebodys_scene", "nothing refers"},
    {"scenefile_group", "somebodys_group", "which no packet defines"},
    // references
    {"[ 1 2 ]", "[ 0 2 ]", "root node is reference 0, which cannot be"},
    {"[ 1 2 ]", "[ 2 2 ]", "root node is reference 2, which is something else"},
    {"[ 1 2 ]", "[ 4 2 ]", "the root node has a parent"},
    // numbers that cannot be
    {"[ 1 3 ]", "[ 2000000000 3 ]", "cannot hold the 2000000000 values"},
    {"5 7 19 ]", "5 7 18 ]", "does not hold as much as"},
    {"0 0 0 1 0 0", "0 0 1e999 1 0 0", "no number, or too large"},
    {"[ ] }\n{ 0", "[ 1 1 1 1 ] }\n{ 0", ""},
    // transforms
    {"[ 2 0 0 0 -4 0 0 0 8 5 6 7 ]", "", ""}, // as before there were any
    {"[ 2 0 0 0 -4 0 0 0 8 5 6 7 ]", "[ ]", ""},
    {"[ 2 0 0 0 -4 0 0 0 8 5 6 7 ]", "[ 2 0 0 0 -4 0 0 0 8 5 6 7 8 ] [ 9 ]", ""},
    {"[ 2 0 0 0 -4 0 0 0 8 5 6 7 ]", "[ 2 0 0 0 -4 0 ]", "transform has no inverse"},
    {"0 8 5 6 7 ]", "0 0 5 6 7 ]", "packet 1 (scenefile_node)"},
    {"[ 9 1 10 ] \n  [ ]", "[ 9 1 10 ] \n  [ ] \n  [ 1 2 3 2 4 6 0 0 1 0 0 0 ]",
     "packet 3 (scenefile_node)"},
    {"[ 9 1 10 ] \n  [ ]", "[ 9 1 10 ] \n  [ ] \n  [ 1e100 0 0 0 1 0 0 0 1 0 0 0 ]",
     "no number, or too large"}, // with the root's
    // what does not fit together
    {"[ 4 4 5 6 7 ]", "[ 5 4 4 5 6 7 ]", "5 children, but there are 5 nodes"},
    {"[ 12 1 13 ]", "[ 12 4 13 ]", "parent is not the root"},
    {"[ 9 1 10 ]", "[ 9 1 8 ]", "nothing refers to what it describes"},
    {"[ 3 0 0 2 6 3 ]", "[ 4 0 0 2 6 3 ]", "no known kind"},
    {"[ 3 0 0 2 6 3 ]", "[ 3 0 0 2 5 3 ]", "do not agree"},
    {"[ 14 15 3 ]", "[ 14 15 -3 ]", "smoothing group is negative"},
    {"[ 3 4 0 1", "[ 2 5 0 1", "an element has 2 corners"},
    {"[ 0 1 2 1 2 3 ]", "[ 0 1 4 1 2 3 ]", "position index 4 is outside the 4"},
    {"[ 0 1 2 0 0 0 ]", "[ 0 1 2 0 0 -1 ]", "normal index -1 is outside the 1"},
    {"\"house\"", "\"ho\nuse\"", "name cannot stand in an OBJ file"},
    {"\"walls\"", "\"wal ls\"", "names cannot stand in an OBJ file"},
};

} // namespace

TEST_P(DamagedBy, RefusesEveryTruncation) {
    const std::string document = movedDocument(GetParam());
    ASSERT_EQ(verify(document).code, 0);
    for (std::size_t size = 0; size < document.size(); ++size) {
        SCOPED_TRACE(size);
        expectRefused(document.substr(0, size), "");
    }
    expectRefused(document + "\n", "behind the end-of-file packet");
}

/// A changed byte may make another sound document; then export must take it as well.
TEST_P(DamagedBy, EndsWhateverByteIsChanged) {
    const std::string document = movedDocument(GetParam());
    for (std::size_t at = 0; at < document.size(); ++at)
        for (int change : {0x01, 0x10, 0x80, 0xFF}) {
            std::string damaged = document;
            damaged[at] = static_cast<char>(damaged[at] ^ change);
            const Result result = verify(damaged);
            ASSERT_TRUE(result.code == 0 || result.code == 1) << at;
            ASSERT_EQ(result.err.empty(), result.code == 0) << at;
            if (result.code == 0 && change == 0x01 && at % 32 == 0) {
                ASSERT_EQ(command("export @damaged @out.obj").code, 0) << at;
                ASSERT_EQ(command("import @out.obj @again").code, 0) << at;
            }
        }
}

TEST_F(Damaged, EndsWhateverStructureATextGains) {
    const std::string document = movedDocument("text");
    for (std::size_t at = document.find('{'); at < document.size(); ++at)
        for (const char* piece : {"{", "}", "[", ">", "\"", "\\"})
            ASSERT_LE(verify(std::string(document).insert(at, piece)).code, 1) << at << piece;
}

TEST_F(Damaged, SaysWhatIsWrong) {
    const std::string document = movedDocument("text");
    for (const auto& [what, with, message] : edits) {
        SCOPED_TRACE(what + " -> " + with);
        const std::size_t at = document.find(what);
        ASSERT_NE(at, std::string::npos);
        const std::string damaged = std::string(document).replace(at, what.size(), with);
        if (message.empty())
            EXPECT_EQ(verify(damaged).code, 0);
        else
            expectRefused(damaged, message);
    }
}

/// A list of types takes no longer than it is long.
TEST_F(Damaged, TakesAnyNumberOfTypes) {
    std::string document = movedDocument("text");
    std::string types;
    for (int i = 8; i < 100000; ++i)
        types += std::to_string(i) + " other" + std::to_string(i) + "\n";
    document.insert(document.find("@\n{"), types);
    EXPECT_EQ(verify(document).code, 0);
    EXPECT_EQ(command("show @damaged").code, 0);
}

/// Only a binary document can hold some of these numbers, and those of others lead out of range.
TEST_F(Damaged, RefusesTransformsThatLeadToNoNumbers) {
    const auto bytes = [](double number) {
        return std::string(reinterpret_cast<const char*>(&number), sizeof number);
    };
    const std::string document = movedDocument("binary");
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double entry : {std::nan(""), -std::nan(""), infinite, -infinite, 1.001e100}) {
        const std::size_t at = document.find(bytes(-4));
        expectRefused(std::string(document).replace(at, 8, bytes(entry)),
                      "packet 1 (scenefile_node)");
    }
    const char* far = "v 1e308 1e308 0\nv 0 0 0\nl 1 2\n";
    const std::string large = transformText(far, "binary", "--scale 0.5");
    const std::size_t at = large.find(bytes(0.5));
    expectRefused(std::string(large).replace(at, 8, bytes(2)), "makes coordinates too large");
    const std::string cancelled = bytes(1e10) + bytes(0) + bytes(0) + bytes(-1e10) + bytes(1);
    expectRefused(std::string(large).replace(at, 40, cancelled), "makes coordinates too large");
}

TEST_F(Damaged, ReadsOnlyFiles) {
    for (const std::string& file : {path(""), path("none"), std::string("/dev/zero")})
        EXPECT_EQ(run({"show", file}).code, 1);
}
