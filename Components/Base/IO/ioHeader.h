// SPDX-License-Identifier: MIT

/// @file
/// The text header at the start of every packet file, from which a reader learns the format, the
/// byte order and the sizes of the writer's types. The writer always writes in its own byte order;
/// only readers swap.
///
/// On the wire it is ASCII: "^@" and a newline; the header's version, 1; byte order (1 for
/// little-endian), ioWriteMethod and a flag, 1; the writer's sizes of char, short, int, 64-bit
/// integer, float and double, and one size more, 8; "@" and a newline. A little-endian binary file
/// begins with these 27 bytes:
///
///     ^@
///     1
///     1 1 1
///     1 2 4 8 4 8 8
///     @
///
/// Threads: a header is a plain value; distinct headers are independent.
///
/// @code
/// assert(ioHeader(ioWriteBinary).determineReadMethod() == ioReadBinarySameEndian);
/// ioHeader fromElsewhere(ioWriteBinary);
/// fromElsewhere.littleEndian = false;
/// assert(fromElsewhere.determineReadMethod() == ioReadBinarySwapped);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

class ioBufferedStreamInput;
class ioBufferedStreamOutput;

/// The form in which a file is written.
enum ioWriteMethod : int {
    ioWriteAscii = 0,      ///< Text.
    ioWriteBinary = 1,     ///< Binary, in the writer's byte order.
    ioWriteAsciiDebug = 2, ///< Text with a tag before each value.
    ioWriteBinaryDebug = 3 ///< Binary with a tag before each value.
};

/// How a reader on this machine reads a file.
enum ioReadMethod : int {
    ioReadUnknown = 0,               ///< Unknown method: cannot be read.
    ioReadBinarySameEndian = 1,      ///< Binary of this machine's byte order.
    ioReadBinarySwapped = 2,         ///< Binary of the other byte order.
    ioReadAscii = 3,                 ///< Text.
    ioReadBinarySameEndianDebug = 4, ///< Tagged binary of this machine's byte order.
    ioReadBinarySwappedDebug = 5,    ///< Tagged binary of the other byte order.
    ioReadAsciiDebug = 6             ///< Tagged text.
};

/// The header of a packet file.
class ZEBASE_API ioHeader {
public:
    /// An invalid header, for readHeader() to fill.
    ioHeader() = default;

    /// The header that this machine writes.
    explicit ioHeader(ioWriteMethod writeMethod)
        : valid(true), littleEndian(systemIsLittleEndian()), method(writeMethod) {}

    /// True on every supported machine.
    static constexpr bool systemIsLittleEndian() { return true; }

    /// Writes the header's byte order and method, and this machine's sizes. Call it before any
    /// filter is pushed on the stream.
    void writeHeader(ioBufferedStreamOutput& stream) const;

    /// Reads a header and returns `valid`. The stream is then at the byte after it, or, where the
    /// first three bytes are not those of a header, after these. A binary header is refused if its
    /// flag is 0 or its sizes are not this machine's; text files are accepted whatever they state.
    /// A method that is not known here is stored as -1 and leaves the header valid.
    ///
    /// The stream must be open, and must hold the "@" that ends the header: on a file that is cut
    /// before it this call never returns, since readChar() gives 0 at the end of a file.
    bool readHeader(ioBufferedStreamInput& stream);

    /// How to read the file; ioReadUnknown for a method that is not known here.
    ioReadMethod determineReadMethod() const;

    bool valid = false;                         ///< Set by readHeader(), or made for a writer.
    bool littleEndian = systemIsLittleEndian(); ///< The writer's byte order.
    ioWriteMethod method = static_cast<ioWriteMethod>(-1); ///< -1 if not known here.
};
