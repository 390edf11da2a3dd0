// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileDebug.h"

const char* ioPacketFileDebugType(ioDebugType type) {
    switch (type) {
    case ioDebugTypeBool:
        return "Bool";
    case ioDebugTypeChar:
        return "Char";
    case ioDebugTypeUChar:
        return "UChar";
    case ioDebugTypeShort:
        return "Short";
    case ioDebugTypeUShort:
        return "UShort";
    case ioDebugTypeInt:
        return "Int";
    case ioDebugTypeUInt:
        return "UInt";
    case ioDebugTypeInt64:
        return "Int64";
    case ioDebugTypeUInt64:
        return "UInt64";
    case ioDebugTypeFloat:
        return "Float";
    case ioDebugTypeDouble:
        return "Double";
    case ioDebugTypeCString:
        return "CString";
    case ioDebugTypeBoolArray:
        return "BoolArray";
    case ioDebugTypeCharArray:
        return "CharArray";
    case ioDebugTypeUCharArray:
        return "UCharArray";
    case ioDebugTypeShortArray:
        return "ShortArray";
    case ioDebugTypeUShortArray:
        return "UShortArray";
    case ioDebugTypeIntArray:
        return "IntArray";
    case ioDebugTypeUIntArray:
        return "UIntArray";
    case ioDebugTypeInt64Array:
        return "Int64Array";
    case ioDebugTypeUInt64Array:
        return "UInt64Array";
    case ioDebugTypeFloatArray:
        return "FloatArray";
    case ioDebugTypeDoubleArray:
        return "DoubleArray";
    case ioDebugTypeReference:
        return "Reference";
    }
    return "(invalid type)";
}

template class ioWriteContextDebug<ioWriteContextBinary, ioWriteBinaryDebug>;
template class ioWriteContextDebug<ioWriteContextAscii, ioWriteAsciiDebug>;
template class ioReadContextDebug<ioReadContextBinarySameEndian>;
template class ioReadContextDebug<ioReadContextBinarySwapped>;
template class ioReadContextDebug<ioReadContextAscii>;
