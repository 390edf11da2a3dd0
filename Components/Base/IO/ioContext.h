// SPDX-License-Identifier: MIT

/// @file
/// What writing and reading packet files have in common: the status, the registry of types, the
/// map of references and the packets that are open.
///
/// A context owns its packet buffers and shares its reference map; it owns neither the stream nor
/// the registry, which must outlive it. What fails is in getStatus().
///
/// Threads: a context, its stream, its registry and its map belong to one thread at a time.
///
/// @code
/// #include "Base/IO/ioPacketFile.h"
/// ioBufferedStreamOutput stream; // nothing is open yet
/// ioWriteContextBinary context(stream);
/// context.startFile();
/// assert(context.getStatus() == ioError); // there is no registry
/// @endcode

#pragma once

#include "Base/IO/ioReferenceMap.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

class ioBufferedStream;
class ioPacketFileBuffer;
class ioPacketRegistry;
class ioPacketType;

/// How a file went. It stays until setStatus(), or ioReadContext::reusePacketFile().
enum ioStatus : int {
    ioOK = 0,           ///< No failure; also the result of a complete read.
    ioError = 1,        ///< Wrong use, or a failure of the stream.
    ioOpenError = 2,    ///< The stream failed to open.
    ioEndOfFile = 3,    ///< The end-of-file packet was read; readFile() turns it into ioOK.
    ioBadFile = 4,      ///< Unreadable list of types, unknown packet id, or an end too early.
    ioDiskFull = 5,     ///< The disk is full.
    ioHalted = 6,       ///< ioReadContext::halt() stopped the read.
    ioChecksumError = 7 ///< A checksummed block was damaged.
};

/// Base of ioWriteContext and ioReadContext.
class ZEBASE_API ioContext {
public:
    /// Starts with a reference map of its own and without a registry.
    ioContext();
    /// Not copied: a context stands at one place of one stream. Make a second one.
    ioContext(const ioContext&) = delete;
    ioContext& operator=(const ioContext&) = delete;
    /// Deletes the packet buffers and releases the map.
    virtual ~ioContext();

    /// @{
    /// For an object that is being deleted: lookups of its pointer, and of its number, fail from
    /// now on, and the end of the file does not look at it.
    virtual void undefineReference(void* pointer);
    virtual void undefineReference(int reference);
    /// @}

    // The access changes here and below only to keep the order of the virtual operations.
protected:
    /// Makes a packet buffer of the context's format.
    virtual ioPacketFileBuffer* allocPacket() = 0;
    /// Sets the buffer that the typed operations use from now on; null when no packet is open.
    virtual void setPacket(ioPacketFileBuffer* packet) = 0;

public:
    /// The registry stays the caller's and must outlive the context.
    void associateRegistry(ioPacketRegistry* registry) { registry_ = registry; }
    /// Shares a map (not null) with other contexts, so that reference numbers hold across their
    /// files.
    void associateReferenceMap(ioReferenceMap* map) { referenceMap_ = map; }
    /// Null as long as none was associated.
    ioPacketRegistry* getRegistry() const { return registry_; }
    /// Never null.
    ioReferenceMap* getReferenceMap() const { return referenceMap_.get(); }

    /// Null if no type has that id, or there is no registry.
    ioPacketType* lookupType(int id) const;

    /// @{
    /// Whether the number, or the number of the pointer, has its object.
    bool isReferenceDefined(int reference) const;
    bool isReferenceDefined(const void* pointer) const;
    /// @}
    /// The number of `pointer`: 0 for null, -1 for a pointer that has none.
    int getReference(const void* pointer) const;
    /// The pointer that belongs to `reference`, defined or not; null if there is none.
    void* getReferenceDefinition(int reference) const;
    /// Calls `callback` with location and offset of every usage by a packet of `type` that still
    /// waits for its definition.
    void reportUnresolvedPtrs(ioPacketType* type, void (*callback)(void* location, int offset));

    /// Gives the current packet up: it is not written, or need not define its reference.
    void invalidPacket();

    /// How the file has gone so far.
    ioStatus getStatus() const { return status_; }
    /// Whether nothing has failed.
    bool good() const { return status_ == ioOK; }
    /// Replaces the status.
    void setStatus(ioStatus status) { status_ = status; }
    /// Takes over the stream's status; one that is good changes nothing.
    void promoteStreamStatus(const ioBufferedStream& stream);

    /// Prints the packets that enclose the current one through ioPacketFileError(), and ends the
    /// process through ioPacketFileAbort().
    [[noreturn]] void fatalError();

protected:
    /// Null when no packet is open.
    ioPacketFileBuffer* currentPacket() const { return packet_; }
    /// The type of the current packet; null when no packet is open.
    ioPacketType* currentType() const;
    /// Between starting and ending a packet.
    bool isPacketOpen() const { return depth_ >= 0; }

    /// Opens the next level and returns its buffer, which lives as long as the context.
    ioPacketFileBuffer* pushPacket();
    /// Returns to the level below; nothing when no packet is open.
    void popPacket();

private:
    ioPacketRegistry* registry_ = nullptr;
    ioPacketFileBuffer* packet_ = nullptr;
    ze::Reference<ioReferenceMap> referenceMap_;
    ioPacketFileBuffer** packets_; // owned, and so are its members
    int capacity_;
    int depth_ = -1;
    ioStatus status_ = ioOK;
};
