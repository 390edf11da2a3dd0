// SPDX-License-Identifier: MIT

#include "Base/IO/ioHeader.h"

#include <algorithm>
#include <iterator>

#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioBufferedStreamOutput.h"

namespace {

bool isBinary(long method) {
    return method == ioWriteBinary || method == ioWriteBinaryDebug;
}

} // namespace

void ioHeader::writeHeader(ioBufferedStreamOutput& stream) const {
    stream.writeString("^@\n1\n");
    stream.printf("%d %d 1\n", littleEndian ? 1 : 0, static_cast<int>(method));
    stream.writeString("1 2 4 8 4 8 8\n@\n");
}

bool ioHeader::readHeader(ioBufferedStreamInput& stream) {
    const int magic[] = {stream.readChar(), stream.readChar(), stream.readChar()};
    valid = magic[0] == '^' && magic[1] == '@' && magic[2] == '\n';
    if (!valid)
        return false;

    stream.readInt(); // the version
    littleEndian = stream.readInt() != 0;
    const long number = stream.readInt();
    method = static_cast<ioWriteMethod>(number >= 0 && number <= 3 ? number : -1);
    const long flag = stream.readInt();
    long sizes[6];
    for (long& size : sizes)
        size = stream.readInt();
    stream.readInt(); // one more size, ignored
    while (stream.readChar() != '@') {
    }
    stream.readChar();

    constexpr long ownSizes[] = {1, 2, 4, 8, 4, 8};
    const bool fits = flag != 0 && std::equal(std::begin(sizes), std::end(sizes), ownSizes);
    valid = fits || !isBinary(number);
    return valid;
}

ioReadMethod ioHeader::determineReadMethod() const {
    const bool sameEndian = littleEndian == systemIsLittleEndian();
    switch (method) {
    case ioWriteAscii:
        return ioReadAscii;
    case ioWriteBinary:
        return sameEndian ? ioReadBinarySameEndian : ioReadBinarySwapped;
    case ioWriteAsciiDebug:
        return ioReadAsciiDebug;
    case ioWriteBinaryDebug:
        return sameEndian ? ioReadBinarySameEndianDebug : ioReadBinarySwappedDebug;
    }
    return ioReadUnknown;
}
