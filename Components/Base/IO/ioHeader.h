// SPDX-License-Identifier: MIT

/// @file
/// The text header at the start of every packet file, from which a reader learns the format, the
/// byte order and the sizes of the writer's types. The writer writes in its own byte order, and the
/// reader alone swaps.
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

/// The form that a writer chooses.
enum ioWriteMethod : int {
    ioWriteAscii = 0,
    ioWriteBinary = 1,
    ioWriteAsciiDebug = 2,
    ioWriteBinaryDebug = 3
};

/// The form as a reader on this machine meets it.
enum ioReadMethod : int {
    ioReadUnknown = 0,
    ioReadBinarySameEndian = 1,
    ioReadBinarySwapped = 2,
    ioReadAscii = 3,
    ioReadBinarySameEndianDebug = 4,
    ioReadBinarySwappedDebug = 5,
    ioReadAsciiDebug = 6
};

/// The header of a packet file.
class ZEBASE_API ioHeader {
public:
    /// An invalid header, to be read.
    ioHeader() = default;

    /// The header that this machine writes.
    explicit ioHeader(ioWriteMethod writeMethod)
        : valid(true), littleEndian(systemIsLittleEndian()), method(writeMethod) {}

    /// True on every supported machine.
    static constexpr bool systemIsLittleEndian() { return true; }

    /// Writes the header's byte order and method, and this machine's sizes. Precedes any filter on
    /// the stream.
    void writeHeader(ioBufferedStreamOutput& stream) const;

    /// Reads a header and returns `valid`. The stream then stands at the byte after it, or, where
    /// the first three bytes are not a header's, after those. A binary header is refused if its
    /// flag is 0 or its sizes are not this machine's; text files are read whatever they state. A
    /// method that is not known here is stored as -1 and leaves the header valid.
    ///
    /// The stream is open, and holds the "@" that ends the header: a file cut before it makes this
    /// call run for ever, since readChar() gives 0 at the end of a file.
    bool readHeader(ioBufferedStreamInput& stream);

    /// How to read the file; ioReadUnknown for a method that is not known here.
    ioReadMethod determineReadMethod() const;

    bool valid = false;
    bool littleEndian = systemIsLittleEndian();            ///< The writer's byte order.
    ioWriteMethod method = static_cast<ioWriteMethod>(-1); ///< Or -1 if not known here.
};
