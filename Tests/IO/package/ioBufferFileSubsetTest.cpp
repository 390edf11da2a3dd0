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
    ioBufferFileSubset slice;
};

} // namespace

TEST_F(Slice, OpensOnlyWhereTheFileHoldsIt) {
    const std::pair<long, long> cases[] = {
        {0, 20'000},    {19'999, 1},          {19'999, 2},          {0, 20'001},
        {0, 0},         {20'000, 0},          {20'001, 0},          {-1, 2},
        {1, -1},        {1, LONG_MAX},        {LONG_MIN, 1},        {LONG_MAX, 1},
        {LONG_MAX, -1}, {LONG_MAX, LONG_MAX}, {LONG_MIN, LONG_MIN},
    };
    for (const auto& [offset, size] : cases) {
        SCOPED_TRACE(testing::Message() << offset << '+' << size);
        const bool opens = size == 20'000 || (offset == 19'999 && size == 1);
        // The stream keeps a chain that is at its end, for the caller to see.
        ioBufferedStreamInput in;
        in.openFileSlice(path, offset, size);
        EXPECT_EQ(in.getStatus(), opens ? streamOK : streamEOF);
        char c;
        EXPECT_EQ(in.readData(&c, 1), opens ? 1 : 0);
        in.seek(1);
        in.tell();
        in.close();
    }
}

TEST_F(Slice, EndsAtItsEndOrThatOfTheFile) {
    slice.open(path, 100, 50);
    char block[60];
    EXPECT_EQ(slice.read(block, 50), 50);
    EXPECT_TRUE(slice.good());
    EXPECT_EQ(slice.read(block, 1), 0);
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
    for (const SystemFaults::Call call : {SystemFaults::onOpen, SystemFaults::onStat,
                                          SystemFaults::onLseek, SystemFaults::onRead}) {
        const SystemFaults faults(call, {{EIO}});
        ioBufferedStreamInput in;
        in.openFileSlice(path, 1, 2);
        char c;
        in.readData(&c, 1);
        EXPECT_EQ(in.getStatus(), call == SystemFaults::onOpen ? streamOpenError : streamIOError);
        in.close();
    }
    ioBufferedStreamInput in;
    in.openPackageFileEntry(nullptr);
    EXPECT_EQ(in.getStatus(), streamIOError);
    in.openFileSlice(path, 0, 1); // does not reset the status
    EXPECT_EQ(in.getStatus(), streamIOError);
    const ioPackageFileEntry nowhere;
    in.openPackageFileEntry(&nowhere);
    EXPECT_EQ(in.getStatus(), streamOpenError);
    EXPECT_EQ(slice.getType(), 6);
}
