// SPDX-License-Identifier: MIT

/// @file
/// A byte stream that keeps what is written in blocks of memory, plain or moveable, and reads it
/// back.
///
/// Writing appends, and never moves what was written before: the stream is a list of blocks, which
/// can be handed from one stream to another. With a zeOS::MoveableAllocator the blocks are moveable
/// memory, and the stream maps one at a time, so that a long stream takes the address space of one
/// block.
///
/// Threads: a stream, its blocks and its allocator belong to one thread at a time.
///
/// @code
/// zeOS::MemoryIOStream stream(4096, nullptr);
/// stream.openForWrite();
/// assert(stream.write("bottles", 7, nullptr).code() == 0);
/// stream.close();
/// assert(stream.getSize() == 7);
///
/// char text[16];
/// unsigned long done = 0;
/// stream.openForRead();
/// assert(stream.read(text, sizeof text, &done).code() == 0 && done == 7);
/// assert(stream.read(text, sizeof text, &done).code() == 1); // the end
/// @endcode

#pragma once

#include <list>

#include "Base/OS/zeOSIOStream.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zeOS {

class MoveableAllocator;
class MoveableChunk;

/// Closed, or open for writing or for reading. Both directions begin at the start; opening for
/// writing drops what was written before.
class ZEBASE_API MemoryIOStream : public IOStream {
public:
    /// A piece of memory, plain or moveable.
    class ZEBASE_API Block : public ze::ReferenceCount {
    public:
        /// `size` uninitialised bytes; allocates nothing if that is 0. They are moveable memory
        /// from `allocator`, or plain memory if that is null. If the allocator fails, the block has
        /// its size but no data.
        Block(unsigned long size, MoveableAllocator* allocator);
        Block(const Block&) = delete;            ///< Share it by ze::Reference.
        Block& operator=(const Block&) = delete; ///< Share it by ze::Reference.
        ~Block() override;

        /// Gives moveable memory its address: getData(). Does nothing for plain memory.
        void map();

        /// Makes the address of moveable memory invalid. Does nothing for plain memory.
        void unmap();

        /// The first byte; null while moveable memory is not mapped.
        void* getData() const { return data_; }

        /// In bytes.
        unsigned long getSize() const { return size_; }

        /// Sets the size to `size`, which must not exceed the size at construction. Frees nothing.
        void reduceSize(unsigned long size) { size_ = size; }

    private:
        unsigned long size_;
        void* data_ = nullptr;
        MoveableChunk* chunk_ = nullptr; // owned; null for plain memory
    };

    /// The blocks of a stream, in order.
    using BlockList = std::list<ze::Reference<Block>>;

    /// A closed stream of blocks of `blockSize` bytes, at least 1. `allocator`, null for plain
    /// memory, is not owned and must outlive the blocks.
    MemoryIOStream(unsigned long blockSize, MoveableAllocator* allocator);
    MemoryIOStream(const MemoryIOStream&) = delete;            ///< Hand over its blocks instead.
    MemoryIOStream& operator=(const MemoryIOStream&) = delete; ///< Hand over its blocks instead.

    /// Frees the blocks that nobody else refers to.
    ~MemoryIOStream() override;

    /// Closes the stream if it is open, drops all blocks, and begins to write.
    void openForWrite();

    /// Closes the stream if it is open, and begins to read.
    void openForRead();

    /// After writing, sets the last block's size to the number of bytes in it. Unmaps the blocks.
    void close();

    /// Reads up to `count` bytes. A short read is a success. `Error(1, "EOF")` if there are none
    /// left, and for a `count` of 0; `Error(1, "Stream is not open for read")` if it is not.
    /// `done`, if not null, receives the number of bytes.
    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override;

    /// Writes all `count` bytes. `Error(1, "Stream not open for write")` if it is not. `done`, if
    /// not null, receives `count`, or 0 if the stream is not open for writing. The allocator must
    /// not fail: access to a block without data is not guarded against, and ends the process.
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override;

    /// The sum of the blocks' sizes in bytes. While the stream is open for writing, the last block
    /// counts whole.
    unsigned long getSize() const;

    /// The blocks, which stay the stream's.
    const BlockList& getBlocks() const { return blocks_; }

    /// @{
    /// Moves blocks between the stream and `list`. What the receiving side held before is dropped,
    /// and the giving side is empty afterwards. An open stream goes on at the start of its blocks
    /// when reading, and after the last one when writing. Close a stream before its blocks are
    /// released: only close() sets the size of the last one.

    /// Gives the blocks away.
    void releaseBlocks(BlockList& list);

    /// Takes the blocks over.
    void setBlocks(BlockList& list);
    /// @}

private:
    ZEBASE_HIDDEN void unmapBlocks();
    ZEBASE_HIDDEN void restart();

    BlockList blocks_;
    unsigned long blockSize_;
    bool readable_ = false;
    bool writable_ = false;
    unsigned long position_ = 0; // in the current block
    BlockList::iterator readBlock_;
    MoveableAllocator* allocator_;
};

} // namespace zeOS
