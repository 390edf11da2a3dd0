// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferedStreamOutput.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Base/IO/ioBufferFD.h"
#include "Base/IO/ioBufferIOStream.h"
#include "Base/IO/ioBufferTCP.h"
#include "Base/Strings/zeStringPrintf.h"

ioBufferedStreamOutput::~ioBufferedStreamOutput() = default;

// Opening a file does not promote: a writer learns of a failure after its first write or flush.
void ioBufferedStreamOutput::openFile(const zeString::IString& path) {
    auto* const sink = new ioBufferFD(false);
    startChain(sink);
    sink->truncateOnOpen(truncate_);
    sink->open(path);
}

void ioBufferedStreamOutput::close() {
    flush();
    ioBufferedStream::close();
}

void ioBufferedStreamOutput::openSocket(zeTCP::Socket* socket) {
    auto* const sink = new ioBufferTCP(false);
    startChain(sink);
    sink->open(socket);
    dropChainOnFailure();
}

void ioBufferedStreamOutput::openIOStream(zeOS::IOStream* stream) {
    auto* const sink = new ioBufferIOStream(false);
    startChain(sink);
    sink->open(stream);
    dropChainOnFailure();
}

void ioBufferedStreamOutput::openStdout() {
    auto* const sink = new ioBufferFD(false);
    startChain(sink);
    sink->useFD(fileno(stdout));
}

void ioBufferedStreamOutput::flush() {
    if (!top_)
        return;
    top_->flush();
    promoteBufferStatus();
}

void ioBufferedStreamOutput::writeChar(char c) {
    if (!top_)
        return;
    // Compared with the count, which is 0 on writing: each call pushes out the byte before.
    if (top_->position_ >= top_->count_) {
        top_->flushBuffer();
        promoteBufferStatus();
        // A bad link keeps its block, which may be full.
        if (status_ != streamOK)
            return;
    }
    top_->block_[top_->position_++] = c;
}

void ioBufferedStreamOutput::writeString(const char* text) {
    writeData(text, static_cast<int>(std::strlen(text)));
}

void ioBufferedStreamOutput::printf(const char* format, ...) {
    char text[1024] = "";
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    ZL_vsnprintf(text, sizeof text, format, arguments.list);
    writeString(text);
}
