// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileHash.h"

#include <cerrno>
#include <string>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Support/FaultTrial.h"

#include "OS/files/FileFixture.h"

namespace {

using zeOS::File;

class FileHash : public FileFixture {
protected:
    /// The digest of a file in the folder, or "error N".
    std::string hash(const std::string& name, const std::string& key = "secret") const {
        zeString::CString digest("what was here before");
        const int code = zeOS::CreateFileHash(at(name), key.data(), key.size(), digest).code();
        if (code == 0)
            return digest.asChar();
        EXPECT_EQ(digest.length(), 0u);
        return "error " + std::to_string(code);
    }

    static std::string pattern(std::size_t size) {
        std::string text(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            text[i] = static_cast<char>(i % 251);
        return text;
    }
};

const std::string helloHash = "e19a01a7041069f52dbdaa441204a9de4ac911ae4033f9d461013f88839db85e";

} // namespace

// The digests come from another implementation of HMAC, over the bytes that the header describes.
// That the folder has another name each time is no matter.
TEST_F(FileHash, CoversNameLengthAndContentAsDescribed) {
    const struct {
        const char* name;
        std::string content;
        std::string key;
        std::string digest;
    } cases[] = {
        {"notes.txt", "hello", "secret", helloHash},
        {"notes.txt", "hello", std::string(1, '\0'),
         "989e0f3cdd7e3f93a75905664e3bc20174757e99527f5ca5cddd8af2a2fd5f84"},
        {"empty", "", "secret", "51c4c4bc0c49d40ee0a81d44b8b4a4581822e625ebf0d54e19807e2e3d0d0310"},
        {"Sch\u00F6n \u65E5", "hello", "secret",
         "bf0bf5959f5a571ca30dc94735a9bcbcbaad8ad1c60ae6d619903587f285deab"},
        // Around the size of the blocks that are read.
        {"big", pattern(65536), std::string(100, 'k'),
         "251258f745e195250f5cc6aa362890dc7502535b71feb8e0666d360c94be3542"},
        {"big", pattern(65537), std::string(100, 'k'),
         "c7b712e689ff90bd75c137783bd16206ca4b129bba423d029b9457be363beac8"},
        {"big", pattern(200000), std::string(100, 'k'),
         "b5eb62adb69e6dd82ea92510ca62d584992d518625a9a02453268f901eb6b388"},
    };
    for (const auto& test : cases) {
        folder.write(test.name, test.content);
        EXPECT_EQ(hash(test.name, test.key), test.digest) << test.content.size();
    }
}

TEST_F(FileHash, LeavesNoDigestWithAnError) {
    folder.write("notes.txt", "hello");
    EXPECT_EQ(hash("missing"), "error " + std::to_string(File::ErrDoesNotExist));
    EXPECT_EQ(hash(""), "error " + std::to_string(File::ErrNotFile));
    EXPECT_EQ(hash("notes.txt", ""), "error " + std::to_string(File::ErrAuthenticationFailed));
    zeString::CString digest("before");
    EXPECT_EQ(zeOS::CreateFileHash(zeOS::Filename(L"/dev/null"), nullptr, 6, digest).code(),
              File::ErrAuthenticationFailed);
    EXPECT_EQ(digest.length(), 0u);
}

TEST_F(FileHash, NeverTakesAPartForTheWhole) {
    folder.write("notes.txt", "hello");
    std::string result;
    FaultTrial trial;
    trial.operation = [&] { result = hash("notes.txt"); };
    trial.check = [&](const Fault& fault) {
        // A fault that does no harm may pass: a short read, or a folder test that fails.
        const bool readFails = fault.call == SystemFaults::onFread && fault.answer.error != 0;
        const bool mayFail = fault.n > 0 && fault.answer.error != 0;
        EXPECT_TRUE((result == helloHash && !(readFails && fault.n == 1)) ||
                    (mayFail && result == "error " + std::to_string(File::ErrIO)))
            << result;
    };
    trial.runAll();
    trial.report("digest of a file");
}

TEST(EqualFileHash, ComparesWholeDigestsOnly) {
    const std::string digest = helloHash;
    const auto equal = [&](const std::string& other) {
        return zeOS::EqualFileHash(digest.c_str(), other.c_str()) &&
               zeOS::EqualFileHash(other.c_str(), digest.c_str());
    };
    EXPECT_TRUE(equal(digest));
    for (const std::string& other :
         {"f" + digest.substr(1), digest.substr(0, 63) + "f", digest.substr(0, 63), digest + "0"})
        EXPECT_FALSE(equal(other));
    EXPECT_FALSE(zeOS::EqualFileHash("", ""));
    EXPECT_FALSE(zeOS::EqualFileHash(digest.substr(1).c_str(), digest.substr(1).c_str()));
}
