// SPDX-License-Identifier: MIT

/// @file
/// The check of a packet file before it is read: whether its header and its last packet are there.
///
/// A reader waits for ever where a file ends too early: ioHeader::readHeader() for the "@" that
/// ends a header, ioReadContext::readFile() for the "{" that begins a packet of text. Files that
/// came from outside, or that may have been cut, are checked first, and a reader is started only on
/// one that passes:
///
/// @code
/// #include <cstdio>
/// #include <fstream>
/// #include "Base/IO/ioBuffer.h"
/// #include "Base/Strings/zeStringIString.h"
/// const std::string start = "^@\n1\n1 0 1\n1 2 4 8 4 8 8\n@\n   0 packetFile_EOF\n@\n";
/// std::ofstream("check-example.zp") << start; // ends before its last packet
/// assert(ioPacketFileCheck(L"check-example.zp") == ioBadFile);
///
/// std::ofstream("check-example.zp") << start << "{ 0 0 }\n";
/// ioBufferedStreamInput file;
/// file.openFile(L"check-example.zp");
/// assert(ioPacketFileCheck(file) == ioOK);
/// assert(file.seek(0)); // the reader is given the very file that was checked
/// file.close();
/// std::remove("check-example.zp");
/// @endcode
///
/// The check runs the reader's own code on header, list of types and packets of every format, and
/// passes over what the packets hold: neither types nor tags of debug files are looked at. It
/// always ends, after one pass over the file, and takes as much memory as the list of types and the
/// largest packet that the file really holds. A file that passes may still be refused by its
/// reader, for the values in its packets; it will not make the reader wait.
///
/// Threads: a stream, a visitor and a registry belong to one thread at a time.

#pragma once

#include <cstdint>

#include "Base/IO/ioContext.h"
#include "Base/zeBaseExport.h"

class ioBufferedStreamInput;
class ioHeader;
class ioPacketRegistry;
class ioReadContext;
namespace zeString {
class IString;
}

/// Where a packet lies, in the bytes that the stream delivers, counted from the header's first.
struct ioPacketFilePlace {
    std::int64_t position = 0; ///< Of the packet's first byte.
    std::int64_t size = 0;     ///< In bytes, without what follows the "}" of a packet of text.
    int hasReference = 0;      ///< 1 if the values begin with the packet's reference, 0 if not.
};

/// Receives what ioPacketFileCheck() meets: for programs that list packets, or that must push
/// filters in mid-file. An operation that returns false stops the check, which then gives
/// `ioHalted`. Exceptions pass through the check to its caller.
class ZEBASE_API ioPacketFileVisitor {
public:
    virtual ~ioPacketFileVisitor();

    /// Called once, when header and list of types have been read, also for a method that the
    /// library does not know, after which the check gives `ioBadFile`. The base returns true.
    virtual bool start(const ioHeader& header, const ioPacketRegistry& types);

    /// Called for each packet, the last one included. The values may be read from `context`, from
    /// the reference on if there is one; in a debug file each has its tag before it. The stream
    /// stands behind the packet (in text before the newline that follows it), and filters may be
    /// pushed upon it. The base returns true.
    virtual bool packet(ioReadContext& context, const ioPacketType& type,
                        const ioPacketFilePlace& place);
};

/// Walks the packet file in `stream`, from its header to its last packet, behind which the stream
/// then stands. `ioOK` if both are met. Otherwise
///   - `ioBadFile`: header, list of types or a packet cannot be understood, a packet is too large
///     for memory, or the file ends early;
///   - `ioChecksumError`: a checksummed block is damaged;
///   - `ioOpenError`, `ioError`: the stream did not open or failed (the end of a connection is a
///     failure), or memory ran out;
///   - `ioHalted`: the visitor stopped the check.
///
/// A file without a list of types can be checked only with the `registry` that is to read it; it is
/// numbered as by reading the file. The types' own operations are not called.
ZEBASE_API ioStatus ioPacketFileCheck(ioBufferedStreamInput& stream,
                                      ioPacketFileVisitor* visitor = nullptr,
                                      ioPacketRegistry* registry = nullptr);

/// Checks the file at `path`. Another program may change it before it is opened again for reading:
/// where that matters, check the stream and go back to its start.
ZEBASE_API ioStatus ioPacketFileCheck(const zeString::IString& path);
