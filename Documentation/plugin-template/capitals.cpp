// SPDX-License-Identifier: MIT
// The real plug-in, where the work and what it costs to load would be.

#include <cctype>
#include <string>

#include "Base/zeBaseExport.h"

extern "C" ZEBASE_API void convertToCapitals(const std::string& text, std::string& out) {
    out = text;
    for (char& c : out)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

extern "C" ZEBASE_API void initializePlugin() {}   // after it is loaded
extern "C" ZEBASE_API void uninitializePlugin() {} // before it is closed
