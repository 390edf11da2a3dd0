// SPDX-License-Identifier: MIT

// Old and new versions of a program read one another's files: each version puts what it adds into a
// chunk of its own. A reader ignores the chunks that it does not know, and uses defaults for those
// that are missing.
//
//     $ versions circle.zp
//     version 1 wrote: radius 2.5
//       version 1 reads: radius 2.5
//       version 2 reads: radius 2.5, colour 0 (default)
//       version 3 reads: radius 2.5, colour 0 (default), name "" (default)
//     version 2 wrote: radius 2.5, colour 7
//       version 1 reads: radius 2.5
//       version 2 reads: radius 2.5, colour 7
//       version 3 reads: radius 2.5, colour 7, name "" (default)
//     version 3 wrote: radius 2.5, colour 7, name "wheel"
//       version 1 reads: radius 2.5
//       version 2 reads: radius 2.5, colour 7
//       version 3 reads: radius 2.5, colour 7, name "wheel"

#include <cstdio>
#include <memory>
#include <string>

#include "Base/IO/ioPacketFile.h"
#include "Base/Strings/zeStringIString.h"

namespace {

constexpr const char* circleType = "circle";
constexpr int newestVersion = 3;

/// The values have their defaults.
struct Circle {
    double radius = 1;
    int colour = 0;
    std::string name;
};

/// What a program of some version has read.
struct Reader : ioClientReadContext {
    Reader(ioReadContext* context, int programVersion)
        : ioClientReadContext(context), version(programVersion) {}

    int version;
    bool hasColour = false;
    bool hasName = false;
    Circle circle;
};

/// A chunk ends where the next one starts, or with the packet.
void writeCircle(ioWriteContext& out, const Circle& circle, int version) {
    out.startPacket(circleType, nullptr);
    out.startChunk();
    out.writeDouble(circle.radius);
    if (version >= 2) {
        out.startChunk();
        out.writeInt(circle.colour);
    }
    if (version >= 3) {
        out.startChunk();
        out.writeCString(circle.name.c_str());
    }
    out.endPacket();
}

/// nextChunk() skips what is left of the chunk before, and is false if there are no more.
void readCircle(ioClientReadContext& in) {
    Reader& reader = static_cast<Reader&>(in);
    if (in.nextChunk())
        reader.circle.radius = in.readDouble();
    if (reader.version >= 2 && (reader.hasColour = in.nextChunk()))
        reader.circle.colour = in.readInt();
    if (reader.version >= 3 && (reader.hasName = in.nextChunk()))
        if (const char* name = in.readCString())
            reader.circle.name = name;
}

bool save(const Circle& circle, int version, const zeString::IString& path) {
    ioSimplePacketRegistry types(false);
    types.add(circleType);
    ioBufferedStreamOutput file;
    file.openFile(path);
    const std::unique_ptr<ioWriteContext> out(ioWriteContextAlloc(file, ioWriteBinary, &types));
    out->startFile();
    writeCircle(*out, circle, version);
    out->endFile();
    file.close();
    return out->good() && file.getStatus() == streamOK;
}

void print(const Circle& circle, int version, bool hasColour, bool hasName) {
    std::printf("radius %g", circle.radius);
    if (version >= 2)
        std::printf(", colour %d%s", circle.colour, hasColour ? "" : " (default)");
    if (version >= 3)
        std::printf(", name \"%s\"%s", circle.name.c_str(), hasName ? "" : " (default)");
    std::printf("\n");
}

bool load(int version, const zeString::IString& path) {
    ioBufferedStreamInput file;
    file.openFile(path);
    if (file.getStatus() != streamOK || ioPacketFileCheck(file) != ioOK || !file.seek(0))
        return false;
    ioSimplePacketRegistry types(true);
    types.supportedType(new ioReadPacketByFunction(circleType, readCircle));
    const std::unique_ptr<ioReadContext> in(ioReadContextAlloc(file, &types));
    if (!in)
        return false;
    Reader reader(in.get(), version);
    const bool isComplete = reader.readFile() == ioOK;
    file.close();
    if (isComplete) {
        std::printf("  version %d reads: ", version);
        print(reader.circle, version, reader.hasColour, reader.hasName);
    }
    return isComplete;
}

/// Writes the file as a program of `version`, and reads it as programs of all versions.
bool tryVersion(int version, const zeString::IString& path) {
    const Circle circle = {2.5, 7, "wheel"};
    if (!save(circle, version, path))
        return false;
    std::printf("version %d wrote: ", version);
    print(circle, version, true, true);
    for (int reader = 1; reader <= newestVersion; ++reader)
        if (!load(reader, path))
            return false;
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '-') {
        std::fputs("usage: versions FILE\n", stderr);
        return 2;
    }
    const zeString::IString path(argv[1], zeString::EncodingUTF8);
    for (int version = 1; version <= newestVersion; ++version)
        if (!tryVersion(version, path)) {
            std::fprintf(stderr, "versions: %s: cannot be written and read\n", argv[1]);
            return 1;
        }
    return 0;
}
