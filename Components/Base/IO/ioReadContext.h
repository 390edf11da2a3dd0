// SPDX-License-Identifier: MIT

/// @file
/// Reading a packet file: the file, its packets, and the values in them.
///
/// readFile() reads the registry and calls the type's read() for each packet; there (and nowhere
/// else: without a packet there is nothing to read from) a client reads the values of the packet in
/// the order and with the types with which they were written. Get a context from
/// ioReadContextAlloc().
///
/// What read() leaves unread is skipped. What it reads beyond the end of a packet is without
/// meaning but harmless: no operation touches memory outside the packet's buffer, even where the
/// file is damaged. A file can state any number, though: test counts before memory is allocated by
/// them.
///
/// Pointers. Every object that packets refer to has a number. The packet that describes it defines
/// the number (definePacketReference()); packets that refer to it may come earlier or later.
///
/// Threads: a context belongs to one thread at a time, with its stream, registry and map.
///
/// @code
/// #include <cstdio>
/// #include <fstream>
/// #include <memory>
/// #include "Base/IO/ioPacketFile.h"
/// #include "Base/Strings/zeStringIString.h"
/// std::ofstream("read-example.zp") << "^@\n1\n1 0 1\n1 2 4 8 4 8 8\n@\n" // a file in text
///                                     "   0 packetFile_EOF\n   1 node\n@\n"
///                                     "{ 1 1 7 \n  [ 5 8 ] }\n" // number 7 refers to number 8
///                                     "{ 1 1 8 \n  [ 6 0 ] }\n"
///                                     "{ 0 0 }\n";
/// struct Node { int value = 0; Node* next = nullptr; };
/// static Node nodes[2];
/// static int count = 0;
/// ioSimplePacketRegistry types(true);
/// types.supportedType(new ioReadPacketByFunction("node", [](ioClientReadContext& client) {
///     Node& node = nodes[count++];
///     client.definePacketReference(&node);
///     if (client.nextChunk()) {
///         node.value = client.readInt();
///         client.readReferenceUsage(&node.next, 0); // filled in when number 8 has come
///     }
/// }));
/// ioBufferedStreamInput input;
/// input.openFile(L"read-example.zp");
/// std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input, &types));
/// ioClientReadContext client(context.get());
/// assert(client.readFile() == ioOK);
/// assert(nodes[0].value == 5 && nodes[0].next == &nodes[1] && nodes[1].next == nullptr);
/// input.close();
/// std::remove("read-example.zp");
/// @endcode

#pragma once

#include <cstdint>

#include "Base/IO/ioContext.h"
#include "Base/IO/ioHeader.h"
#include "Base/zeBaseExport.h"

class ioBufferedStreamInput;
class ioClientReadContext;
class ioPacketFileBinaryBuffer;

/// A packet file that is being read. The typed operations are realised by the formats.
class ZEBASE_API ioReadContext : public ioContext {
public:
    /// The stream stays the caller's: open, behind the header, and outliving the context. `method`
    /// is the one that the header asked for.
    ioReadContext(ioReadMethod method, ioBufferedStreamInput& stream);
    /// Leaves the stream alone.
    ~ioReadContext() override;

    /// Whether the last nextChunk() at this level met a chunk that is not empty.
    virtual bool isValidChunk() = 0;

    /// Defines the current packet's reference: `pointer` is the object that the packet describes.
    /// Every location that waits for it is filled in.
    virtual void definePacketReference(void* pointer);

    /// Reads a reference and returns its object; null for a null pointer, and for an object that
    /// has not been met yet, of which no note is taken.
    virtual void* readReferenceUsage();
    /// The same, and stores the number, by which the object can be looked up later.
    virtual void* readReferenceUsage(int& reference);
    /// Reads a reference into the pointer at `location`, now or as soon as the object is defined;
    /// null until then. The location must stay until the end of the file or the definition.
    /// `offset` comes back in the reports of references that nothing defined.
    virtual void readReferenceUsage(void* location, int offset);
    /// Reads a reference and defines it.
    virtual void readReferenceDefinition(void* pointer);
    /// Reads a reference and returns its number.
    virtual int readReference();

    /// Makes `pointer` the object of a number that was read before.
    virtual void defineReference(int reference, void* pointer);
    /// Defines a further number for an object that has one.
    virtual void defineReferenceAlias(int reference, void* pointer);
    /// readReferenceUsage(location, offset) of a number that was read before.
    virtual void resolveReference(int reference, void* location, int offset);
    /// @{
    /// Notes that the object is used, so that the end of the file does not report it.
    virtual void useReference(int reference);
    virtual void useReference(void* pointer);
    /// @}

    /// @name Single values
    /// @{

