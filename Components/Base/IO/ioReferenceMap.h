// SPDX-License-Identifier: MIT

/// @file
/// References: how pointers between objects are saved in packet files.
///
/// Each object that is pointed at gets a small positive number, its reference, and the file holds
/// numbers; 0 is the null pointer. A map keeps both directions: from pointer to number on writing,
/// from number to pointer on reading. A reader may use a number before the packet that defines it
/// has been read: the map remembers the location and patches it when the definition comes. At the
/// end of a file the map reports what stayed unresolved and what was defined but never used.
///
/// A context holds its map by a counted reference, and several contexts may share one, so that
/// numbers stay valid across files. A map owns neither objects nor types nor locations. Nothing
/// here prints or fails: a number that no file of ours can hold is ignored.
///
/// Threads: a map is used by one thread at a time, with all contexts that share it.
///
/// @code
/// ze::Reference<ioReferenceMap> map(ioPacketFileNewReferenceMap());
/// int object = 0;
/// assert(map->newReference(&object) == 1 && map->findReference(&object) == 1);
///
/// void* location = &object;
/// map->resolveReferenceUsage(2, &location, nullptr, 0); // a forward reference
/// assert(location == nullptr);
/// map->associatePtrWithReference(2, &object, false);
/// map->defineReference(2, nullptr);
/// assert(location == &object);
/// @endcode

#pragma once

#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

class ioClientReadContext;
class ioPacketType;

/// The map between pointers and references. Operations on a negative number do nothing, nor do
/// those on a number for which the map has no room yet, unless they say more. Only
/// associatePtrWithReference() and resolveReferenceUsage() make room, for their number and all
/// below it; there may be more, on which no caller should count.
class ZEBASE_API ioReferenceMap : public ze::ReferenceCount {
public:
    ~ioReferenceMap() override;

    /// Gives `pointer` the next number, starting with 1, by associatePtrWithReference(), and
    /// returns it. It counts on from the last number that this call gave out: reading does not
    /// raise that, so that a map filled by a reader hands the same numbers out again. Associate a
    /// new map before writing.
    virtual int newReference(void* pointer) = 0;

    /// Makes `pointer` the object of `reference`, and `reference` the number of `pointer`. Ignored
    /// if `reference` is below 1 or `pointer` is null. `alias` marks a second name of an object.
    virtual void associatePtrWithReference(int reference, void* pointer, bool alias) = 0;

    /// The number of `pointer`: 0 for null, -1 if it has none or its reference was undefined.
    virtual int findReference(const void* pointer) const = 0;

    /// Whether `reference` is defined and was not undefined since.
    virtual bool isReferenceDefined(int reference) const = 0;

    /// The object of `reference`, defined or only associated; else null.
    virtual void* getReferenceDefinition(int reference) const = 0;

    /// Defines `reference`, whose object is in a packet of `type`: fills all locations that
    /// wait for it. Its pointer was associated before.
    virtual void defineReference(int reference, ioPacketType* type) = 0;

    /// Records a use of `reference` by a packet of `type`, with no location to fill. `offset` is
    /// the client's, given back in reports.
    virtual void useReference(int reference, ioPacketType* type, int offset) = 0;

    /// Takes `pointer` out when its object goes: its lookups give -1 from now on, and its reference
    /// is no longer verified. A pointer that the map does not hold is taken as reference 0.
    virtual void undefineReference(void* pointer) = 0;

    /// The same for a number. It stays undefined, even if it is associated again.
    virtual void undefineReference(int reference) = 0;

    /// Records a use of `reference` by a packet of `type` and stores its object in `location`: now
    /// if it is defined, else null now and the object when the definition comes. `location` may be
    /// null; it must live until the definition comes, or as long as the map.
    virtual void resolveReferenceUsage(int reference, void** location, ioPacketType* type,
                                       int offset) = 0;

    /// Reports, in rising order of references, each use that is still unresolved to its type
    /// (ioPacketType::handleUnresolvedPtr(), newest use first) and each object that was defined
    /// and never used to its type (ioPacketType::handleUnreferencedMemory()). Uses stay recorded,
    /// so that a second call reports them again. The types' hooks may change the map.
    virtual void verifyReferenceMap(ioClientReadContext& client) = 0;

    /// Calls `callback` with location and offset of each unresolved use by packets of `type`.
    virtual void reportUnresolvedPtrs(ioPacketType* type, void (*callback)(void*, int)) = 0;
};

/// A new, empty map without owners. A million pointers take about 42 MB, and 74 MB on reading if
/// all were used before they were defined. A number that lies far from all others takes 6 KB; the
/// index below the highest number takes at most 1 MB more.
ZEBASE_API ioReferenceMap* ioPacketFileNewReferenceMap();
