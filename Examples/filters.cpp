// SPDX-License-Identifier: MIT

// Pushes filters onto a stream in the middle of a file: the first packet, a title, stays as it is,
// so that other programs find it; all that follows is compressed and has a checksum. The reader
// pushes the same filters at the same place, and notices damage.
//
//     $ filters save poem.zp
//     $ filters load poem.zp
//     title: A long poem
//     500 lines, the last is: The rain in line 500 falls on and on and never ends at all.
//     $ test $(wc --bytes < poem.zp) -lt 8000 # of 38000 without the compression
//     $ printf X | dd of=poem.zp bs=1 seek=2000 conv=notrunc status=none
//     $ filters load poem.zp
//     filters: poem.zp: the checksum is wrong, the file is damaged

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "Base/IO/ioPacketFile.h"
#include "Base/Strings/zeStringIString.h"

namespace {

constexpr const char* titleType = "title";
constexpr const char* lineType = "line";

/// The checksum comes first, next to the file: it covers the bytes as they lie there, and finds
/// damage before the other filter sees it.
void pushFilters(ioBufferedStream& stream) {
    stream.checksum(true);
    stream.compress(true);
}

void writeText(ioWriteContext& out, const char* type, const std::string& text) {
    out.startPacket(type, nullptr);
    out.writeCString(text.c_str());
    out.endPacket();
}

/// Nothing pops the filters: close() completes what they hold.
ioStatus save(const zeString::IString& path) {
    ioSimplePacketRegistry types(false);
    types.add(titleType);
    types.add(lineType);
    ioBufferedStreamOutput stream;
    stream.openFile(path);
    const std::unique_ptr<ioWriteContext> out(ioWriteContextAlloc(stream, ioWriteBinary, &types));
    out->startFile();
    writeText(*out, titleType, "A long poem");
    pushFilters(stream); // Between two packets.
    for (int number = 1; number <= 500; ++number)
        writeText(*out, lineType,
                  "The rain in line " + std::to_string(number) +
                      " falls on and on and never ends at all.");
    out->endFile();
    stream.close();
    out->promoteStreamStatus(stream); // A failure in close() counts as well.
    return out->getStatus();
}

/// Follows a check of the file, and pushes the filters where the reader does.
struct Visitor : ioPacketFileVisitor {
    explicit Visitor(ioBufferedStream& input) : stream(input) {}

    bool packet(ioReadContext&, const ioPacketType& type, const ioPacketFilePlace&) override {
        if (type.getName() == std::string_view(titleType))
            pushFilters(stream);
        return true;
    }

    ioBufferedStream& stream;
};

/// Whether the file is complete. It reads all of it, and so finds damage as well.
ioStatus check(const zeString::IString& path) {
    ioBufferedStreamInput stream;
    stream.openFile(path);
    Visitor visitor(stream);
    const ioStatus status = ioPacketFileCheck(stream, &visitor);
    stream.close();
    return status;
}

struct Poem : ioClientReadContext {
    Poem(ioReadContext* context, ioBufferedStream& input)
        : ioClientReadContext(context), stream(input) {}

    ioBufferedStream& stream;
    int lines = 0;
    std::string lastLine;
};

void readTitle(ioClientReadContext& in) {
    if (const char* text = in.readCString())
        std::printf("title: %s\n", text);
    pushFilters(static_cast<Poem&>(in).stream);
}

void readLine(ioClientReadContext& in) {
    Poem& poem = static_cast<Poem&>(in);
    if (const char* text = in.readCString())
        poem.lastLine = text;
    ++poem.lines;
}

ioStatus load(const zeString::IString& path) {
    if (const ioStatus status = check(path); status != ioOK)
        return status;
    ioSimplePacketRegistry types(true);
    types.supportedType(new ioReadPacketByFunction(titleType, readTitle));
    types.supportedType(new ioReadPacketByFunction(lineType, readLine));
    ioBufferedStreamInput stream;
    stream.openFile(path);
    const std::unique_ptr<ioReadContext> in(ioReadContextAlloc(stream, &types));
    if (!in)
        return ioBadFile;
    Poem poem(in.get(), stream);
    const ioStatus status = poem.readFile();
    stream.close();
    std::printf("%d lines, the last is: %s\n", poem.lines, poem.lastLine.c_str());
    return status;
}

const char* message(ioStatus status) {
    switch (status) {
    case ioChecksumError:
        return "the checksum is wrong, the file is damaged";
    case ioBadFile:
        return "not a complete packet file";
    default:
        return "cannot be read or written";
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string command = argc == 3 ? argv[1] : "";
    if (command != "save" && command != "load") {
        std::fputs("usage: filters save FILE\n       filters load FILE\n", stderr);
        return 2;
    }
    const zeString::IString path(argv[2], zeString::EncodingUTF8);
    const ioStatus status = command == "save" ? save(path) : load(path);
    if (status == ioOK)
        return 0;
    std::fprintf(stderr, "filters: %s: %s\n", argv[2], message(status));
    return 1;
}
