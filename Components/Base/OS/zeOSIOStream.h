// SPDX-License-Identifier: MIT

/// @file
/// The byte stream that files, memory streams and sockets have in common.
///
/// Whether a stream can be copied is up to the class that implements it.
///
/// Threads: a stream belongs to one thread at a time.
///
/// @code
/// struct Zeros : zeOS::IOStream {
///     zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override {
///         for (unsigned long i = 0; i < count; ++i)
///             static_cast<char*>(buffer)[i] = 0;
///         if (done)
///             *done = count;
///         return zeUtil::Error();
///     }
///     zeUtil::Error write(const void*, unsigned long, unsigned long*) override {
///         return zeUtil::Error(1, "read-only");
///     }
/// };
/// Zeros zeros;
/// zeOS::IOStream& stream = zeros;
/// char bytes[4] = {1, 2, 3, 4};
/// unsigned long done = 0;
/// assert(stream.read(bytes, 4, &done).code() == 0 && done == 4 && bytes[3] == 0);
/// @endcode

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// The interface of byte streams.
class ZEBASE_API IOStream {
public:
    /// Each class says what becomes of a stream that is still open.
    virtual ~IOStream();

    /// Reads up to `count` bytes into `buffer`. `done`, which may be null, receives how many bytes
    /// were read, also when the result is an error: the read that meets the end of a file may
    /// return its last bytes.
    virtual zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) = 0;
    /// Writes `count` bytes from `buffer`. `done`, which may be null, receives how many bytes were
    /// written, also when the result is an error.
    virtual zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) = 0;

protected:
    /// For derived classes, as are copying and assigning.
    IOStream() = default;
    /// Copies nothing: the interface has no data.
    IOStream(const IOStream&) = default;
    /// Assigns nothing: the interface has no data.
    IOStream& operator=(const IOStream&) = default;
};

} // namespace zeOS
