// SPDX-License-Identifier: MIT

#include "Fuzz/FilterFuzz.h"

#include <algorithm>
#include <cstdlib>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioBufferChecksum.h"

#include "IO/chain/TestLinks.h"

namespace fuzz {

namespace {

struct Outcome {
    std::string bytes;
    ioStreamStatus status = streamOK; // at the end of what is filtered
    std::string rest;                 // behind it
};

/// Up to where the stream has no more.
std::string readAll(ioBufferedStreamInput& stream) {
    std::string result;
    char block[5000];
    for (int n = 1; n > 0; result.append(block, static_cast<std::size_t>(n)))
        n = stream.readData(block, sizeof block);
    return result;
}

std::string readBytes(ioBufferedStreamInput& stream) {
    std::string result;
    for (int c = stream.readChar(); stream.getStatus() == streamOK; c = stream.readChar())
        result.push_back(static_cast<char>(c));
    return result;
}

Outcome read(Filter filter, std::string bytes, int blockSize, auto read) {
    ioBufferedStreamInput stream;
    stream.addBufferToChain(new MemorySink(true, blockSize, bytes));
    (stream.*filter)(true);
    Outcome outcome;
    outcome.bytes = read(stream);
    outcome.status = stream.getStatus();
    (stream.*filter)(false);
    outcome.rest = readAll(stream);
    return outcome;
}

void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

std::string filtered(Filter filter, std::string_view bytes) {
    std::string result;
    ioBufferedStreamOutput stream;
    stream.addBufferToChain(new MemorySink(false, 4096, result));
    (stream.*filter)(true);
    stream.writeData(bytes.data(), static_cast<int>(bytes.size()));
    (stream.*filter)(false);
    stream.flush();
    return result;
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
    const Outcome inBlocks = read(filter, std::string(bytes), 4096, readAll);
    const Outcome byByte = read(filter, std::string(bytes), 3, readBytes);
    require(inBlocks.status != streamOK && inBlocks.status == byByte.status);
    // A damaged block is handed out to who asks for blocks alone.
    require(inBlocks.bytes.starts_with(byByte.bytes));
    require(inBlocks.rest == byByte.rest);
}

void roundTrip(Filter filter, std::string_view bytes) {
    if (bytes.empty())
        return; // a filter is pushed only if bytes follow
    std::string file;
    ioBufferedStreamOutput output;
    output.addBufferToChain(new MemorySink(false, 4096, file));
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

    ioBufferedStreamInput input;
    input.addBufferToChain(new MemorySink(true, 4096, file, 100));
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
    require(input.getStatus() == streamOK && readAll(input) == "after");
}

} // namespace fuzz
