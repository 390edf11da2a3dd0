// SPDX-License-Identifier: MIT

/// @file
/// Packet types: what a kind of saved object is called, and how a packet of it is read.
///
/// Every packet of a file has a type, known by its name. A program makes one ioPacketType for each
/// kind of object that it saves and hands them to an ioPacketRegistry, which owns them from then
/// on; on loading, the library calls the type's read() for each packet that it meets. Derive from
/// ioPacketType, or name a function: ioReadPacketByFunction, ioSimplePacketType.
///
/// Threads: a type belongs to one registry, and with it to one thread at a time.
///
/// @code
/// struct MeshType : ioPacketType {
///     MeshType() : ioPacketType("mesh") {}
///     void read(ioClientReadContext&) override {} // reads the values of one mesh
/// };
/// MeshType mesh;
/// assert(mesh.getId() == -1); // numbered by the registry
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

class ioClientReadContext;
class ioWriteContext;

/// A kind of packet. Used as it is, it names a type that can be written but that this program does
/// not know how to read: its read() passes over the packet.
class ZEBASE_API ioPacketType {
public:
    /// Copies the name. Names longer than 80 bytes, or with white space in them, do not survive the
    /// list of types at the start of a file.
    explicit ioPacketType(const char* name);
    /// Not copied, since a registry owns its types: make a second one.
    ioPacketType(const ioPacketType&) = delete;
    ioPacketType& operator=(const ioPacketType&) = delete;
    /// Types that a registry owns are deleted by it.
    virtual ~ioPacketType();

    /// Reads one packet of this type, from its first value to as far as this program knows it; what
    /// is left unread is skipped. Where the packet has a reference (getPacketReference() is not 0),
    /// read() must define it, or call invalidPacket(). The base marks the packet invalid.
    virtual void read(ioClientReadContext& client);

    /// Called at the end of a file for each `memory` that a packet of this type defined and that
    /// nothing referred to. The base does nothing.
    virtual void memoryNotReferenced(ioClientReadContext& client, void* memory);

    /// Called at the end of a file for each use, by a packet of this type, of a reference that
    /// nothing defined.
    /// `pointer` is what was associated with it without a definition (mostly null), `offset` is the
    /// number that the reader passed along with the usage.
    virtual void hasUnresolvedPointer(ioClientReadContext& client, void* pointer, int offset);

    /// The type's index in its registry, -1 until it is numbered. Ids hold within one file only.
    int getId() const { return id_; }
    /// The name as it was given to the constructor.
    const char* getName() const { return name_; }

    /// Counts one packet of this type.
    void used() const { ++usages_; }
    /// How many packets of this type were started by writers, or met by readers.
    int getNumUsages() const { return usages_; }

    /// True once memory of this type was found unreferenced at the end of a file.
    bool isUnreferenced() const { return (flags_ & unreferencedFlag) != 0; }
    /// True once a reference used by this type was found unresolved at the end of a file.
    bool isUnresolved() const { return (flags_ & unresolvedFlag) != 0; }

    /// Remembers the fact for isUnreferenced(), then calls memoryNotReferenced().
    void handleUnreferencedMemory(ioClientReadContext& client, void* memory);
    /// Remembers the fact for isUnresolved(), then calls hasUnresolvedPointer().
    void handleUnresolvedPtr(ioClientReadContext& client, void* pointer, int offset);

private:
    friend class ioPacketRegistryImpl; // gives out the ids

    static constexpr unsigned int unresolvedFlag = 1;
    static constexpr unsigned int unreferencedFlag = 2;

    char* name_; // owned
    int id_ = -1;
    mutable int usages_ = 0; // counted on the const types that writers are given
    unsigned int flags_ = 0;
};

/// A type whose packets are read by a plain function.
class ZEBASE_API ioReadPacketByFunction : public ioPacketType {
public:
    /// `function` must not be null.
    ioReadPacketByFunction(const char* name, void (*function)(ioClientReadContext&));
    ~ioReadPacketByFunction() override;

    void read(ioClientReadContext& client) override;

private:
    void (*function_)(ioClientReadContext&);
};

/// What an ioSimplePacketType calls to read a packet. It receives no context: it must know it.
class ZEBASE_API ioReadCallback {
public:
    virtual ~ioReadCallback();
    /// Reads the packet that is open.
    virtual void read() = 0;
};

/// A callback that calls a plain function.
class ZEBASE_API ioGlobalReadCallback : public ioReadCallback {
public:
    /// `function` must not be null.
    explicit ioGlobalReadCallback(void (*function)());
    ~ioGlobalReadCallback() override;

    void read() override;

private:
    void (*function_)();
};

/// A type whose packets are read by a callback. Without one it is for writing only: its packets are
/// passed over on reading.
class ZEBASE_API ioSimplePacketType : public ioPacketType {
public:
    /// The callback stays the caller's and must outlive the type.
    explicit ioSimplePacketType(const char* name, ioReadCallback* callback = nullptr);
    ~ioSimplePacketType() override;

    void read(ioClientReadContext& client) override;

private:
    ioReadCallback* callback_;
};

/// The built-in type of strings that other packets refer to: ioWriteContext::writeCStringPacket().
///
/// A string that is read lies in memory from `malloc`. Whoever resolves a reference to it owns that
/// memory and frees it with `free`; what nobody referred to reaches memoryNotReferenced() of this
/// type, which leaves it alone. Of several strings with one reference in one file, as only damaged
/// files have them, the first stays.
class ZEBASE_API ioPacketString : public ioPacketType {
public:
    /// Its name is "packetFile_string".
    ioPacketString();
    ~ioPacketString() override;

    void read(ioClientReadContext& client) override;
};

/// The built-in type of the packet that ends every file.
class ZEBASE_API ioPacketEOF : public ioPacketType {
public:
    /// Its name is "packetFile_EOF".
    ioPacketEOF();
    ~ioPacketEOF() override;

    void read(ioClientReadContext& client) override;
    /// Writes the packet: no reference and no values.
    virtual void write(ioWriteContext& context);
};
