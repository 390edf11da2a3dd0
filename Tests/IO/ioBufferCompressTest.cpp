// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferCompress.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "IO/CompressTwin.h"
#include "IO/FilterData.h"
#include "IO/TestLinks.h"

namespace {

/// What the filter makes of `bytes`, handed to it in pieces of a size that varies.
std::string compressed(const std::string& bytes, std::size_t largestPiece) {
    std::string section;
    StreamOver<ioBufferedStreamOutput> stream(new MemorySink(false, 4096, section));
    stream.compress(true);
    std::minstd_rand random(1);
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t n = std::min<std::size_t>(1 + random() % largestPiece, bytes.size() - at);
        stream.writeData(bytes.data() + at, static_cast<int>(n));
        at += n;
        if (random() % 16 == 0)
            stream.flush(); // changes where blocks end, and nothing else
    }
    stream.compress(false);
    EXPECT_EQ(stream.getStatus(), streamOK);
    return section;
}

struct Expanded {
    std::string bytes;
    ioStreamStatus status;
    std::string after; ///< What is read once the filter is gone.
};

Expanded expanded(std::string section, std::size_t largestPiece) {
    StreamOver<ioBufferedStreamInput> stream(new MemorySink(true, 4096, section));
    stream.compress(true);
    Expanded result;
    std::string piece(largestPiece, '\0');
    std::minstd_rand random(1);
    while (stream.getStatus() == streamOK) {
        const int got =
            stream.readData(piece.data(), static_cast<int>(1 + random() % largestPiece));
        result.bytes.append(piece, 0, static_cast<std::size_t>(got));
    }
    result.status = stream.getStatus();
    stream.compress(false);
    if (stream.getStatus() == streamOK)
        result.after.resize(static_cast<std::size_t>(
            stream.readData(piece.data(), static_cast<int>(largestPiece))));
    std::copy_n(piece.begin(), result.after.size(), result.after.begin());
    return result;
}

TEST(Compress, IsTheDefinedAlgorithmOnAllKindsOfData) {
    std::string zeroPairs;
    for (int i = 0; i < 40; ++i)
        zeroPairs += recordData(2000, unsigned(i)) + std::string(unsigned(i), '\0');
    const struct {
        const char* name;
        std::string bytes;
    } cases[] = {
        {"text", textData(150'000)},
        {"records", recordData(150'000)},
        {"random", randomData(150'000)},
        {"few symbols", randomData(150'000, 1, 3)},
        {"one byte", std::string(150'000, 'x')},
        {"zeros", std::string(150'000, '\0')},
        {"zero pairs", zeroPairs},
        {"mixed", mixedData(400'000)},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const std::string section = CompressTwinWriter::section(test.bytes);
        ASSERT_TRUE(compressed(test.bytes, 10'000) == section);
        const auto twin = CompressTwinReader::read(section);
        ASSERT_TRUE(twin.bytes == test.bytes && twin.end == CompressTwinReader::atEndCode);
        const Expanded result = expanded(section + "after", 10'000);
        ASSERT_TRUE(result.bytes == test.bytes);
        EXPECT_EQ(result.status, streamCompressEnd);
        EXPECT_EQ(result.after, "after");
    }
}

} // namespace
