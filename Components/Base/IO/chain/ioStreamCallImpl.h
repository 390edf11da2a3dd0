// SPDX-License-Identifier: MIT

/// @file
/// The calls that the links over byte streams make, sockets being streams too. A zeUtil::Error that
/// a stream throws becomes a result here, since nothing may be thrown through a chain.

#pragma once

#include "Base/OS/zeOSIOStream.h"

/// Reads up to `n` bytes, whose number may be above 0 even if `result` is an error; -1 from a
/// stream that claims to have read more, so that nobody knows what it did.
inline int ioReadFrom(zeOS::IOStream& stream, char* destination, int n, zeUtil::Error& result) {
    const unsigned long wanted = static_cast<unsigned>(n);
    unsigned long got = 0;
    try {
        result = stream.read(destination, wanted, &got);
    } catch (const zeUtil::Error& thrown) {
        result = thrown;
    }
    return got <= wanted ? static_cast<int>(got) : -1;
}

/// Writes `n` bytes.
inline void ioWriteTo(zeOS::IOStream& stream, const char* source, int n, zeUtil::Error& result) {
    try {
        result = stream.write(source, static_cast<unsigned>(n), nullptr);
    } catch (const zeUtil::Error& thrown) {
        result = thrown;
    }
}
