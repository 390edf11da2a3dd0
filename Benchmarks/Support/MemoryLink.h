// SPDX-License-Identifier: MIT

/// @file
/// Ends of a chain in memory, so that a filter alone is measured.

#pragma once

#include <algorithm>
#include <cstring>
#include <string>

#include "Base/IO/ioBuffer.h"

namespace bench {

/// A sink that appends to a text, or a source that reads from it, a block at a time.
class MemoryLink : public ioBuffer {
public:
    MemoryLink(bool reading, std::string& bytes) : ioBuffer(reading, 65536), bytes_(bytes) {}

    int getType() override { return 100; }
    void close() override {}
    int read(char* destination, int n) override {
        const size_t taken = std::min(size_t(n), bytes_.size() - at_);
        std::memcpy(destination, bytes_.data() + at_, taken);
        at_ += taken;
        if (taken == 0)
            setStatus(bufferEOF);
        return int(taken);
    }
    void write(const char* source, int n) override { bytes_.append(source, size_t(n)); }

private:
    std::string& bytes_;
    size_t at_ = 0;
};

/// A stream over one link, with filters pushed by the stream's own operations.
template<class Stream>
class StreamOver : public Stream {
public:
    explicit StreamOver(ioBuffer* link) { this->startChain(link); }
};

} // namespace bench
