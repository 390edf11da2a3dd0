// SPDX-License-Identifier: MIT

#include <algorithm>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "Base/OS/files/zeOSSha256Impl.h"

namespace {

std::string hex(const zeOS::Sha256::Digest& digest) {
    std::string text;
    for (const unsigned char byte : digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

} // namespace

// All cases of RFC 4231 but the fifth, which cuts its result off.
TEST(HmacSha256, GivesThePublishedDigests) {
    const struct {
        std::string key;
        std::string text;
        const char* digest;
    } cases[] = {
        {std::string(20, '\x0b'), "Hi There",
         "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
        {"Jefe", "what do ya want for nothing?",
         "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
        {std::string(20, '\xaa'), std::string(50, '\xdd'),
         "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe"},
        {"\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c\x0d\x0e\x0f\x10\x11\x12\x13\x14\x15\x16"
         "\x17\x18\x19",
         std::string(50, '\xcd'),
         "82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b"},
        {std::string(131, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First",
         "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
        {std::string(131, '\xaa'),
         "This is a test using a larger than block-size key and a larger than block-size data. The "
         "key needs to be hashed before being used by the HMAC algorithm.",
         "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2"},
    };
    for (const auto& test : cases) {
        zeOS::HmacSha256 digest(test.key.data(), test.key.size());
        digest.add(test.text.data(), test.text.size());
        EXPECT_EQ(hex(digest.finish()), test.digest) << test.text;
    }
}
