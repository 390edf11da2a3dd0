// SPDX-License-Identifier: MIT

/// @file
/// The registry of packet types: which types a program knows, and which numbers a file gives them.
///
/// A registry for writing numbers its types in the order in which they come (`namesOnly` false). A
/// registry for reading knows them by name alone (`namesOnly` true) until the list of types at the
/// start of a file numbers them: ids mean nothing outside their file. The types of a registry die
/// with it.
///
/// A type keeps the id that it was given first. So a registry may serve one file after the other
/// only while their lists are alike, and a registry for writing is complete before startFile().
/// What could only be misread ends in the status of the context: a list that numbers types
/// otherwise (isMisnumbered()) gives `ioBadFile` on reading, a name that stands under two ids
/// (hasNameTwice()) and a type that readers would not know (isListed()) give `ioError` on writing.
///
/// Threads: a registry and its types belong to one thread at a time.
///
/// @code
/// ioSimplePacketRegistry registry(false);
/// registry.add("mesh");
/// registry.init(); // done by startFile() and readFile()
/// assert(registry.lookup("mesh")->getId() == 0);
/// assert(registry.lookup(1) == registry.lookup("packetFile_string"));
/// assert(registry.numTypes() == 3);
/// @endcode

#pragma once

#include "Base/IO/ioPacketType.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/zeBaseExport.h"

class ioBufferedStreamInput;
class ioBufferedStreamOutput;
class ioPacketRegistryImpl;

/// Base of registries: derive from it and register your types in registerAllTypes(), or fill an
/// ioSimplePacketRegistry.
class ZEBASE_API ioPacketRegistry {
public:
    /// `namesOnly`: true for reading, false for writing.
    explicit ioPacketRegistry(bool namesOnly);
    /// Not copied, since it owns its types: fill a second one.
    ioPacketRegistry(const ioPacketRegistry&) = delete;
    ioPacketRegistry& operator=(const ioPacketRegistry&) = delete;
    /// Deletes the types.
    virtual ~ioPacketRegistry();

    /// Called once, by the first init(), behind the built-in types: passes each type that the
    /// program knows to supportedType().
    virtual void registerAllTypes() = 0;

    /// Takes over `type`, which must not be in another registry. Of two types with one name the
    /// later counts. A type that is added before init() comes ahead of the built-in ones.
    void supportedType(ioPacketType* type);

    /// Null if the name is unknown. Costs one search in an ordered map.
    ioPacketType* lookup(const char* name) const;
    /// Null if no type has that id.
    ioPacketType* lookup(int id) const;
    /// The number of names known, which may exceed the number of ids.
    int numTypes() const;

    /// Registers the built-in types and then the program's own, the first time; the contexts call
    /// it at the start of each file. A registry that numbers its types, and to which nothing was
    /// added before, gives the string type id 0 and the end-of-file type id 1.
    void init();

    /// Writes the list of types in the order of their ids, one line each, and the line that ends
    /// it; only the latter where `withTypes` is false.
    void writeRegistry(ioBufferedStreamOutput& stream, bool withTypes);

    /// Reads such a list, which numbers the types of this registry. A name that is unknown gets a
    /// plain ioPacketType, which passes over its packets. A type that has an id keeps it. Returns 0
    /// on success, 1 if the stream failed, 4 if a line cannot be understood or its number does not
    /// follow that of the line before.
    int readRegistry(ioBufferedStreamInput& stream);

    /// Whether a type has kept another id than the list that was read last gives it (its line's
    /// place, from 0): packets of that file could only be misread, and ioReadContext::readFile()
    /// gives `ioBadFile`. Read each file of an order of its own with a registry of its own.
    bool isMisnumbered() const;

    /// Whether one name stands under two ids. No reader could tell them apart, so
    /// ioWriteContext::startFile() gives `ioError` rather than list them.
    bool hasNameTwice() const;

    /// Whether readers of the list that was written last know `id`; of a file without a list, each
    /// that is not negative. ioWriteContext::startPacket() gives `ioError` for a type whose id is
    /// not listed: one that is known by name only, or was added after startFile().
    bool isListed(int id) const;

private:
    ioPacketRegistryImpl* impl_; // owned
    bool initialized_ = false;
    bool namesOnly_;
};

/// A registry to be filled from outside, by add() and supportedType() or by slots on its signal, so
/// that the types of independent modules can meet in one file.
class ZEBASE_API ioSimplePacketRegistry : public ioPacketRegistry {
public:
    /// `namesOnly`: true for reading, false for writing.
    explicit ioSimplePacketRegistry(bool namesOnly);
    ~ioSimplePacketRegistry() override;

    /// Adds a type that is for writing only.
    void add(const char* name);
    /// Adds a type whose packets are read by `function`.
    void add(const char* name, void (*function)());

    /// Fires registerSignal: the slot that was connected last comes first, and so do its ids.
    void registerAllTypes() override;

    /// Its slots receive the registry and add their types to it.
    zeRTB::SignalArg<ioPacketRegistry*> registerSignal;
};
