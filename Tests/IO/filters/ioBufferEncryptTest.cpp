// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferEncrypt.h"

#include <gtest/gtest.h>

#include "Base/IO/filters/ioBlockCipherImpl.h"

#include "IO/filters/FilterSupport.h"
#include "IO/formats/PacketFileSupport.h"

namespace {

using namespace std::string_literals;
using ioBlockCipher::Kernel;

constexpr Switch encrypt = &ioBufferedStream::encrypt;

/// Every kernel of this machine.
std::vector<Kernel> kernels() {
    std::vector<Kernel> all{Kernel::plain};
    if (ioBlockCipher::bestKernel() != Kernel::plain)
        all.push_back(ioBlockCipher::bestKernel());
    return all;
}

const std::string block = "sixteen bytes or";
const std::string cipherOfBlock = packets::bytes("7e71e6c15db39f37dc659750d8a6edb0");

} // namespace

// Vectors as published for RC6-32/20/32, whose schedules start from these constants.
TEST(BlockCipher, IsRc6) {
    const struct {
        std::string key, plain, cipher;
    } cases[] = {
        {std::string(64, '0'), std::string(32, '0'), "8f5fbd0510d15fa893fa3fda6e857ec2"},
        {"0123456789abcdef0112233445566778899aabbccddeeff01032547698badcfe",
         "02132435465768798a9bacbdcedfe0f1", "c8241816f0d7e48920ad16a1674e5d48"},
    };
    for (const auto& test : cases) {
        unsigned char key[ioBlockCipher::keyBytes];
        std::copy_n(packets::bytes(test.key).begin(), sizeof key, reinterpret_cast<char*>(key));
        ioBlockCipher::Schedule schedule;
        ioBlockCipher::expandKey(schedule, key, {0xB7E15163, 0x9E3779B9});
        for (const Kernel kernel : kernels()) {
            std::string bytes = packets::bytes(test.plain);
            ioBlockCipher::encipher(bytes.data(), 1, schedule, kernel);
            EXPECT_EQ(bytes, packets::bytes(test.cipher));
            ioBlockCipher::decipher(bytes.data(), 1, schedule, kernel);
            EXPECT_EQ(bytes, packets::bytes(test.plain));
        }
    }
}

TEST(BlockCipher, TakesManyBlocksAsIfOneByOne) {
    ioBlockCipher::Schedule schedule;
    const unsigned char key[ioBlockCipher::keyBytes] = {1, 2, 3};
    ioBlockCipher::expandKey(schedule, key, {5, 7});
    for (unsigned blocks = 0; blocks < 40; ++blocks) {
        const std::string plain = randomData(16 * blocks + 5);
        std::string oneByOne = plain;
        for (unsigned i = 0; i < blocks; ++i)
            ioBlockCipher::encipher(&oneByOne[16 * i], 1, schedule, Kernel::plain);
        for (const Kernel kernel : kernels()) {
            std::string bytes = plain;
            ioBlockCipher::encipher(bytes.data(), blocks, schedule, kernel);
            EXPECT_EQ(bytes, oneByOne);
            ioBlockCipher::decipher(bytes.data(), blocks, schedule, kernel);
            EXPECT_EQ(bytes, plain);
        }
    }
}

// The cipher's bytes come from another implementation, with the library's key and constants.
TEST(Encrypt, WritesTheseBytes) {
    EXPECT_EQ(filtered(encrypt, block + " more"), "\x01\x15" + cipherOfBlock + " more");
    EXPECT_EQ(filtered(encrypt, "short"), "\x01\x05short");
    EXPECT_EQ(filtered(encrypt, ""), ""); // the version comes with the first bytes
    EXPECT_EQ(filtered(encrypt, block + block), "\x01\x20" + cipherOfBlock + cipherOfBlock);
    EXPECT_EQ(filtered(encrypt, std::string(240, 'x')).size(), 242u); // no frame of no bytes
    EXPECT_EQ(filtered(encrypt, std::string(720, 'x')).size(), 724u);
    // A writer enciphers in place.
    std::string file;
    ioBufferEncrypt link(false);
    link.chain(new MemorySink(false, 4096, file));
    std::string bytes = block;
    link.write(bytes.data(), 16);
    EXPECT_EQ(bytes, cipherOfBlock);
}

TEST(Encrypt, ReadsTheOtherByteOrder) {
    const auto swapped = [](std::string bytes) {
        for (std::size_t i = 0; i < bytes.size(); i += 4)
            std::reverse(&bytes[i], &bytes[i] + 4);
        return bytes;
    };
    EXPECT_EQ(unfiltered(encrypt, "\0\x12"s + swapped(cipherOfBlock) + "ab"),
              (Unfiltered{swapped(block) + "ab", streamEOF, ""}));
}

TEST(Encrypt, EndsWhatIsNotRegularInAStatus) {
    const std::string whole = "\x03"
                              "abc";
    const struct {
        std::string file, bytes;
        ioStreamStatus status;
    } cases[] = {
        {"\x02" + whole, "", streamIOError},
        {"\xff" + whole, "", streamIOError},
        {"\x01" + whole + "\x03", "abc", streamIOError},
        {"\x01\0"s + whole + "\0\0"s + whole + "\0"s, "abcabc", streamEOF}, // frames of no bytes
        {"\x01" + whole + "\xf1" + std::string(300, 'x'), "abc", streamIOError},
        {"\x01" + whole + "\xff" + std::string(300, 'x'), "abc", streamIOError},
    };
    for (const auto& test : cases)
        for (const int piece : {10'000, 1})
            EXPECT_EQ(unfiltered(encrypt, test.file, piece),
                      (Unfiltered{test.bytes, test.status, ""}));
    // A cut delivers what came before. Damage gives other bytes, or a status.
    const std::string bytes = randomData(600);
    const std::string file = filtered(encrypt, bytes);
    for (std::size_t n = 0; n < file.size(); ++n) {
        const bool atEnd = n < 2 || n == 242 || n == 483;
        EXPECT_EQ(unfiltered(encrypt, file.substr(0, n)),
                  (Unfiltered{bytes.substr(0, n < 242   ? 0
                                              : n < 483 ? 240
                                                        : 480),
                              atEnd ? streamEOF : streamIOError, ""}));
        std::string flipped = file;
        flipped[n] = static_cast<char>(flipped[n] ^ 1 << (n % 8));
        const Unfiltered result = unfiltered(encrypt, flipped);
        EXPECT_LE(result.bytes.size(), 601u);
        EXPECT_TRUE(result.status == streamEOF || result.status == streamIOError);
    }
}
