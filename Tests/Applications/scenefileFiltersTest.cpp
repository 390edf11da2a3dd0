// SPDX-License-Identifier: MIT

// Documents that are compressed, encrypted and guarded by a checksum, in every combination.

#include <regex>
#include <string_view>

#include "scenefileFixture.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Bit 0 for the checksum, 1 for the encryption, 2 for the compression.
class Filters : public Scenefile {
protected:
    static std::string words(unsigned int subset) {
        std::string result;
        for (const char* word : {"checksum", "encrypt", "compress"}) {
            if ((subset & 1) != 0)
                result += (result.empty() ? "" : " ") + std::string(word);
            subset >>= 1;
        }
        return result;
    }

    std::string document(unsigned int subset, const std::string& method,
                         const std::string& model) const {
        return importText(model, method,
                          std::regex_replace(words(subset), std::regex("[a-z]+"), "--$&"));
    }

    /// Where the packets begin: behind the at signs of the header and of the list of types.
    static std::size_t packets(const std::string& document) {
        return document.find("\n@\n", document.find("\n@\n") + 1) + 3;
    }

    /// What stands behind the packet that announces the filters.
    static std::size_t body(const std::string& document, const std::string& method,
                            unsigned int subset) {
        const std::size_t rest = method.starts_with("text") ? std::string_view("\" }\n").size() : 1;
        return document.find(words(subset), packets(document)) + words(subset).size() + rest;
    }
};

constexpr const char* smallModel = "v 0 0 0\nv 1 0 0\nv 0 1 0\no a\nf 1 2 3\n";

class Filtered : public Filters, public testing::WithParamInterface<unsigned int> {};

INSTANTIATE_TEST_SUITE_P(Subset, Filtered, testing::Range(1U, 8U));

} // namespace

TEST_P(Filtered, KeepAModelAndAreKeptByATransform) {
    for (const std::string method : {"binary", "text", "binary-debug", "text-debug"}) {
        const std::string made = document(GetParam(), method, fullModel);
        EXPECT_THAT(command("show @made").out,
                    HasSubstr("\nfilters: " + words(GetParam()) + ", " +
                              std::to_string(made.size()) + " bytes in the file\n"));
        const std::string exported = exportText(made);
        EXPECT_EQ(document(GetParam(), method, exported), made);
        for (const char* factor : {"--scale 2", "--scale 0.5"})
            EXPECT_EQ(command(std::string("transform @made ") + factor).code, 0);
        EXPECT_EQ(folder_.read("made"), made);
    }
}

/// The checksum covers whatever stands behind the announcement, and is the first to see it.
TEST_P(Filtered, EndWhereverTheyAreCutAndWhateverByteIsChanged) {
    const bool guarded = (GetParam() & 1) != 0;
    // What is compressed alone may end in bits of no meaning.
    const std::size_t padding = GetParam() == 4 ? 15 : 0;
    for (const std::string method : {"binary", "text-debug"}) {
        const std::string made = document(GetParam(), method, smallModel);
        ASSERT_EQ(verify(made).code, 0);
        ASSERT_EQ(verify(made + "x").code, 1);
        const std::size_t start = body(made, method, GetParam());
        for (std::size_t at = 0; at < made.size(); ++at) {
            const Result cut = verify(made.substr(0, at));
            if (cut.code != 0 || at + padding < made.size()) {
                ASSERT_EQ(cut.code, 1) << at;
                ASSERT_THAT(cut.err, StartsWith("scenefile: " + path("damaged") + ": byte "));
            }
            std::string damaged = made;
            damaged[at] = static_cast<char>(damaged[at] ^ (1 << at % 8));
            const Result result = verify(damaged);
            ASSERT_TRUE(result.code == 0 || result.code == 1) << at;
            ASSERT_EQ(result.err.empty(), result.code == 0) << at;
            if (guarded && at >= start) {
                ASSERT_THAT(result.err, HasSubstr("the checksum is wrong")) << at;
            }
        }
    }
}

TEST_F(Filters, SayWhatIsWrong) {
    const std::string plain = document(0, "text", smallModel);
    const auto message = [&](const char* what, const std::string& with) {
        std::string damaged = plain;
        damaged.replace(damaged.find("@\n{"), 0, "   8 scenefile_filters\n");
        damaged.replace(damaged.find(what), 0, with);
        return verify(damaged).err;
    };
    EXPECT_THAT(message("{ 2 0", "{ 8 0 \"compress\" }\n"), HasSubstr("cannot be expanded"));
    EXPECT_THAT(message("{ 2 0", "{ 8 0 \"encrypt\" }\n"), HasSubstr("cannot be deciphered"));
    EXPECT_THAT(message("{ 2 0", "{ 8 0 \"checksum\" }\n"), HasSubstr("checksum is wrong"));
    EXPECT_THAT(message("{ 1 0", "{ 8 0 \"compress\" }\n"), HasSubstr("not the first packet"));
    for (const char* announcement :
         {"{ 8 0 \"\" }\n", "{ 8 0 }\n", "{ 8 0 \" }\n", "{ 8 1 5 \"compress\" }\n",
          "{ 8 0 \"compress checksum\" }\n", "{ 8 0 \"checksum checksum\" }\n"})
        EXPECT_THAT(message("{ 2 0", announcement), HasSubstr("announces no filters"))
            << announcement;
}
