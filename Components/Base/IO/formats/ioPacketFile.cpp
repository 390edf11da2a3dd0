// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFile.h"

namespace {

ioWriteContext* newWriteContext(ioBufferedStreamOutput& stream, ioWriteMethod method) {
    switch (method) {
    case ioWriteAscii:
        return ioPacketFileWriteAscii(stream);
    case ioWriteBinary:
        return ioPacketFileWriteBinary(stream);
    case ioWriteAsciiDebug:
        return ioPacketFileWriteAsciiDebug(stream);
    case ioWriteBinaryDebug:
        return ioPacketFileWriteBinaryDebug(stream);
    }
    return nullptr;
}

ioReadContext* newReadContext(ioBufferedStreamInput& stream, ioReadMethod method) {
    switch (method) {
    case ioReadBinarySameEndian:
        return ioPacketFileReadBinarySameEndian(stream);
    case ioReadBinarySwapped:
        return ioPacketFileReadBinarySwapped(stream);
    case ioReadAscii:
        return ioPacketFileReadAscii(stream);
    case ioReadBinarySameEndianDebug:
        return ioPacketFileReadBinaryDebugSameEndian(stream);
    case ioReadBinarySwappedDebug:
        return ioPacketFileReadBinaryDebugSwapped(stream);
    case ioReadAsciiDebug:
        return ioPacketFileReadAsciiDebug(stream);
    case ioReadUnknown:
        break;
    }
    return nullptr;
}

} // namespace

ioWriteContext* ioWriteContextAlloc(ioBufferedStreamOutput& stream, ioWriteMethod method,
                                    ioPacketRegistry* registry) {
    ioWriteContext* context = newWriteContext(stream, method);
    if (context && registry)
        context->associateRegistry(registry);
    return context;
}

ioReadContext* ioReadContextAlloc(ioBufferedStreamInput& stream, ioPacketRegistry* registry) {
    ioHeader header;
    if (!header.readHeader(stream))
        return nullptr;
    ioReadContext* context = newReadContext(stream, header.determineReadMethod());
    if (context && registry)
        context->associateRegistry(registry);
    return context;
}

ioWriteContext* ioPacketFileWriteAscii(ioBufferedStreamOutput& stream) {
    return new ioWriteContextAscii(stream);
}

ioWriteContext* ioPacketFileWriteBinary(ioBufferedStreamOutput& stream) {
    return new ioWriteContextBinary(stream);
}

ioWriteContext* ioPacketFileWriteAsciiDebug(ioBufferedStreamOutput& stream) {
    return new ioWriteContextDebug<ioWriteContextAscii, ioWriteAsciiDebug>(stream);
}

ioWriteContext* ioPacketFileWriteBinaryDebug(ioBufferedStreamOutput& stream) {
    return new ioWriteContextDebug<ioWriteContextBinary, ioWriteBinaryDebug>(stream);
}

ioReadContext* ioPacketFileReadAscii(ioBufferedStreamInput& stream) {
    return new ioReadContextAscii(stream);
}

ioReadContext* ioPacketFileReadBinarySameEndian(ioBufferedStreamInput& stream) {
    return new ioReadContextBinarySameEndian(stream);
}

ioReadContext* ioPacketFileReadBinarySwapped(ioBufferedStreamInput& stream) {
    return new ioReadContextBinarySwapped(stream);
}

ioReadContext* ioPacketFileReadAsciiDebug(ioBufferedStreamInput& stream) {
    return new ioReadContextDebug<ioReadContextAscii>(stream);
}

ioReadContext* ioPacketFileReadBinaryDebugSameEndian(ioBufferedStreamInput& stream) {
    return new ioReadContextDebug<ioReadContextBinarySameEndian>(stream);
}

ioReadContext* ioPacketFileReadBinaryDebugSwapped(ioBufferedStreamInput& stream) {
    return new ioReadContextDebug<ioReadContextBinarySwapped>(stream);
}
