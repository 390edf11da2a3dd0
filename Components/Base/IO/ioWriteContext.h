// SPDX-License-Identifier: MIT

/// @file
/// Writing a packet file: the file, its packets, and the values in them.
///
/// startFile(), then for each object startPacket(), its values, endPacket(), then endFile(). A
/// packet is built in memory and goes to the stream as one piece in endPacket(); nothing is safe in
/// the file before the stream was closed. Get a context from ioWriteContextAlloc().
///
/// Values carry neither names nor types in the file: a reader must ask for the same types in the
/// same order. To let a later version of the program write more, put each group of values in a
/// chunk (startChunk()): readers skip what they do not know of it, and see which chunks are
/// missing.
///
/// A packet may be started while another is open. It is complete first, so it lies ahead of the
/// enclosing one in the file: the way to save an object that the enclosing one refers to.
///
/// The operations do not test the status: a packet after a failure of the stream is built and
/// dropped, one after a wrong use is still written, but endFile() does not complete the file.
/// Values must be written inside a packet.
///
/// Threads: a context belongs to one thread at a time, with its stream, registry and map.
///
/// @code
/// #include <cstdio>
/// #include "Base/IO/ioPacketFile.h"
/// #include "Base/Strings/zeStringIString.h"
/// struct Node { int value; Node* next; };
/// Node second{2, nullptr}, first{1, &second};
///
/// ioSimplePacketRegistry types(false);
/// types.add("node");
/// ioBufferedStreamOutput output;
/// output.openFile(L"write-example.zp");
/// ioWriteContextBinary context(output);
/// context.associateRegistry(&types);
/// context.startFile();
/// for (const Node* node : {&first, &second}) {
///     context.startPacket("node", node); // the address becomes the packet's reference
///     context.startChunk();
///     context.writeInt(node->value);
///     context.writeReference(node->next, false); // a small number; 0 for null
///     context.endPacket();                       // ends the chunk as well
/// }
/// context.endFile();
/// output.close();
/// assert(context.good() && output.getStatus() == streamOK);
/// assert(context.getReference(&second) == 2);
/// std::remove("write-example.zp");
/// @endcode

#pragma once

#include <cstdint>

#include "Base/IO/ioContext.h"
#include "Base/IO/ioHeader.h"
#include "Base/zeBaseExport.h"

class ioBufferedStreamOutput;

/// A packet file that is being written. The typed operations are realised by the formats.
class ZEBASE_API ioWriteContext : public ioContext {
public:
    /// The stream stays the caller's: open, and outliving the context.
    explicit ioWriteContext(ioBufferedStreamOutput& stream);
    /// Writes nothing more: a file without endFile() has no end-of-file packet.
    ~ioWriteContext() override;

    /// Writes the number that stands for `pointer`, a new one for a new pointer; 0 for null. With
    /// `define`, the object is what the current packet describes. The objects must keep their
    /// addresses to themselves until the file ends: a new object at the address of a deleted one is
    /// taken for it (see undefineReference()).
    virtual void writeReference(const void* pointer, bool define);
    /// The same for a number that the map has given out.
    virtual void writeReference(int reference, bool define);

    /// @name Single values
    /// @{

    /// Writes one value into the packet. It must be read back as the same type.
    virtual void writeBool(bool value) = 0;
    virtual void writeChar(char value) = 0;
    virtual void writeUChar(unsigned char value) = 0;
    virtual void writeShort(short value) = 0;
    virtual void writeUShort(unsigned short value) = 0;
    virtual void writeInt(int value) = 0;
    virtual void writeUInt(unsigned int value) = 0;
    virtual void writeInt64(std::int64_t value) = 0;
    virtual void writeUInt64(std::uint64_t value) = 0;
    virtual void writeFloat(float value) = 0;
    virtual void writeDouble(double value) = 0;
    /// @}

    /// Null is written as the empty text.
    virtual void writeCString(const char* text) = 0;

    /// @name Arrays
    /// @{

    /// Writes `count` values. No array carries its length: write the count first where the reader
    /// cannot know it. A count of 0 or less writes nothing.
    virtual void writeBoolArray(const bool* values, int count) = 0;
    virtual void writeCharArray(const char* values, int count) = 0;
    virtual void writeUCharArray(const unsigned char* values, int count) = 0;
    virtual void writeShortArray(const short* values, int count) = 0;
    virtual void writeUShortArray(const unsigned short* values, int count) = 0;
    virtual void writeIntArray(const int* values, int count) = 0;
    virtual void writeUIntArray(const unsigned int* values, int count) = 0;
    virtual void writeInt64Array(const std::int64_t* values, int count) = 0;
    virtual void writeUInt64Array(const std::uint64_t* values, int count) = 0;
    virtual void writeFloatArray(const float* values, int count) = 0;
    virtual void writeDoubleArray(const double* values, int count) = 0;
    /// @}

    /// One byte of text, with what the format needs to find it again and no separator.
    virtual void writeRawByte(signed char byte) = 0;
    /// The header of a file in this context's format.
    virtual ioHeader getHeader() = 0;

    /// Whether startFile() lists the types (it does by default). Without the list, the reader's
    /// registry must number its types as the writer's does.
    void writePacketRegistry(bool write) { writeRegistry_ = write; }

    /// Writes the header and the registry. Nothing is written, and the status is `ioError`, without
    /// a registry, and where the list of types would hold one name under two ids
    /// (ioPacketRegistry::hasNameTwice()).
    void startFile();
    /// Writes the end-of-file packet, without which no reader takes the file for complete. A packet
    /// that is still open is lost: `ioError`. Does nothing if the status is bad already. The stream
    /// is neither flushed nor closed, and another file may follow in it.
    void endFile();
    /// Between startFile() and endFile().
    bool isInFile() const { return inFile_; }

    /// Opens a packet. `reference` is the address of the object that the packet describes, by which
    /// other packets refer to it; null for none. A type that is null or unknown, or that readers of
    /// this file would not know (ioPacketRegistry::isListed()), gives `ioError`, and its packet is
    /// dropped.
    void startPacket(const ioPacketType* type, const void* reference);
    /// The same by the type's name, which costs a search: keep the type where many packets are
    /// written.
    void startPacket(const char* typeName, const void* reference);
    /// Closes the packet and passes it to the stream; drops it after invalidPacket().
    void endPacket();

    /// Opens a chunk, and closes the one before it.
    void startChunk();
    /// Closes the chunk, if one is open. Write what follows into another chunk: readers cannot
    /// address values that stand behind a chunk.
    void endChunk();

    /// Opens a nested structure, with chunks of its own; it may stand in a chunk or beside one.
    void startSubPacket();
    /// Closes the innermost structure and the chunk that is open in it.
    void endSubPacket();

    /// Writes a string as a packet of its own, with its address as the reference. Null: nothing.
    void writeCStringPacket(const char* text);

private:
    ioBufferedStreamOutput* stream_;
    bool inFile_ = false;
    bool writeRegistry_ = true;
    ioPacketType* stringType_ = nullptr;
};
