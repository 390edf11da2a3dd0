// SPDX-License-Identifier: MIT

// A reader that was not changed along with its writer, and how a debug file finds it.

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
    std::printf("wrote: radius %g, colour %d, name %s\n", radius, colour, name);
}

/// Nobody told this function.
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
    if (stream.getStatus() != streamOK)
        return false;
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(stream, &types));
    ioClientReadContext client(context.get());
    const bool complete = context && client.readFile() == ioOK;
    stream.close();
    return complete;
}

/// A mismatch ends the process. The hooks decide how: these say who speaks, and leave by an exit
/// code instead of a signal.
void setHooks() {
    ioPacketFileErrorInit([](char* text) { std::fprintf(stderr, "outofstep: %s", text); });
    ioPacketFileAbortInit([] {
        std::fputs("outofstep: the reader is out of step with its writer\n", stderr);
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

/// Null for arguments that are not understood, "--help" among them.
const Method* chosenMethod(int argc, char** argv) {
    if (argc < 2 || argc > 3 || argv[1][0] == '-')
        return nullptr;
    const std::string_view name = argc == 3 ? argv[2] : "binary-debug";
    for (const Method& each : methods)
        if (each.name == name)
            return &each;
    return nullptr;
}

} // namespace

int main(int argc, char** argv) {
    const Method* chosen = chosenMethod(argc, argv);
    if (chosen == nullptr) {
        std::fputs("usage: outofstep FILE [binary|text|binary-debug|text-debug]\n", stderr);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // its lines stand before those of the hooks
    setHooks();
    const zeString::IString path(argv[1]);
    if (write(path, chosen->method) && read(path))
        return 0;
    std::fprintf(stderr, "outofstep: %s: cannot be written and read\n", argv[1]);
    return 1;
}
