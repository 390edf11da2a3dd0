// SPDX-License-Identifier: MIT

/// @file
/// Filters over memory.

#pragma once

#include <algorithm>
#include <string>

#include "Base/IO/ioBuffer.h"

#include "IO/chain/TestLinks.h"

using Switch = void (ioBufferedStream::*)(bool);

/// What a filter makes of `bytes`, written in the given pieces, over and over.
inline std::string filtered(Switch filter, std::string_view bytes,
                            const std::vector<int>& pieces = {1 << 30}) {
    std::string result;
    StreamOver<ioBufferedStreamOutput> stream(new MemorySink(false, 4096, result));
    (stream.*filter)(true);
    for (std::size_t i = 0; !bytes.empty(); ++i) {
        const auto n = std::min(std::size_t(pieces[i % pieces.size()]), bytes.size());
        stream.writeData(bytes.data(), int(n));
        bytes.remove_prefix(n);
    }
    (stream.*filter)(false);
    return stream.getStatus() == streamOK ? result : "failed";
}

struct Unfiltered {
    std::string bytes;
    ioStreamStatus status; ///< At the end of what is filtered.
    std::string after;     ///< What is read without the filter, if the status is good by then.

    bool operator==(const Unfiltered&) const = default;
};

/// Reads until the status is no longer good: in pieces of the given size, or byte by byte.
inline std::string readAll(ioBufferedStreamInput& stream, int piece) {
    std::string all;
    std::string read(std::size_t(piece), '\0');
    while (stream.getStatus() == streamOK) {
        if (piece > 1)
            all.append(read, 0, std::size_t(stream.readData(read.data(), piece)));
        else if (const int c = stream.readChar(); stream.getStatus() == streamOK)
            all += static_cast<char>(c);
    }
    return all;
}

/// Reads through a filter to the end, and then without it.
inline Unfiltered unfiltered(Switch filter, std::string bytes, int piece = 10'000,
                             int blockSize = 4096) {
    StreamOver<ioBufferedStreamInput> stream(new MemorySink(true, blockSize, bytes));
    (stream.*filter)(true);
    Unfiltered result;
    result.bytes = readAll(stream, piece);
    result.status = stream.getStatus();
    (stream.*filter)(false);
    result.after = readAll(stream, piece);
    return result;
}
