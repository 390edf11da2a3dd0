// SPDX-License-Identifier: MIT

/// @file
/// The image of one packet in memory: the base that the binary and the text format share.
///
/// A context has one buffer for each packet that is open and reuses it from one packet to the next.
/// Programs that save and load objects never meet a buffer: it is the seam at which a format is
/// realised.
///
/// Threads: a buffer belongs to its context, and with it to one thread at a time.
///
/// @code
/// #include "Base/IO/ioPacketFileBinary.h"
/// ioPacketFileBinaryBuffer buffer;
/// buffer.pushSubPacket();
/// buffer.setChunkOpen(true); // of this level alone
/// buffer.popSubPacket();
/// assert(!buffer.isChunkOpen() && buffer.isValid());
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

class ioBufferedStreamInput;
class ioBufferedStreamOutput;
class ioPacketType;
class ioReadContext;
class ioWriteContext;

/// One packet that is being written or read. It keeps what every format needs, the state of the
/// chunks at each level of sub-packets; derived classes hold the bytes and give the structure its
/// form. Lengths and other values of the structure go through the context's typed operations, so
/// that a context may add to each value.
class ZEBASE_API ioPacketFileBuffer {
public:
    /// A valid packet without a type, at its own level.
    ioPacketFileBuffer();
    /// Not copied: it is a part of its context.
    ioPacketFileBuffer(const ioPacketFileBuffer&) = delete;
    ioPacketFileBuffer& operator=(const ioPacketFileBuffer&) = delete;
    /// Contexts delete their buffers.
    virtual ~ioPacketFileBuffer();

    /// Starts a packet. `hasReference` is 0, or 1 where the body begins with the packet's
    /// reference.
    virtual void writePacketStart(ioWriteContext* context, int hasReference,
                                  ioPacketType* type) = 0;
    /// Completes the packet and, if it is still valid, writes it to the stream in one piece.
    virtual void writePacketEnd(ioWriteContext* context, ioBufferedStreamOutput& stream) = 0;
    /// @{
    /// Writes what begins or ends a chunk or a sub-packet.
    virtual void writeChunkStart(ioWriteContext* context) = 0;
    virtual void writeChunkEnd(ioWriteContext* context) = 0;
    virtual void writeSubPacketStart(ioWriteContext* context) = 0;
    virtual void writeSubPacketEnd(ioWriteContext* context) = 0;
    /// @}

    /// Reads a whole packet from the stream, sets its type and returns its hasReference value. The
    /// type stays null where the packet cannot be understood.
    virtual int readPacketStart(ioReadContext* context, ioBufferedStreamInput& stream) = 0;
    /// Leaves the packet, wherever in it the reader stands.
    virtual void readPacketEnd(ioReadContext* context) = 0;
    /// Enters the next chunk of this level, if there is one.
    virtual void readChunkStart(ioReadContext* context) = 0;
    /// Whether readChunkStart() met a chunk that is not empty.
    virtual bool isValidChunk() = 0;
    /// Skips what is left of the chunk.
    virtual void readChunkEnd(ioReadContext* context) = 0;
    /// Enters the next sub-packet.
    virtual void readSubPacketStart(ioReadContext* context) = 0;
    /// Skips what is left of the sub-packet.
    virtual void readSubPacketEnd(ioReadContext* context) = 0;

    /// Makes ready for the next packet: valid, without a type, at its own level with no chunk open.
    void reset() {
        level_ = 0;
        chunkFlags_[0] = 0;
        valid_ = true;
        type_ = nullptr;
    }

    /// The packet's type; null before it is known.
    ioPacketType* getType() const { return type_; }
    /// The type is not owned.
    void setType(ioPacketType* type) { type_ = type; }

    /// An invalid packet is not written, and need not define its reference on reading.
    bool isValid() const { return valid_; }
    /// Marks the packet invalid until the next reset().
    void setInvalid() { valid_ = false; }

    /// Sub-packets open now; 0 at the packet's own level.
    int getLevel() const { return level_; }
    /// Enters a sub-packet, with no chunk open in it.
    void pushSubPacket();
    /// Leaves a sub-packet; nothing at the packet's own level.
    void popSubPacket();

    /// Whether a chunk was started at this level and not yet ended.
    bool isChunkOpen() const { return chunkFlags_[level_] != 0; }
    /// Notes it for this level.
    void setChunkOpen(bool open) { chunkFlags_[level_] = open; }

private:
    char* chunkFlags_; // owned: for each level, whether a chunk is open
    int capacity_;
    int level_ = 0;
    bool valid_ = true;
    ioPacketType* type_ = nullptr;
};
