// SPDX-License-Identifier: MIT

// Packet files over real connections, and over other streams. The connections are socket pairs,
// which need no network.

#include "Base/IO/ioBufferTCP.h"

#include <sys/socket.h>

#include <csignal>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "Base/IO/ioPacketFileCheck.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSMemoryIOStream.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Support/TempFolder.h"

#include "IO/formats/PacketFileSupport.h"

namespace {

constexpr ioWriteMethod methods[] = {ioWriteAscii, ioWriteBinary, ioWriteAsciiDebug,
                                     ioWriteBinaryDebug};

/// Two connected ends.
struct Pair {
    struct Ends {
        Ends() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0); }
        int fds[2] = {-1, -1};
    };

    explicit Pair(const Ends& ends = Ends()) : here(ends.fds[0]), there(ends.fds[1]) {}

    zeTCP::ServerSocket here;
    zeTCP::ServerSocket there;
};

/// A packet file of things, each a number and a text of 100 bytes.
struct Document {
    ioWriteMethod method = ioWriteBinary;
    bool compressed = false;
    int things = 100; // of several blocks

    static std::string text(int i) { return std::string(100, static_cast<char>('a' + i % 26)); }

    void write(ioBufferedStreamOutput& out) const {
        if (compressed)
            out.compress(true);
        packets::Registry registry(false, {{"thing", nullptr}});
        const std::unique_ptr<ioWriteContext> context(ioWriteContextAlloc(out, method, &registry));
        context->startFile();
        for (int i = 0; i < things; ++i) {
            context->startPacket("thing", nullptr);
            context->writeInt(i);
            context->writeCString(text(i).c_str());
            context->endPacket();
        }
        context->endFile();
        if (compressed)
            out.compress(false);
        out.close();
    }

    /// Whether the stream delivers this very document.
    bool isReadFrom(ioBufferedStreamInput& in) const {
        if (compressed)
            in.compress(true);
        int count = 0;
        packets::Registry registry(true, {{"thing", [&](ioClientReadContext& client) {
                                               const int i = client.readInt();
                                               count +=
                                                   i == count && text(i) == client.readCString();
                                           }}});
        const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(in, &registry));
        const bool complete =
            context && ioClientReadContext(context.get()).readFile() == ioOK && count == things;
        in.close();
        return complete && in.getStatus() == streamOK;
    }

    std::string bytes() const {
        std::string result;
        StreamOver<ioBufferedStreamOutput> out(new MemorySink(false, 4096, result));
        write(out);
        return result;
    }
};

class PacketConnection : public testing::Test {
protected:
    PacketConnection() { std::signal(SIGPIPE, SIG_IGN); }
};

/// A stream that delivers one byte at a time.
struct Trickle : zeOS::MemoryIOStream {
    using MemoryIOStream::MemoryIOStream;
    zeUtil::Error read(void* buffer, unsigned long, unsigned long* done) override {
        return MemoryIOStream::read(buffer, 1, done);
    }
};

} // namespace

TEST_F(PacketConnection, CarriesEveryFormOfAFileBothWays) {
    for (const ioWriteMethod method : methods)
        for (const bool compressed : {false, true}) {
            SCOPED_TRACE(testing::Message() << method << compressed);
            const Document sent{method, compressed, 100};
            const Document answer{method, compressed, 1};
            Pair pair;
            ioBufferedStreamOutput out;
            out.openSocket(&pair.here);
            sent.write(out);
            EXPECT_EQ(out.getStatus(), streamOK);
            pair.here.close(2); // the reader of the last block waits for this

            ioBufferedStreamInput in;
            in.openSocket(&pair.there);
            EXPECT_TRUE(sent.isReadFrom(in));
            out.openSocket(&pair.there); // neither end has been closed
            answer.write(out);
            pair.there.close(2);
            in.openSocket(&pair.here);
            EXPECT_TRUE(answer.isReadFrom(in));
        }
}

TEST_F(PacketConnection, IsOneKindOfStreamAmongOthers) {
    const TempFolder folder;
    const zeString::IString name(folder.path("file").c_str());
    for (const ioWriteMethod method : methods)
        for (const bool compressed : {false, true}) {
            const Document document{method, compressed, 100};
            ioBufferedStreamOutput out;
            ioBufferedStreamInput in;
            Trickle memory(1000, nullptr);
            memory.openForWrite();
            out.openIOStream(&memory);
            document.write(out);
            memory.close();
            memory.openForRead();
            in.openIOStream(&memory);
            EXPECT_TRUE(document.isReadFrom(in));

            zeOS::File file(name);
            EXPECT_EQ(file.open(zeOS::File::ModeWrite | zeOS::File::ModeBinary).code(), 0);
            out.openIOStream(&file);
            document.write(out);
            EXPECT_EQ(out.getStatus(), streamOK);
            file.close();
            EXPECT_TRUE(folder.read("file") == document.bytes());
            EXPECT_EQ(file.open(zeOS::File::ModeRead | zeOS::File::ModeBinary).code(), 0);
            in.openIOStream(&file);
            EXPECT_TRUE(document.isReadFrom(in));
            file.close();
        }
}

