// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <unistd.h>

#include <climits>

#include <gtest/gtest.h>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioHeader.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/TempFolder.h"

#include "IO/chain/TestLinks.h"

namespace {

using Input = StreamOver<ioBufferedStreamInput>;
using Output = StreamOver<ioBufferedStreamOutput>;

zeString::IString name(const std::string& path) {
    return zeString::IString(path.c_str());
}

/// A stream over a text in memory, in blocks of `block` bytes.
struct TextInput : std::string, Input {
    explicit TextInput(const std::string& text, int block = 8)
        : std::string(text), Input(new MemorySink(true, block, *this)) {}
};

} // namespace

TEST(BufferedStream, ReportsAFailedOpenAtOnceOnInputAndAfterTheFirstFlushOnOutput) {
    const TempFolder folder;
    ioBufferedStreamInput in;
    in.openFile(name(folder.path("missing")));
    EXPECT_EQ(in.getStatus(), streamOpenError);
    EXPECT_EQ(in.readChar(), 0); // closed, and harmless

    ioBufferedStreamOutput out;
    out.openFile(name(folder.path("missing/file")));
    out.writeData("x", 1);
    EXPECT_EQ(out.getStatus(), streamOpenError);
    out.openFile(name(folder.path("missing/file")));
    EXPECT_EQ(out.getStatus(), streamOK);
    out.flush();
    EXPECT_EQ(out.getStatus(), streamOpenError);
    out.openFile(name(folder.path("file"))); // opens again, with a new chain
    out.printf("%2000d", 1);                 // cut
    out.printf("%s", "text");
    out.close();
    EXPECT_EQ(out.getStatus(), streamOK);
    EXPECT_EQ(folder.read("file"), std::string(1023, ' ') + "text");
}

TEST(BufferedStream, WithoutAChainDoesNothing) {
    ioBufferedStreamInput in;
    in.openSocket(nullptr);
    EXPECT_EQ(in.getStatus(), streamIOError);
    char bytes[4];
    EXPECT_EQ(in.readData(bytes, 4), 0);
    EXPECT_FALSE(in.seek(0));
    ioBufferedStreamOutput out;
    out.openSocket(nullptr);
    out.writeData("x", 1);
    out.writeChar('x');
    for (const auto filter : {&Output::compress, &Output::checksum, &Output::encrypt}) {
        (out.*filter)(true);
        out.writeString("nowhere");
        (out.*filter)(false);
    }
    out.associateProgressFunction(nullptr);
    EXPECT_EQ(out.tell(), 0);
    out.close();
    EXPECT_EQ(out.getStatus(), streamIOError);
}

// Descriptor 0 is one like any other.
TEST(BufferedStream, ClosesTheStandardStreamsThatItOpened) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    int saved[2];
    for (const int fd : {0, 1}) {
        saved[fd] = dup(fd);
        dup2(ends[fd], fd);
        close(ends[fd]);
    }
    ioBufferedStreamOutput out;
    out.openStdout();
    out.writeString("through");
    out.close();
    ioBufferedStreamInput in;
    in.openStdin();
    std::string text(7, '\0');
    in.readData(text.data(), 7);
    in.close();
    const bool closed[] = {fcntl(0, F_GETFD) == -1, fcntl(1, F_GETFD) == -1};
    for (const int fd : {0, 1}) {
        dup2(saved[fd], fd);
        close(saved[fd]);
        EXPECT_TRUE(closed[fd]) << fd;
    }
    EXPECT_EQ(text, "through");
    EXPECT_EQ(in.getStatus(), streamOK);
    EXPECT_EQ(out.getStatus(), streamOK);
}

TEST(BufferedStream, SeeksTellsAndKnowsTheSizeOfAFile) {
    const TempFolder folder;
    const auto path = name(folder.path("file"));
    ioBufferedStreamOutput out;
    out.openFile(path);
    out.writeString("0123456789");
    EXPECT_EQ(out.tell(), 10);
    EXPECT_TRUE(out.seek(2));
    out.writeString("ab");
    out.close();
    EXPECT_EQ(folder.read("file"), "01ab456789");
    out.truncateOnOpen(false);
    out.openFile(path);
    out.writeString("cd");
    out.close();
    EXPECT_EQ(folder.read("file"), "cdab456789");

    ioBufferedStreamInput in;
    in.openFile(path);
    EXPECT_EQ(in.readChar(), 'c');
    EXPECT_TRUE(in.seek(4)); // what was read ahead is discarded
    EXPECT_EQ(in.readChar(), '4');
    EXPECT_TRUE(in.seek(-1)); // the end of the file
    EXPECT_EQ(in.tell(), 10);
    in.encrypt(true); // a filter has no position
    EXPECT_EQ(in.tell(), 0);
    EXPECT_FALSE(in.seek(2));
    in.close();
    EXPECT_EQ(ioBufferedStream::fileSize(path), 10);
    EXPECT_EQ(ioBufferedStream::fileSize(zeString::IString()), -1);
}

TEST(BufferedStream, ReadsBytesAsUnsigned) {
    TextInput in("\xC8z", 1);
    EXPECT_EQ(in.readChar(), 200);
    EXPECT_EQ(in.readChar(), 'z');
    EXPECT_EQ(in.getStatus(), streamOK);
    EXPECT_EQ(in.readChar(), 0);
    EXPECT_EQ(in.getStatus(), streamEOF);
}

