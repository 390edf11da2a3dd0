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

/// Adds the text in pieces of the given size.
std::string sha256(const std::string& text, std::size_t piece) {
    zeOS::Sha256 digest;
    for (std::size_t at = 0; at < text.size(); at += piece)
        digest.add(text.data() + at, std::min(piece, text.size() - at));
    return hex(digest.finish());
}

} // namespace

// The examples of FIPS 180-4 and its companion pages, and the lengths around the padding's block.
TEST(Sha256, GivesThePublishedDigestsWhateverThePieces) {
    const struct {
        std::string text;
        const char* digest;
    } cases[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmn"
         "hijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu",
         "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1"},
        {std::string(1000000, 'a'),
         "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
        {std::string("\xbd", 1),
         "68325720aabd7c82f30f554b313d0570c95accbb7dc4b5aae11204c08ffe732b"},
        {std::string(55, '\0'), "02779466cdec163811d078815c633f21901413081449002f24aa3e80f0b88ef7"},
        {std::string(56, '\0'), "d4817aa5497628e7c77e6b606107042bbba3130888c5f47a375e6179be789fbb"},
        {std::string(57, '\0'), "65a16cb7861335d5ace3c60718b5052e44660726da4cd13bb745381b235a1785"},
        {std::string(64, '\0'), "f5a5fd42d16a20302798ef6ed309979b43003d2320d9f0e8ea9831a92759fb4b"},
        {std::string(1000, 'A'),
         "c2e686823489ced2017f6059b8b239318b6364f6dcd835d0a519105a1eadd6e4"},
    };
    for (const auto& test : cases)
        for (const std::size_t piece : {3u, 64u, 1000000u})
            EXPECT_EQ(sha256(test.text, piece), test.digest) << test.text.size() << ' ' << piece;
}

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
