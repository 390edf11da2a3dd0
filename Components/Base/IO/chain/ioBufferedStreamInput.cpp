// SPDX-License-Identifier: MIT

#include "Base/IO/ioBufferedStreamInput.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "Base/IO/ioBufferFD.h"
#include "Base/IO/ioBufferFileSubset.h"
#include "Base/IO/ioBufferIOStream.h"
#include "Base/IO/ioBufferTCP.h"
#include "Base/IO/ioPackageFile.h"

namespace {

bool isDigit(int c) {
    return c >= '0' && c <= '9';
}

} // namespace

ioBufferedStreamInput::~ioBufferedStreamInput() = default;

void ioBufferedStreamInput::openFile(const zeString::IString& path) {
    auto* const sink = new ioBufferFD(true);
    startChain(sink);
    sink->open(path);
    dropChainOnFailure();
}

void ioBufferedStreamInput::openSocket(zeTCP::Socket* socket) {
    auto* const sink = new ioBufferTCP(true);
    startChain(sink);
    sink->open(socket);
    dropChainOnFailure();
}

void ioBufferedStreamInput::openIOStream(zeOS::IOStream* stream) {
    auto* const sink = new ioBufferIOStream(true);
    startChain(sink);
    sink->open(stream);
    dropChainOnFailure();
}

void ioBufferedStreamInput::openStdin() {
    auto* const sink = new ioBufferFD(true);
    startChain(sink);
    sink->useFD(fileno(stdin));
    dropChainOnFailure();
}

void ioBufferedStreamInput::openFileSlice(const zeString::IString& path, long offset, long size) {
    auto* const sink = new ioBufferFileSubset;
    delete std::exchange(top_, sink); // without a reset of the status
    sink->open(path, offset, size);
    promoteBufferStatus();
    // A chain at its end stays, so that the caller can tell an empty slice from a failure.
    if (status_ != streamOK && status_ != streamEOF) {
        top_->close();
        delete std::exchange(top_, nullptr);
    }
}

void ioBufferedStreamInput::openPackageFileEntry(const ioPackageFileEntry* entry) {
    resetStatus();
    if (!entry) {
        setStatus(streamIOError);
        return;
    }
    const zeString::IString path = entry->getPackageName();
    if (path.isEmpty())
        setStatus(streamOpenError);
    else
        openFileSlice(path, entry->getOffset(), entry->getSize());
}

long ioBufferedStreamInput::readInt() {
    constexpr int maxLength = 39;
    char text[maxLength + 1];
    int length = 0;
    int c = readChar();
    while (c == ' ' || c == '\t' || c == '\n')
        c = readChar();
    if (c == '-') {
        text[length++] = '-';
        c = readChar();
    }
    // The byte after the last one kept is read, and lost, even where it is a digit.
    while (isDigit(c) && length < maxLength) {
        text[length++] = static_cast<char>(c);
        c = readChar();
    }
    text[length] = '\0';
    return std::strtol(text, nullptr, 10);
}

void ioBufferedStreamInput::readLine(char* buffer, int size) {
    if (!buffer)
        return;
    int length = 0;
    if (size > 1 && status_ == streamOK) {
        do {
            buffer[length] = static_cast<char>(readChar());
        } while (buffer[length++] != '\n' && status_ == streamOK && length < size - 1);
    }
    buffer[length] = '\0';
}

/// Brings the next byte into the top link's block; false if there is none, or if the status is bad.
/// A link may deliver an empty block in good state, so one block may not be enough.
bool ioBufferedStreamInput::fetchBlock() {
    if (!top_)
        return false;
    do {
        top_->fillBuffer();
    } while (top_->position_ >= top_->count_ && top_->good());
    promoteBufferStatus();
    return status_ == streamOK;
}