// Callers that set a status themselves rely on it: bytes in the block are still delivered.
TEST(BufferedStream, ChecksItsStatusOnlyWhenABlockIsUsedUp) {
    TextInput in("abc", 2);
    in.readChar();
    in.setStatus(streamDiskFull);
    EXPECT_EQ(in.readChar(), 'b');
    EXPECT_EQ(in.readChar(), 0);
    in.resetStatus();
    EXPECT_EQ(in.readChar(), 'c');
}

TEST(BufferedStream, ReadsNumbersAndTheByteAfterThem) {
    const struct {
        std::string text;
        long number;
        std::string rest;
    } cases[] = {
        {"12ab", 12, "b"},
        {" \t\n-7 8", -7, "8"},
        {"-x9", 0, "9"},
        {"", 0, ""},
        {"+5", 0, "5"},
        {std::string(50, '0') + "1", 0, std::string(10, '0') + "1"},
        {"-" + std::string(50, '9'), LONG_MIN, std::string(11, '9')},
        {"9223372036854775807.", LONG_MAX, ""},
    };
    for (const auto& test : cases) {
        TextInput in(test.text);
        EXPECT_EQ(in.readInt(), test.number) << test.text;
        char rest[64];
        EXPECT_EQ(std::string(rest, std::size_t(in.readData(rest, 64))), test.rest) << test.text;
    }
}

TEST(BufferedStream, ReadsLinesIntoABuffer) {
    const struct {
        std::string text;
        int size;
        std::string bytes; ///< Of the buffer, which held "########".
    } cases[] = {
        {"ab\ncd", 8, std::string("ab\n\0####", 8)},
        {"ab\ncd", 4, std::string("ab\n\0####", 8)},
        {"ab\ncd", 3, std::string("ab\0#####", 8)},
        {"ab\ncd", 1, std::string("\0#######", 8)},
        {"ab\ncd", -5, std::string("\0#######", 8)},
        {"cd", 8, std::string("cd\0\0####", 8)}, // a 0 stands for the byte that is missing
    };
    for (const auto& test : cases) {
        TextInput in(test.text);
        in.readLine(nullptr, 8);
        std::string buffer(8, '#');
        in.readLine(buffer.data(), test.size);
        EXPECT_EQ(buffer, test.bytes) << test.size;
        in.setStatus(streamEOF);
        in.readLine(buffer.data(), 8);
        EXPECT_EQ(buffer[0], '\0');
    }
}

// Callers that write byte by byte rely on each byte being out when the next is written.
TEST(BufferedStream, PushesOutTheByteBeforeOnWriteChar) {
    std::string file;
    Output out(new MemorySink(false, 64, file));
    out.writeString("ab");
    for (const char c : {'c', 'd', 'e'}) {
        out.writeChar(c);
        EXPECT_EQ(file.back(), c - 1);
    }
    out.flush();
    EXPECT_EQ(file, "abcde");
    out.top()->setStatus(ioBuffer::bufferDiskFull);
    for (int i = 0; i < 1000; ++i)
        out.writeChar('x');
    EXPECT_EQ(out.getStatus(), streamDiskFull);
}

TEST(Header, SaysHowToReadTheFile) {
    constexpr auto unknown = static_cast<ioWriteMethod>(-1);
    const struct {
        std::string text;
        bool valid;
        ioWriteMethod method;
        ioReadMethod reading;
    } cases[] = {
        {"1\n0 0 1\n1 2 4 8 4 8 8\n@\n", true, ioWriteAscii, ioReadAscii},
        {"1\n0 1 1\n1 2 4 8 4 8 8\n@\n", true, ioWriteBinary, ioReadBinarySwapped},
        {"9\n0 2 1\n1 2 4 8 4 8 8\n@\n", true, ioWriteAsciiDebug, ioReadAsciiDebug},
        {"1\n0 3 1\n1 2 4 8 4 8 8\n@\n", true, ioWriteBinaryDebug, ioReadBinarySwappedDebug},
        {"1\n1 1 1\n1 2 4 8 4 8 16 more\n@\n", true, ioWriteBinary, ioReadBinarySameEndian},
        {"1\n1 1 1\n1 2 4 4 4 8 8\n@\n", false, ioWriteBinary, ioReadBinarySameEndian},
        {"1\n1 3 0\n1 2 4 8 4 8 8\n@\n", false, ioWriteBinaryDebug, ioReadBinarySameEndianDebug},
        {"1\n1 0 0\n1 2 4 4 4 8 8\n@\n", true, ioWriteAscii, ioReadAscii},
        {"1\n1 7 0\n1 2 4 4 4 8 8\n@\n", true, unknown, ioReadUnknown},
        {"1\n1 4294967297 1\n1 2 4 4 4 8 8\n@\n", true, unknown, ioReadUnknown},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        TextInput in("^@\n" + test.text + "!");
        ioHeader header;
        EXPECT_FALSE(header.valid);
        EXPECT_EQ(header.readHeader(in), test.valid);
        EXPECT_EQ(header.valid, test.valid);
        EXPECT_EQ(header.method, test.method);
        EXPECT_EQ(header.determineReadMethod(), test.reading);
        EXPECT_EQ(in.readChar(), '!');
    }
    for (const std::string text : {"^@\r\n1\n", "^#\n\n", "^", ""}) { // three bytes are read
        TextInput in(text);
        ioHeader header(ioWriteBinary);
        EXPECT_FALSE(header.readHeader(in));
        EXPECT_FALSE(header.valid);
        EXPECT_EQ(in.readChar(), text.size() > 3 ? '\n' : 0);
    }
}
