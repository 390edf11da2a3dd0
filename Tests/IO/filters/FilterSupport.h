// SPDX-License-Identifier: MIT

/// @file
/// Filters over memory.

#pragma once

#include <algorithm>
#include <string>

#include "Base/IO/ioBuffer.h"

#include "IO/chain/TestLinks.h"

using Switch = void (ioBufferedStream::*)(bool);

/// What a filter makes of `bytes`, handed over in the given pieces, over and over.
inline std::string filtered(Switch filter, const std::string& bytes,
                            const std::vector<int>& pieces = {1 << 30}) {
    std::string result;
    StreamOver<ioBufferedStreamOutput> stream(new MemorySink(false, 4096, result));
    (stream.*filter)(true);
    std::size_t at = 0;
    for (std::size_t i = 0; at < bytes.size(); ++i) {
        const auto n = std::min(std::size_t(pieces[i % pieces.size()]), bytes.size() - at);
        stream.writeData(bytes.data() + at, int(n));
        at += n;
    }
    (stream.*filter)(false);
    return stream.getStatus() == streamOK ? result : "failed";
}

struct Unfiltered {
    std::string bytes;
    ioStreamStatus status;
    std::string after; ///< What is read once the filter is gone, if the status is good by then.

    bool operator==(const Unfiltered&) const = default;
};

/// Reads through a filter to the end, in pieces of the given size, and then without it.
inline Unfiltered unfiltered(Switch filter, std::string bytes, int piece = 10'000) {
    StreamOver<ioBufferedStreamInput> stream(new MemorySink(true, 4096, bytes));
    (stream.*filter)(true);
    Unfiltered result;
    std::string read(std::size_t(piece), '\0');
    while (stream.getStatus() == streamOK)
        result.bytes.append(read, 0, std::size_t(stream.readData(read.data(), piece)));
    result.status = stream.getStatus();
    (stream.*filter)(false);
    while (stream.getStatus() == streamOK)
        result.after.append(read, 0, std::size_t(stream.readData(read.data(), piece)));
    return result;
}
