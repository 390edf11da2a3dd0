// SPDX-License-Identifier: MIT

#include "Base/OS/output/zeOSWriteAllImpl.h"

#include <algorithm>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSIOStream.h"

namespace zeOS {

std::size_t writeAll(IOStream& stream, const char* bytes, std::size_t count, zeUtil::Error& error) {
    std::size_t written = 0;
    while (written < count) {
        unsigned long done = 0;
        zeUtil::Error result = stream.write(bytes + written, count - written, &done);
        written += std::min(done, count - written);
        if (result.ok() && done == 0)
            result = File::getError(File::ErrIO);
        if (!result.ok()) {
            error = std::move(result);
            break;
        }
    }
    return written;
}

} // namespace zeOS