TEST_F(PacketConnection, WaitsForEachByteThatComesAlone) {
    const Document document{ioWriteAscii, false, 50};
    Pair pair;
    std::thread sender([&, bytes = document.bytes()] {
        for (const char& byte : bytes)
            pair.here.write(&byte, 1, nullptr);
        pair.here.close(2);
    });
    ioBufferedStreamInput in;
    in.openSocket(&pair.there);
    EXPECT_TRUE(document.isReadFrom(in));
    sender.join();
}

// Whatever has come before is delivered, and then the stream has failed: nothing waits, and no cut
// file is taken for a whole one.
TEST_F(PacketConnection, FailsWhereItIsCutOrResetAndKnowsThatTheFileIsNotWhole) {
    for (const ioWriteMethod method : methods) {
        const std::string bytes = Document{method, false, 2}.bytes();
        // The newline that ends a text is of no account.
        const bool isText = method == ioWriteAscii || method == ioWriteAsciiDebug;
        const std::size_t whole = bytes.size() - isText;
        for (const bool isReset : {false, true})
            for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
                Pair pair;
                if (cut > 0)
                    pair.here.write(bytes.data(), cut, nullptr);
                if (isReset) // the other end is closed with a byte that it has not read
                    pair.there.write("x", 1, nullptr);
                pair.here.close(3);
                ioBufferedStreamInput in;
                in.openSocket(&pair.there);
                ASSERT_EQ(ioPacketFileCheck(in) == ioOK, cut >= whole) << method << ' ' << cut;
                while (in.readChar() != 0) { // a newline at most
                }
                ASSERT_EQ(in.getStatus(), streamIOError) << method << ' ' << cut;
            }
    }
}

TEST_F(PacketConnection, ReportsAPeerThatIsGoneToTheWriter) {
    const Document document{ioWriteBinary, false, 1};
    for (const bool throws : {false, true}) {
        Pair pair;
        pair.here.setThrowMode(throws);
        pair.there.close(3);
        ioBufferedStreamOutput out;
        out.openSocket(&pair.here);
        document.write(out);
        EXPECT_EQ(out.getStatus(), streamIOError); // known at close(), which writes the block
    }
}

// What Documentation/network.md recommends for several documents over one connection.
TEST_F(PacketConnection, CarriesADialogueIfAStreamSaysWhereEachDocumentEnds) {
    class Pieces : public zeOS::IOStream {
    public:
        explicit Pieces(zeTCP::Socket& socket) : socket_(socket) {}

        zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override {
            unsigned size = 0;
            zeUtil::Error error = socket_.read(&size, sizeof size, nullptr);
            if (error.code() != 0 || size == 0 || size > count)
                return error.code() != 0 ? error : zeUtil::Error(1, "the end of a document");
            return socket_.read(buffer, size, done);
        }
        zeUtil::Error write(const void* buffer, unsigned long count, unsigned long*) override {
            const unsigned size = static_cast<unsigned>(count);
            const zeUtil::Error error = socket_.write(&size, sizeof size, nullptr);
            return error.code() != 0 ? error : socket_.write(buffer, count, nullptr);
        }
        void endDocument() { write(nullptr, 0, nullptr); }

    private:
        zeTCP::Socket& socket_;
    };

    Pair pair;
    Pieces here(pair.here);
    Pieces there(pair.there);
    for (int turn = 0; turn < 3; ++turn) {
        const Document document{methods[turn], turn == 1, 30 * turn};
        Pieces& from = turn % 2 ? there : here;
        Pieces& to = turn % 2 ? here : there;
        ioBufferedStreamOutput out;
        out.openIOStream(&from);
        document.write(out);
        from.endDocument();
        ioBufferedStreamInput in;
        in.openIOStream(&to);
        EXPECT_TRUE(document.isReadFrom(in));
        in.openIOStream(&to);
        EXPECT_EQ(in.readChar(), 0);
        EXPECT_EQ(in.getStatus(), streamEOF);
    }
}
