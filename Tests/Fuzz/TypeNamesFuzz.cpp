// SPDX-License-Identifier: MIT

// A mangled name, or what looks like one.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Base/OS/zeOSTypeIdName.h"
#include "Base/Strings/zeStringCString.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string mangled(reinterpret_cast<const char*>(data), size);
    const std::size_t length = std::strlen(mangled.c_str()); // a name ends at its first terminator
    zeString::CString readable;
    zeOS::cleanupTypeIdName(mangled.c_str(), readable);
    // A character stands for a built-in type at most, or for an earlier name and its "::", or for a
    // standard class; and a pointer may end there.
    const std::size_t longest =
        std::strlen("std::basic_string") + length + std::strlen("::") + std::strlen(" *");
    if (readable.length() > length * longest ||
        readable != zeOS::cleanupTypeIdName(mangled.c_str()))
        std::abort();
    return 0;
}
