// SPDX-License-Identifier: MIT

// How a debug file finds a reader that was not changed along with its writer. A packet holds values
// without their types: a reader that asks for another type than was written reads nonsense and does
// not notice. In a debug file each value has a tag: the reader stops at the first wrong value and
// names both types. Only the write method differs.
//
//     $ outofstep circle.zp binary
//     wrote: radius 2.5, colour 7, name wheel
//     read:  radius 2.5, colour 1752629255, name eel
//     $ outofstep circle.zp binary-debug
//     wrote: radius 2.5, colour 7, name wheel
//     outofstep: Packet file type mismatch:
//     outofstep:    got: Short (68)
//     outofstep:    expected: Int (69)
//     outofstep: ioPacketFile: Fatal error.  Aborting.
//     outofstep: the reader does not match its writer
//     $ outofstep circle.zp text
//     wrote: radius 2.5, colour 7, name wheel
//     read:  radius 2.5, colour 7, name wheel
//     $ outofstep circle.zp text-debug 2> messages
//     wrote: radius 2.5, colour 7, name wheel
//     $ head --lines=1 messages
//     outofstep: Packet file type mismatch:
//     $ outofstep missing/circle.zp
//     outofstep: missing/circle.zp: cannot be written

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "Base/IO/ioPacketFile.h"
#include "Base/Strings/zeStringIString.h"

namespace {

constexpr const char* circleType = "circle";

/// The colour was an int once, and became a short to save room.
void writeCircle(ioWriteContext& out, double radius, short colour, const char* name) {
    out.startPacket(circleType, nullptr);
    out.writeDouble(radius);
    out.writeShort(colour);
    out.writeCString(name);
    out.endPacket();
}

/// This function was forgotten.
void readCircle(ioClientReadContext& in) {
    const double radius = in.readDouble();
    const int colour = in.readInt();
    const char* name = in.readCString();
    std::printf("read:  radius %g, colour %d, name %s\n", radius, colour, name ? name : "");
}

bool write(const zeString::IString& path, ioWriteMethod method) {
    ioSimplePacketRegistry types(false);
    types.add(circleType);
    ioBufferedStreamOutput stream;
    stream.openFile(path);
    const std::unique_ptr<ioWriteContext> context(ioWriteContextAlloc(stream, method, &types));
    context->startFile();
    writeCircle(*context, 2.5, 7, "wheel");
    context->endFile();
    stream.close();
    return context->good() && stream.getStatus() == streamOK;
}

bool read(const zeString::IString& path) {
    ioSimplePacketRegistry types(true);
    types.supportedType(new ioReadPacketByFunction(circleType, readCircle));
    ioBufferedStreamInput stream;
    stream.openFile(path);
    if (stream.getStatus() != streamOK || ioPacketFileCheck(stream) != ioOK || !stream.seek(0))
        return false;
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(stream, &types));
    if (!context)
        return false;
    ioClientReadContext client(context.get());
    const bool isComplete = client.readFile() == ioOK;
    stream.close();
    return isComplete;
}

/// Without hooks, the messages go to standard error and abort() ends the process. These put the
/// program's name before each line, and end by an exit code.
void setHooks() {
    ioPacketFileErrorInit([](char* text) { std::fprintf(stderr, "outofstep: %s", text); });
    ioPacketFileAbortInit([] {
        std::fputs("outofstep: the reader does not match its writer\n", stderr);
        std::exit(1);
    });
}

struct Method {
    std::string_view name;
    ioWriteMethod method;
};

constexpr Method methods[] = {{"binary", ioWriteBinary},
                              {"text", ioWriteAscii},
                              {"binary-debug", ioWriteBinaryDebug},
                              {"text-debug", ioWriteAsciiDebug}};

/// Null for arguments that are not understood.
const Method* chosenMethod(int argc, char** argv) {
    if (argc < 2 || argc > 3 || argv[1][0] == '-')
        return nullptr;
    const std::string_view name = argc == 3 ? argv[2] : "binary-debug";
    for (const Method& each : methods)
        if (each.name == name)
            return &each;
    return nullptr;
}

int fail(const char* path, const char* what) {
    std::fprintf(stderr, "outofstep: %s: cannot be %s\n", path, what);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    const bool isHelp = argc == 2 && argv[1] == std::string_view("--help");
    const Method* chosen = chosenMethod(argc, argv);
    if (chosen == nullptr) {
        std::fputs("usage: outofstep FILE [binary|text|binary-debug|text-debug]\n",
                   isHelp ? stdout : stderr);
        return isHelp ? 0 : 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // Keeps both outputs in order.
    setHooks();
    const zeString::IString path(argv[1], zeString::EncodingUTF8);
    if (!write(path, chosen->method))
        return fail(argv[1], "written");
    std::printf("wrote: radius 2.5, colour 7, name wheel\n");
    return read(path) ? 0 : fail(argv[1], "read");
}
