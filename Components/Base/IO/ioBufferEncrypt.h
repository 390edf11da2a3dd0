// SPDX-License-Identifier: MIT

/// @file
/// The filter that obscures bytes, so that they cannot be read or edited casually.
///
/// Pushed on a stream by ioBufferedStream::encrypt(true) and popped by encrypt(false).
///
/// It is a block cipher whose key every copy of the library contains. That keeps the content from
/// text editors and searches of the disk.
///
/// It gives neither secrecy nor authenticity. Whoever has the library can read the file, and can
/// change it unnoticed. Equal blocks of 16 bytes look equal in the file, and up to 15 bytes at the
/// end of each frame are stored as they are. A damaged file delivers wrong bytes without any
/// status: push ioBufferChecksum as well.
///
/// Nothing in the file says where the filter begins or ends: reader and writer must agree on it.
///
/// Threads: a link belongs to one thread at a time, together with its chain.
///
/// @code
/// #include <unistd.h>
/// #include "Base/Strings/zeStringIString.h"
///
/// const char plain[] = "sixteen bytes or more are needed";
/// ioBufferedStreamOutput out;
/// out.openFile(L"encrypt-example");
/// out.encrypt(true);
/// out.writeString(plain);
/// out.encrypt(false);
/// out.close();
///
/// char text[32];
/// ioBufferedStreamInput in;
/// in.openFile(L"encrypt-example");
/// in.readData(text, 2);
/// assert(text[0] == 1 && text[1] == 32); // version, length of the frame
/// in.readData(text, 32);
/// assert(memcmp(text, plain, 32) != 0);
/// in.seek(0);
/// in.encrypt(true);
/// assert(in.readData(text, 32) == 32 && memcmp(text, plain, 32) == 0);
/// in.close();
/// unlink("encrypt-example");
/// @endcode

#pragma once

#include <cstdint>

#include "Base/IO/ioBuffer.h"

/// The link that enciphers what is written through it, or deciphers what is read, in frames of at
/// most 240 bytes. Of a frame's bytes the whole blocks of 16 are enciphered.
class ZEBASE_API ioBufferEncrypt : public ioBuffer {
public:
    /// A link to push with ioBufferedStream::addBufferToChain(), as encrypt(true) does.
    explicit ioBufferEncrypt(bool reading);
    ~ioBufferEncrypt() override;

    /// Writes out what the link holds and flushes the chain below. A reader does nothing.
    void unchainHook() override;

    int getType() override;

    /// Closes the link below and promotes its failure. Bytes in the block are not written: flush
    /// first.
    void close() override;

    /// Reads one frame, or what is left of one, at most `n` bytes. bufferIOError if the version is
    /// unknown, or a frame is cut off or longer than 240 bytes. An empty frame gives 0 bytes with
    /// a good status.
    int read(char* destination, int n) override;

    /// Writes frames. Enciphers in place: changes the bytes at `source`, although they are const
    /// (the caller is the link itself, with its own block).
    void write(const char* source, int n) override;

private:
    ZEBASE_HIDDEN void initEncrypt();
    ZEBASE_HIDDEN void encrypt(char* data, int n) const;
    ZEBASE_HIDDEN void decrypt(char* data, int n) const;
    ZEBASE_HIDDEN void readFrame();

    bool started_ = false; ///< The version was handled and the schedule is set up.
    bool swap_ = false;    ///< The writer had the other byte order.
    std::uint32_t schedule_[44] = {};
    char frame_[240] = {}; ///< The frame being handed out.
    int frameLength_ = 0;
    int framePosition_ = 0;
};
