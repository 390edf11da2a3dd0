// SPDX-License-Identifier: MIT

// Takes bytes for the mangled name of a type. A text of n characters cannot repeat more than n
// names of n characters.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Base/OS/zeOSTypeIdName.h"
#include "Base/Strings/zeStringCString.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string mangled(reinterpret_cast<const char*>(data), size);
    zeString::CString name("before");
    zeOS::cleanupTypeIdName(mangled.c_str(), name);
    if (name != zeOS::cleanupTypeIdName(mangled.c_str()) ||
        name.length() > (size + 32) * (size + 32))
        std::abort();
    return 0;
}
