// SPDX-License-Identifier: MIT

/// @file
/// Links for chains under test.

#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "Base/IO/ioBuffer.h"

/// A sink into memory that hands out at most `portion` bytes a read.
class MemorySink : public ioBuffer {
public:
    MemorySink(bool reading, int blockSize, std::string& bytes, std::size_t portion = 1 << 20)
        : ioBuffer(reading, blockSize), bytes_(bytes), portion_(portion) {}

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

private:
    std::string& bytes_;
    std::size_t portion_;
    std::size_t at_ = 0;
};

/// A filter that turns each byte around by a key, and writes a mark when it leaves a chain.
class KeyFilter : public ioBuffer {
public:
    KeyFilter(bool reading, int blockSize, char key) : ioBuffer(reading, blockSize), key_(key) {}
    ~KeyFilter() override { ++destroyed; }

    int getType() override { return 101; }
    void unchainHook() override {
        if (reading_)
            return;
        flush();
        next_->writeData("|", 1);
    }
    void close() override { next_->close(); }
    int read(char* destination, int n) override {
        const int got = next_->readData(destination, n);
        turn(destination, destination, got);
        promoteNextBufferStatus(got == 0);
        return got;
    }
    void write(const char* source, int n) override {
        std::string turned(std::size_t(n), '\0');
        turn(source, turned.data(), n);
        next_->writeData(turned.data(), n);
        promoteNextBufferStatus(true);
    }

    static inline int destroyed = 0;

private:
    void turn(const char* from, char* to, int n) const {
        std::transform(from, from + n, to, [this](char c) { return char(c ^ key_); });
    }

    char key_;
};

/// A stream over any chain.
template<class Stream>
class StreamOver : public Stream {
public:
    explicit StreamOver(ioBuffer* link) { this->startChain(link); }
    ioBuffer* top() const { return this->top_; }
};
