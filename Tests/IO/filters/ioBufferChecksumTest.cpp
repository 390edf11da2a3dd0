// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferChecksum.h"

#include <memory>

#include <gtest/gtest.h>

#include "Support/AllocationCount.h"

#include "IO/filters/FilterData.h"
#include "IO/filters/FilterSupport.h"

namespace {

using namespace std::string_literals;

constexpr Switch checksum = &ioBufferedStream::checksum;

/// The sum as it is defined: word by word, with the carries taken in as they come.
unsigned short sumTwin(unsigned short before, const std::string& bytes) {
    const auto byte = [&](std::size_t i) {
        return std::uint32_t(static_cast<unsigned char>(bytes[i]));
    };
    std::uint32_t s = before;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        s += byte(i) | byte(i + 1) << 8;
        if (s & 0x80000000)
            s = (s & 0xFFFF) + (s >> 16);
    }
    if (bytes.size() % 2 == 1)
        s += byte(bytes.size() - 1);
    while (s >= 65536)
        s = (s & 0xFFFF) + (s >> 16);
    return static_cast<unsigned short>(s);
}

std::string bigEndian(std::uint32_t value) {
    return {char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
}

std::string frame(const std::string& bytes, unsigned short& sum) {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    sum = sumTwin(sum, bytes);
    return bigEndian(size) + bigEndian(~size) + std::string{char(sum), char(sum >> 8)} + bytes;
}

TEST(Checksum, WritesTheseBytes) {
    std::string file;
    StreamOver<ioBufferedStreamOutput> stream(new MemorySink(false, 4096, file));
    stream.checksum(true);
    stream.writeData("ab", 2); // 6261
    stream.flush();
    stream.writeData("c", 1); // an odd byte as it is: 62c4
    stream.flush();
    stream.flush();                      // nothing to write, no frame
    stream.writeData("\xff\xff\x01", 3); // 62c4 + ffff + 01 = 162c4, and the carry: 62c5
    stream.checksum(false);
    EXPECT_EQ(file, "\0\0\0\x02\xff\xff\xff\xfd\x61\x62"
                    "ab"
                    "\0\0\0\x01\xff\xff\xff\xfe\xc4\x62"
                    "c"
                    "\0\0\0\x03\xff\xff\xff\xfc\xc5\x62"
                    "\xff\xff\x01"s);
    EXPECT_EQ(unfiltered(checksum, file), (Unfiltered{"abc\xff\xff\x01", streamEOF, ""}));
}

// One frame is one block of the link: 4096 bytes, and what is left.
TEST(Checksum, SumsUpAnyDataAsDefined) {
    for (const std::string& bytes :
         {std::string(20'000, '\0'), std::string(20'001, '\xff'), randomData(9000), textData(4097),
          "\0\0\xff\xff"s, "\xff\xff\0\0"s, "\xfe\xff\x01\0"s, "\x01"s, "\xff\xff\xff"s}) {
        std::string expected;
        unsigned short sum = 0;
        for (std::size_t at = 0; at < bytes.size(); at += 4096)
            expected += frame(bytes.substr(at, 4096), sum);
        EXPECT_TRUE(filtered(checksum, bytes) == expected) << bytes.size();
        EXPECT_EQ(unfiltered(checksum, expected), (Unfiltered{bytes, streamEOF, ""}));
    }
}

TEST(Checksum, ReadsFramesOfAnySize) {
    unsigned short sum = 0;
    std::string bytes;
    std::string file;
    for (const unsigned size :
         {1u, 10u, 4095u, 4096u, 4097u, 65536u, 65537u, 1u, 200'000u, 5000u}) {
        bytes += randomData(size, size);
        file += frame(bytes.substr(bytes.size() - size), sum);
    }
    for (const int piece : {1, 4096, 100'000})
        EXPECT_TRUE(unfiltered(checksum, file, piece) == (Unfiltered{bytes, streamEOF, ""}));
}

// Frames end where the file may end. Elsewhere an end is damage only if bytes were handed over.
TEST(Checksum, TellsDamageFromAnEnd) {
    const std::string first = "some bytes";
    unsigned short sum = 0;
    const std::size_t size = frame(first, sum).size();
    const std::string file = frame(first, sum = 0) + frame("and others", sum);
    for (std::size_t n = 0; n < file.size(); ++n) {
        SCOPED_TRACE(n);
        const std::string before = n < size ? "" : first;
        EXPECT_EQ(unfiltered(checksum, file.substr(0, n)),
                  (Unfiltered{before, n % size <= 10 ? streamEOF : streamChecksumError, ""}));
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = file;
            flipped[n] = static_cast<char>(flipped[n] ^ 1 << bit);
            EXPECT_EQ(unfiltered(checksum, flipped), (Unfiltered{before, streamChecksumError, ""}));
        }
    }
    EXPECT_EQ(unfiltered(checksum, std::string(4, '\0') + "\xff\xff\xff\xff\0\0"s),
              (Unfiltered{"", streamChecksumError, ""})); // a frame of no bytes
}

TEST(Checksum, HandsTheBytesOfADamagedFrameOverWithTheStatus) {
    unsigned short sum = 0;
    std::string file = frame("bytes", sum);
    file.back() = 'S';
    for (const unsigned cut : {0u, 1u}) {
        std::string part = file.substr(0, file.size() - cut);
        ioBufferChecksum link(true);
        link.chain(new MemorySink(true, 4096, part));
        char bytes[5];
        EXPECT_EQ(link.read(bytes, 5), 5 - int(cut));
        EXPECT_EQ(std::string(bytes, 4), "byte");
        EXPECT_EQ(link.getStatus(), ioBuffer::bufferChecksumError);
    }
}

// 2 GiB are claimed, 40 bytes come.
TEST(Checksum, BelievesNoSizeBeforeItsBytesHaveCome) {
    std::string file = "\x7f\xff\xff\xff\x80\0\0\0\0\0"s + std::string(40, 'x');
    const std::size_t before = allocatedBytes();
    EXPECT_EQ(unfiltered(checksum, file), (Unfiltered{"", streamEOF, ""}));
    EXPECT_LT(allocatedBytes() - before, 1'000'000u);
}

} // namespace
