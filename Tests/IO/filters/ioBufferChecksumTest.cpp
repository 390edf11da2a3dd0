// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferChecksum.h"

#include <gtest/gtest.h>

#include "Support/AllocationCount.h"

#include "IO/filters/FilterSupport.h"

namespace {

using namespace std::string_literals;

constexpr Switch checksum = &ioBufferedStream::checksum;

/// A frame, with the sum as it is defined: word by word, with the carries taken in as they come.
std::string frame(const std::string& bytes, unsigned& sum) {
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        sum += static_cast<unsigned char>(bytes[i]);
        if (i + 1 < bytes.size())
            sum += static_cast<unsigned>(static_cast<unsigned char>(bytes[i + 1])) << 8;
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    const auto size = static_cast<unsigned>(bytes.size());
    std::string result;
    for (const unsigned number : {size, ~size})
        for (const int shift : {24, 16, 8, 0})
            result += static_cast<char>(number >> shift);
    return result + static_cast<char>(sum) + static_cast<char>(sum >> 8) + bytes;
}

} // namespace

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

TEST(Checksum, ReadsFramesOfAnySize) {
    unsigned sum = 0;
    std::string bytes;
    std::string file;
    for (const unsigned size :
         {1u, 10u, 4095u, 4096u, 4097u, 65536u, 65537u, 1u, 200'000u, 5000u}) {
        bytes += size == 4095 ? std::string(size, '\xff') : randomData(size, size);
        file += frame(bytes.substr(bytes.size() - size), sum);
    }
    for (const int piece : {1, 4096, 100'000})
        EXPECT_TRUE(unfiltered(checksum, file, piece) == (Unfiltered{bytes, streamEOF, ""}));
}

// Frames end where the file may end. Elsewhere an end is damage only if bytes were delivered.
TEST(Checksum, KnowsDamageFromAnEnd) {
    unsigned sum = 0;
    const std::string first = "some bytes";
    const std::string firstFrame = frame(first, sum);
    const std::string file = firstFrame + frame("and others", sum);
    for (std::size_t n = 0; n < file.size(); ++n) {
        SCOPED_TRACE(n);
        const std::string before = n < firstFrame.size() ? "" : first;
        const auto atEnd = n % firstFrame.size() <= 10 ? streamEOF : streamChecksumError;
        EXPECT_EQ(unfiltered(checksum, file.substr(0, n)), (Unfiltered{before, atEnd, ""}));
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = file;
            flipped[n] = static_cast<char>(flipped[n] ^ 1 << bit);
            EXPECT_EQ(unfiltered(checksum, flipped), (Unfiltered{before, streamChecksumError, ""}));
        }
    }
    sum = 0;
    EXPECT_EQ(unfiltered(checksum, frame("", sum)), (Unfiltered{"", streamChecksumError, ""}));
}

TEST(Checksum, DeliversTheBytesOfADamagedFrameWithTheStatus) {
    unsigned sum = 0;
    const std::string file = frame("bytes", sum);
    for (std::string damaged : {file.substr(0, file.size() - 1), file.substr(0, 14) + "S"}) {
        ioBufferChecksum link(true);
        link.chain(new MemorySink(true, 4096, damaged));
        char bytes[5];
        EXPECT_EQ(link.read(bytes, 5), int(damaged.size()) - 10);
        EXPECT_EQ(std::string(bytes, 4), "byte");
        EXPECT_EQ(link.getStatus(), ioBuffer::bufferChecksumError);
    }
}

// 2 GiB are claimed, 40 bytes come.
TEST(Checksum, BelievesNoSizeBeforeItsBytesHaveCome) {
    const std::string file = "\x7f\xff\xff\xff\x80\0\0\0\0\0"s + std::string(40, 'x');
    const std::size_t before = allocatedBytes();
    EXPECT_EQ(unfiltered(checksum, file), (Unfiltered{"", streamEOF, ""}));
    EXPECT_LT(allocatedBytes() - before, 1'000'000u);
}
