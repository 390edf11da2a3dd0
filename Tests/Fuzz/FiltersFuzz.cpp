// SPDX-License-Identifier: MIT

// FILTER is the name of the operation that pushes the filter.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Base/IO/ioBuffer.h"

#include "Fuzz/require.h"
#include "IO/filters/FilterSupport.h"

namespace {

constexpr Switch filter = &ioBufferedStream::FILTER;

/// Takes bytes that anybody may have made for those that come out below the filter. Read in blocks
/// and byte by byte, they must give the same, up to the end and behind it.
void readFiltered(std::string_view bytes) {
    const Unfiltered inBlocks = unfiltered(filter, std::string(bytes), 5000);
    const Unfiltered byByte = unfiltered(filter, std::string(bytes), 1, 3);
    require(inBlocks.status != streamOK && inBlocks.status == byByte.status);
    // A damaged block is delivered only to callers that read blocks.
    require(inBlocks.bytes.starts_with(byByte.bytes));
    require(inBlocks.after == byByte.after);
}

/// Writes bytes through the filter, with a flush now and then and other bytes around them, and
/// wants them back.
void roundTrip(std::string_view bytes) {
    if (bytes.empty())
        return; // a filter is pushed only if bytes follow
    std::string file;
    StreamOver<ioBufferedStreamOutput> output(new MemorySink(false, 4096, file));
    output.writeString("before");
    (output.*filter)(true);
    const std::size_t piece = 16U * static_cast<unsigned char>(bytes[0]) + 1;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        output.writeData(bytes.data() + at, static_cast<int>(std::min(piece, bytes.size() - at)));
        if (at % 3 == 0 && at < 500)
            output.flush();
    }
    (output.*filter)(false);
    output.writeString("after");
    output.flush();

    StreamOver<ioBufferedStreamInput> input(new MemorySink(true, 4096, file, 100));
    char word[6];
    input.readData(word, 6);
    (input.*filter)(true);
    std::string result(bytes.size(), '\0');
    require(input.readData(result.data(), static_cast<int>(result.size())) ==
            static_cast<int>(result.size()));
    require(result == bytes);
    if (filter == &ioBufferedStream::compress) { // the one that has an end of its own
        input.readChar();
        require(input.getStatus() == streamCompressEnd);
    }
    (input.*filter)(false);
    require(input.getStatus() == streamOK && readAll(input, 5000) == "after");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    readFiltered(bytes);
    roundTrip(bytes);
    return 0;
}
