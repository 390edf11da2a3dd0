// SPDX-License-Identifier: MIT

// How a debug file finds a reader that was not changed along with its writer. A packet holds values
// without their types: a reader that asks for another type than was written reads nonsense and does
// not notice. In a debug file each value has a tag: the reader stops at the first wrong value and
// names both types. Only the write method differs.
//
//     $ outofstep --binary circle.zp
//     wrote: radius 2.5, colour 7, name wheel
//     read:  radius 2.5, colour 1752629255, name eel
//     $ outofstep --binary-debug circle.zp
//     wrote: radius 2.5, colour 7, name wheel
//     outofstep: Packet file type mismatch:
//     outofstep:    got: Short (68)
//     outofstep:    expected: Int (69)
//     outofstep: ioPacketFile: Fatal error.  Aborting.
//     outofstep: the reader does not match its writer
//     $ outofstep --text circle.zp --verbose
//     writing circle.zp
//         wrote: radius 2.5, colour 7, name wheel
//     reading circle.zp
//         read:  radius 2.5, colour 7, name wheel
//     $ echo 'outofstep.read = "gelesen:"' > german
//     $ outofstep --text circle.zp --messages german --quiet
//     gelesen: radius 2.5, colour 7, name wheel

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "Base/IO/ioPacketFile.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/OS/zeOSDebugTrace.h"
#include "Base/OS/zeOSGetOpt.h"
#include "Base/Strings/zeStringTableManager.h"
#include "Base/Strings/zeStringTableStringTable.h"

namespace {

using zeString::IString;

constexpr const char* circleType = "circle";

/// By their index: the first ones choose a method.
enum Option { binary, text, binaryDebug, textDebug, quiet, verbose, trace, messages, help };
constexpr ioWriteMethod methods[] = {ioWriteBinary, ioWriteAscii, ioWriteBinaryDebug,
                                     ioWriteAsciiDebug};

zeOS::AppOutputStream& out = zeOS::AppOutput::getInstance().status;

/// A word from the catalog, or else the English one.
const wchar_t* word(const char* key, const IString& english) {
    return zeStringTable::appStringTable().getString(key, english).asWChar();
}

/// The colour was an int once, and became a short to save room.
void writeCircle(ioWriteContext& to, double radius, short colour, const char* name) {
    to.startPacket(circleType, nullptr);
    to.writeDouble(radius);
    to.writeShort(colour);
    to.writeCString(name);
    to.endPacket();
}

/// This function was forgotten.
void readCircle(ioClientReadContext& in) {
    const double radius = in.readDouble();
    const int colour = in.readInt();
    const char* name = in.readCString();
    out("%S radius %g, colour %d, name %s\n", word("outofstep.read", L"read: "), radius, colour,
        name ? name : "");
}

bool write(const IString& path, ioWriteMethod method) {
    ioSimplePacketRegistry types(false);
    types.add(circleType);
    ioBufferedStreamOutput stream;
    stream.openFile(path);
    const std::unique_ptr<ioWriteContext> context(ioWriteContextAlloc(stream, method, &types));
    context->startFile();
    writeCircle(*context, 2.5, 7, "wheel");
    context->endFile();
    stream.close();
    if (!context->good() || stream.getStatus() != streamOK)
        return false;
    out(0, "%S radius 2.5, colour 7, name wheel\n", word("outofstep.wrote", L"wrote:"));
    return true;
}

bool read(const IString& path, ioWriteMethod) {
    ioSimplePacketRegistry types(true);
    types.supportedType(new ioReadPacketByFunction(circleType, readCircle));
    ioBufferedStreamInput stream;
    stream.openFile(path);
    if (stream.getStatus() != streamOK || ioPacketFileCheck(stream) != ioOK || !stream.seek(0))
        return false;
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(stream, &types));
    return context && ioClientReadContext(context.get()).readFile() == ioOK;
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

/// Says at level 1 what is done, and indents what it prints; at level 2 there is a trace as well.
bool step(const char* what, decltype(write)* function, const IString& path, ioWriteMethod method) {
    out(1, "%s %S\n", what, path.asWChar());
    const zeOS::AppOutputStatusTab tab(1);
    zeOS::DebugTrace traced(what, 2);
    traced.start(nullptr);
    const bool isDone = function(path, method);
    traced.stop();
    if (!isDone)
        std::fprintf(stderr, "outofstep: %s: %s failed\n", path.asMultibyte(), what);
    return isDone;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "");
    out.open("-", false);
    setHooks();
    zeOS::GetOpt options;
    options.addOption("binary", "outputfile", L"write and read this file");
    options.addOption("text", "outputfile", L"the same as text");
    options.addOption("binary-debug", "outputfile", L"the same with tags");
    options.addOption("text-debug", "outputfile", L"the same as text with tags");
    options.addOption("quiet", "", L"do not say what was written");
    options.addOption("verbose", "", L"say what is done");
    options.addOption("trace", "", L"say when that begins and ends as well");
    options.addOption("messages", "inputfile", L"take words from this catalog");
    options.addOption("help", "", L"print this and end");
    options.initialize(argc - 1, argv + 1);
    IString path;
    ioWriteMethod method = ioWriteBinaryDebug;
    bool needsHelp = false;
    while (const auto* found = options.getOpt()) {
        const int option = options.getResultIndex(found);
        if (option == help)
            needsHelp = true;
        else if (option == messages) // what it lacks stays English
            (void)zeStringTable::Manager::loadCatalog(options.getResultArg(found, 0));
        else if (option >= quiet)
            out.setLevel(option == quiet ? -1 : option - quiet);
        else {
            path = options.getResultArg(found, 0);
            method = methods[option];
        }
    }
    if (options.hasErrors())
        std::fprintf(stderr, "outofstep: %s\n", options.getError().asMultibyte());
    if (needsHelp || options.hasErrors() || path.length() == 0) {
        std::FILE* const file = needsHelp ? stdout : stderr;
        std::fputs("usage: outofstep METHOD FILE [OPTION]...\n", file);
        for (int i = 0; i < options.getNumOptions(); ++i)
            std::fputs(options.getOptionUsage(options.getOption(i), false).asMultibyte(), file);
        return needsHelp ? 0 : 2;
    }
    const bool isDone = step("writing", write, path, method) && step("reading", read, path, method);
    return isDone ? 0 : 1;
}
