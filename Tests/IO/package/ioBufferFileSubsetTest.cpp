// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferFileSubset.h"

#include <climits>
#include <filesystem>

#include <gtest/gtest.h>

#include "Support/SystemFaults.h"
#include "Support/TempFolder.h"

#include "IO/chain/TestLinks.h"
#include "IO/package/PackageSupport.h"

namespace {

class Slice : public testing::Test {
protected:
    TempFolder folder;
    const std::string bytes = randomData(20'000);
    const zeString::IString path = packages::wide(folder.write("file", bytes));
};

} // namespace

TEST_F(Slice, IsAFileOfItsOwn) {
    std::minstd_rand random(3);
    for (int round = 0; round < 200; ++round) {
        const long offset = static_cast<long>(random() % 10'000);
        const long size = 1 + static_cast<long>(random() % 10'000);
        const std::string expected = bytes.substr(std::size_t(offset), std::size_t(size));
        ioBufferFileSubset slice;
        slice.open(path, offset, size);
        long at = 0;
        while (slice.good()) {
            if (random() % 3 == 0) {
                at = static_cast<long>(random() % unsigned(size));
                slice.flush();
                ASSERT_TRUE(slice.seek(at));
                ASSERT_EQ(slice.tell(), at);
            }
            std::string read(random() % 6'000, ' ');
            read.resize(std::size_t(slice.readData(read.data(), int(read.size()))));
            ASSERT_EQ(read, expected.substr(std::size_t(at), read.size()));
            at += long(read.size());
        }
        EXPECT_EQ(at, size);
        EXPECT_EQ(slice.getStatus(), ioBuffer::bufferEOF);
        slice.close();
    }
}

TEST_F(Slice, OpensOnlyWhereTheFileHoldsIt) {
    const long all = static_cast<long>(bytes.size());
    const struct {
        long offset, size;
        ioBuffer::bufferStatus status;
    } cases[] = {
        {0, all, ioBuffer::bufferOK},
        {all - 1, 1, ioBuffer::bufferOK},
        {all - 1, 2, ioBuffer::bufferEOF},
        {0, all + 1, ioBuffer::bufferEOF},
        {0, 0, ioBuffer::bufferEOF}, // its start is its end, which no seek reaches
        {all, 0, ioBuffer::bufferEOF},
        {all + 1, 0, ioBuffer::bufferEOF},
        {-1, 2, ioBuffer::bufferEOF},
        {1, -1, ioBuffer::bufferEOF},
        {1, LONG_MAX, ioBuffer::bufferEOF},
        {LONG_MAX, LONG_MAX, ioBuffer::bufferEOF},
        {LONG_MIN, LONG_MIN, ioBuffer::bufferEOF},
    };
    for (const auto& [offset, size, status] : cases) {
        SCOPED_TRACE(testing::Message() << offset << '+' << size);
        ioBufferFileSubset slice;
        slice.open(path, offset, size);
        EXPECT_EQ(slice.getStatus(), status);
        slice.close();
        // The stream keeps a chain that is at its end, for the caller to see.
        ioBufferedStreamInput in;
        in.openFileSlice(path, offset, size);
        EXPECT_EQ(in.getStatus(), status == ioBuffer::bufferOK ? streamOK : streamEOF);
        char c;
        EXPECT_EQ(in.readData(&c, 1), status == ioBuffer::bufferOK ? 1 : 0);
        in.close();
    }
}

TEST_F(Slice, EndsAtItsEndOrThatOfTheFile) {
    ioBufferFileSubset slice;
    slice.open(path, 100, 50);
    char block[60];
    EXPECT_EQ(slice.read(block, 50), 50);
    EXPECT_EQ(slice.getStatus(), ioBuffer::bufferOK);
    EXPECT_EQ(slice.read(block, 1), 0);
    EXPECT_EQ(slice.getStatus(), ioBuffer::bufferEOF);
    EXPECT_EQ(slice.read(block, 1), -1) << "statuses stay";
    slice.setStatus(ioBuffer::bufferOK);
    EXPECT_FALSE(slice.seek(-1)) << "neither the bytes before it nor the end of the file";
    EXPECT_TRUE(slice.good());
    EXPECT_FALSE(slice.seek(50));
    EXPECT_EQ(slice.getStatus(), ioBuffer::bufferEOF);
    slice.setStatus(ioBuffer::bufferOK);
    ASSERT_TRUE(slice.seek(0));
    std::filesystem::resize_file(path.asUTF8(), 110);
    EXPECT_EQ(slice.read(block, 50), 10);
    EXPECT_EQ(slice.read(block, 40), 0);
    EXPECT_EQ(slice.getStatus(), ioBuffer::bufferEOF);
    slice.close();
}

TEST_F(Slice, FailsRatherThanLookingEmpty) {
    const auto statusWith = [this](SystemFaults::Call call) {
        const SystemFaults faults(call, {{EIO}});
        ioBufferedStreamInput in;
        in.openFileSlice(path, 1, 2);
        char c;
        in.readData(&c, 1);
        const ioStreamStatus status = in.getStatus();
        in.close();
        return status;
    };
    EXPECT_EQ(statusWith(SystemFaults::onOpen), streamOpenError);
    EXPECT_EQ(statusWith(SystemFaults::onStat), streamIOError);
    EXPECT_EQ(statusWith(SystemFaults::onLseek), streamIOError);
    EXPECT_EQ(statusWith(SystemFaults::onRead), streamIOError);

    ioBufferedStreamInput in;
    in.openPackageFileEntry(nullptr);
    EXPECT_EQ(in.getStatus(), streamIOError);
    in.openFileSlice(path, 0, 1); // does not reset the status
    EXPECT_EQ(in.getStatus(), streamIOError);
    const ioPackageFileEntry nowhere;
    EXPECT_TRUE(nowhere.getPackageName().isEmpty());
    in.openPackageFileEntry(&nowhere);
    EXPECT_EQ(in.getStatus(), streamOpenError);
    EXPECT_EQ(ioBufferFileSubset().getType(), 6);
}