    /// The next value. It must be read as the type that was written: nothing in a binary file
    /// distinguishes them. A `char` is the byte as it was written, unsigned: 200 stays 200.
    virtual bool readBool() = 0;
    virtual unsigned char readChar() = 0;
    virtual unsigned char readUChar() = 0;
    virtual short readShort() = 0;
    virtual unsigned short readUShort() = 0;
    virtual int readInt() = 0;
    virtual unsigned int readUInt() = 0;
    virtual std::int64_t readInt64() = 0;
    virtual std::uint64_t readUInt64() = 0;
    virtual float readFloat() = 0;
    virtual double readDouble() = 0;
    /// @}

    /// The text belongs to the context: it lasts until the next packet in a binary file, until the
    /// next readCString() of any context on this thread in a text file. Null where a text file has
    /// no string there.
    virtual const char* readCString() = 0;

    /// @name Arrays
    /// @{

    /// Reads `count` values, the number that was written; 0 or less reads nothing.
    virtual void readBoolArray(bool* values, int count) = 0;
    virtual void readCharArray(char* values, int count) = 0;
    virtual void readUCharArray(unsigned char* values, int count) = 0;
    virtual void readShortArray(short* values, int count) = 0;
    virtual void readUShortArray(unsigned short* values, int count) = 0;
    virtual void readIntArray(int* values, int count) = 0;
    virtual void readUIntArray(unsigned int* values, int count) = 0;
    virtual void readInt64Array(std::int64_t* values, int count) = 0;
    virtual void readUInt64Array(std::uint64_t* values, int count) = 0;
    virtual void readFloatArray(float* values, int count) = 0;
    virtual void readDoubleArray(double* values, int count) = 0;
    /// @}

    /// The byte that writeRawByte() wrote.
    virtual signed char readRawByte() = 0;
    /// An integer straight from the stream, outside any packet, in the form of this format.
    virtual int readUnbufferedInt(ioBufferedStreamInput& stream) = 0;

    /// Reads a file behind its header up to its end-of-file packet, and then reports the references
    /// that stayed undefined or unused to their types. `ioOK` if the file was complete. What was
    /// delivered before a failure stays with the client:
    ///   - `ioError`: there is no registry, the stream failed, or memory ran out;
    ///   - `ioBadFile`: the list of types or a packet cannot be understood, a packet is too large
    ///     for memory, the list numbers the types otherwise than the registry does already
    ///     (ioPacketRegistry::isMisnumbered()), or the file ends early;
    ///   - `ioHalted`: halt() was called;
    ///   - `ioChecksumError`: a checksummed block was damaged.
    ///
    /// A packet with a reference whose read() neither defines it nor marks the packet invalid ends
    /// the process: fatalError().
    ///
    /// On a text file that is cut between two packets this call waits for ever. Check files that
    /// may be cut off, or come from outside, with ioPacketFileCheck() first.
    void readFile(ioClientReadContext& client);
    /// Reads one packet; a step of readFile(), `ioError` outside it.
    void readPacket(ioClientReadContext& client);

    /// Reads the header of a further file in the same stream. True if it has this context's method:
    /// call readFile() again. After false, the context reads no more. It cannot follow a text file
    /// whose writer went straight on, as the last packet's newline is still to come. The reference
    /// map keeps its numbers and the registry its ids: associate new ones where the files are
    /// independent.
    bool reusePacketFile();
    /// Stops readFile() behind the current packet.
    void halt() { halted_ = true; }

    /// Skips what is left of the current chunk and goes to the next. False if there is none at this
    /// level, or it is empty: keep the defaults of the values that it would hold.
    bool nextChunk();
    /// Enters the sub-packet that comes next, with chunks of its own.
    void startSubPacket();
    /// Skips what is left of the sub-packet.
    void endSubPacket();

    /// The reference of the current packet; 0 if it has none.
    int getPacketReference() const { return packetReference_; }
    /// Packets read so far, without the end-of-file packets.
    int getPacketsRead() const { return packetsRead_; }
    /// Makes `pointer` the object of a number, as a further name of it with `alias`.
    void defineReference(int reference, void* pointer, bool alias);
    /// Reports references that stayed undefined, and objects that nothing refers to, to their
    /// types.
    void resolveRemainingReferences(ioClientReadContext& client);

private:
    friend class ioClientReadContext; // reads from the plain packet

    ZEBASE_HIDDEN void readWholeFile(ioClientReadContext& client);
    ZEBASE_HIDDEN void endChunk();
    [[noreturn]] ZEBASE_HIDDEN void undefinedPacketReference(const ioPacketType& type);

    ioBufferedStreamInput* stream_;
    int packetReference_ = -1;
    bool referenceDefined_ = false;
    ioPacketType* eofType_ = nullptr;
    int packetsRead_ = 0;
    bool halted_ = false;
    ioReadMethod method_;

protected:
    /// The current packet, if it is known that every number in it is read as the bytes that lie
    /// there: by the library's own reader of binary files of this machine's byte order, and not by
    /// a class derived from it, which may override any operation. Otherwise null. It is the last
    /// field, since the order of those above is fixed.
    ioPacketFileBinaryBuffer* plainPacket_ = nullptr;
};
