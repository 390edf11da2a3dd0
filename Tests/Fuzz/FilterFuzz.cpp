// SPDX-License-Identifier: MIT

#include "Fuzz/FilterFuzz.h"

#include <algorithm>
#include <cstdlib>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioBufferChecksum.h"

#include "IO/filters/FilterSupport.h"

namespace fuzz {

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

std::string filtered(Filter filter, std::string_view bytes) {
    return ::filtered(filter, bytes);
}

std::string largeFrame() {
    std::string result;
    ioBufferChecksum link(false);
    link.chain(new MemorySink(false, 4096, result));
    link.write(std::string(5000, 'y').data(), 5000);
    link.flush();
    return result;
}

void readFiltered(Filter filter, std::string_view bytes) {
    const Unfiltered inBlocks = unfiltered(filter, std::string(bytes), 5000);
    const Unfiltered byByte = unfiltered(filter, std::string(bytes), 1, 3);
    require(inBlocks.status != streamOK && inBlocks.status == byByte.status);
    // A damaged block is delivered only to callers that read blocks.
    require(inBlocks.bytes.starts_with(byByte.bytes));
    require(inBlocks.after == byByte.after);
}

void roundTrip(Filter filter, std::string_view bytes) {
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

} // namespace fuzz
