// SPDX-License-Identifier: MIT

// Bytes that a peer sends, taken for framed strings and for packets.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Base/IO/ioPacketFileCheck.h"
#include "Base/Strings/zeStringCString.h"

#include "IO/chain/TestLinks.h"
#include "TCP/Connection.h"

namespace {

/// The longest frame, and some bytes: what a connection takes before anybody reads.
constexpr std::size_t maxSize = 70000;

void require(bool holds) {
    if (!holds)
        std::abort();
}

/// The obvious way to take frames apart, up to the first that is not whole.
std::vector<std::string_view> twinOfFrames(std::string_view bytes) {
    std::vector<std::string_view> frames;
    while (bytes.size() >= 2) {
        const auto high = static_cast<unsigned char>(bytes[0]);
        const auto low = static_cast<unsigned char>(bytes[1]);
        const std::size_t size = 256U * high + low;
        if (bytes.size() - 2 < size)
            break;
        frames.push_back(bytes.substr(2, size));
        bytes.remove_prefix(2 + size);
    }
    return frames;
}

std::string_view upToATerminator(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

/// All whole frames come, then an error; what was read before stays.
void readFrames(std::string_view bytes) {
    Pair pair{std::string(bytes)};
    pair.there.close(2);
    zeString::CString text("none");
    std::string last = "none";
    for (const std::string_view frame : twinOfFrames(bytes)) {
        require(pair.here.read(text).code() == 0);
        require(text.asChar() == upToATerminator(frame));
        last = text.asChar();
    }
    require(pair.here.read(text).code() == 4 && text.asChar() == last);
}

/// Frames that are written anew are the same bytes.
void writeFrames(std::string_view bytes) {
    Pair pair;
    for (const std::string_view frame : twinOfFrames(bytes)) {
        const zeString::CString text(frame.data(), static_cast<int>(frame.size()));
        require(pair.there.write(text).code() == 0);
        std::string wire(frame.size() + 2, '\0');
        require(pair.here.read(wire.data(), wire.size(), nullptr).code() == 0);
        require(wire == std::string_view(frame.data() - 2, wire.size()));
    }
}

/// A packet file is judged over a connection as from memory, but that a cut one has failed there
/// and is short here.
void checkPackets(std::string_view bytes) {
    std::string copy(bytes);
    Pair pair(copy);
    pair.there.close(2);
    ioBufferedStreamInput socketStream;
    socketStream.openSocket(&pair.here);
    const ioStatus overSocket = ioPacketFileCheck(socketStream);
    StreamOver<ioBufferedStreamInput> memoryStream(new MemorySink(true, 4096, copy));
    const ioStatus inMemory = ioPacketFileCheck(memoryStream);
    require((overSocket == ioOK) == (inMemory == ioOK));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), std::min(size, maxSize));
    readFrames(bytes);
    writeFrames(bytes);
    checkPackets(bytes);
    return 0;
}
