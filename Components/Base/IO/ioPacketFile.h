// SPDX-License-Identifier: MIT

/// @file
/// Packet files: documents of typed objects that point at one another, in binary or in text.
///
/// A file is a short text header, the list of the packet types that occur in it, the packets, and
/// an end-of-file packet. A program registers its types (ioPacketRegistry), and for each object
/// that it saves writes a packet (ioWriteContext); on loading, each type's read() is called with
/// the packets of that type (ioReadContext). Pointers between objects become small numbers in the
/// file and pointers again on reading (ioReferenceMap). The same code serves every format; the
/// reader finds out from the header which one it has, and swaps bytes where it must.
///
/// This header brings the whole family. Failures are in the status of the context.
///
/// Threads: a context, and what is associated with it, belongs to one thread at a time.
///
/// @code
/// #include <cstdio>
/// #include <memory>
/// #include "Base/Strings/zeStringIString.h"
/// const zeString::IString path(L"example.zp");
///
/// ioSimplePacketRegistry types(false); // for writing
/// types.add("point");
/// ioBufferedStreamOutput output;
/// output.openFile(path);
/// std::unique_ptr<ioWriteContext> writer(ioWriteContextAlloc(output, ioWriteBinary, &types));
/// writer->startFile();
/// writer->startPacket("point", nullptr);
/// writer->writeDouble(1.5);
/// writer->writeDouble(-2.5);
/// writer->endPacket();
/// writer->endFile();
/// output.close();
/// assert(writer->good() && output.getStatus() == streamOK);
///
/// static double x = 0, y = 0;
/// ioSimplePacketRegistry known(true); // for reading
/// known.supportedType(new ioReadPacketByFunction("point", [](ioClientReadContext& client) {
///     x = client.readDouble();
///     y = client.readDouble();
/// }));
/// ioBufferedStreamInput input;
/// input.openFile(path);
/// assert(ioPacketFileCheck(input) == ioOK && input.seek(0)); // a reader waits on a cut file
/// std::unique_ptr<ioReadContext> reader(ioReadContextAlloc(input, &known));
/// assert(reader != nullptr); // null: not a packet file, or of an unknown format
/// ioClientReadContext client(reader.get());
/// assert(client.readFile() == ioOK);
/// assert(x == 1.5 && y == -2.5);
/// input.close();
/// std::remove("example.zp");
/// @endcode

#pragma once

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioClientContext.h"
#include "Base/IO/ioContext.h"
#include "Base/IO/ioHeader.h"
#include "Base/IO/ioPacketFileAscii.h"
#include "Base/IO/ioPacketFileBinary.h"
#include "Base/IO/ioPacketFileBuffer.h"
#include "Base/IO/ioPacketFileCheck.h"
#include "Base/IO/ioPacketFileDebug.h"
#include "Base/IO/ioPacketFileError.h"
#include "Base/IO/ioPacketRegistry.h"
#include "Base/IO/ioPacketType.h"
#include "Base/IO/ioReadContext.h"
#include "Base/IO/ioReferenceMap.h"
#include "Base/IO/ioWriteContext.h"
#include "Base/zeBaseExport.h"

/// Makes a context that writes to `stream` by `method`; null for a method that is not offered. The
/// caller owns and deletes it; stream and registry (which may be null for now) stay the caller's.
ZEBASE_API ioWriteContext* ioWriteContextAlloc(ioBufferedStreamOutput& stream, ioWriteMethod method,
                                               ioPacketRegistry* registry);

/// Reads the header of the file in `stream` and makes the context that it asks for; null if it is
/// not valid, or of a method that is not offered. Ownership as in ioWriteContextAlloc().
///
/// On a file that is cut off within its header this call waits for ever, and so does readFile() on
/// a text file that lacks its last packet: check files from outside with ioPacketFileCheck() first.
ZEBASE_API ioReadContext* ioReadContextAlloc(ioBufferedStreamInput& stream,
                                             ioPacketRegistry* registry);

/// @name One function for each variant
/// @{

/// Makes the context of one variant, for a stream whose format is known. The caller owns it.
ZEBASE_API ioWriteContext* ioPacketFileWriteAscii(ioBufferedStreamOutput& stream);
ZEBASE_API ioWriteContext* ioPacketFileWriteBinary(ioBufferedStreamOutput& stream);
ZEBASE_API ioWriteContext* ioPacketFileWriteAsciiDebug(ioBufferedStreamOutput& stream);
ZEBASE_API ioWriteContext* ioPacketFileWriteBinaryDebug(ioBufferedStreamOutput& stream);
ZEBASE_API ioReadContext* ioPacketFileReadAscii(ioBufferedStreamInput& stream);
ZEBASE_API ioReadContext* ioPacketFileReadBinarySameEndian(ioBufferedStreamInput& stream);
ZEBASE_API ioReadContext* ioPacketFileReadBinarySwapped(ioBufferedStreamInput& stream);
ZEBASE_API ioReadContext* ioPacketFileReadAsciiDebug(ioBufferedStreamInput& stream);
ZEBASE_API ioReadContext* ioPacketFileReadBinaryDebugSameEndian(ioBufferedStreamInput& stream);
ZEBASE_API ioReadContext* ioPacketFileReadBinaryDebugSwapped(ioBufferedStreamInput& stream);
/// @}
