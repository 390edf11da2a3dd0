// SPDX-License-Identifier: MIT

/// @file
/// Links for chains under test, and bytes to send through them.

#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "Base/IO/ioBuffer.h"

/// Random bytes from 0 to `range` - 1.
inline std::string randomData(std::size_t n, unsigned seed = 1, unsigned range = 256) {
    std::mt19937 random(seed);
    std::string bytes(n, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random() % range);
    return bytes;
}

/// A sink into memory that hands out at most `portion` bytes a read.
class MemorySink : public ioBuffer {
public:
    MemorySink(bool reading, int blockSize, std::string& bytes, std::size_t portion = 1 << 20)
        : ioBuffer(reading, blockSize), bytes_(bytes), portion_(portion) {}
    ~MemorySink() override { ++destroyed; }

    int getType() override { return 100; }
    void close() override { closed = true; }
    int read(char* destination, int n) override {
        const auto taken = bytes_.copy(destination, std::min(std::size_t(n), portion_), at_);
        at_ += taken;
        if (taken == 0)
            setStatus(bufferEOF);
        return static_cast<int>(taken);
    }
    void write(const char* source, int n) override { bytes_.append(source, std::size_t(n)); }

    bool closed = false;
    static inline int destroyed = 0;

private:
    std::string& bytes_;
    std::size_t portion_;
    std::size_t at_ = 0;
};

/// A stream over any chain.
template<class Stream>
class StreamOver : public Stream {
public:
    explicit StreamOver(ioBuffer* link) { this->startChain(link); }
    ioBuffer* top() const { return this->top_; }
};
