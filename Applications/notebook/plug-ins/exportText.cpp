// SPDX-License-Identifier: MIT

// The format "text": what can be read everywhere. Blanks at the end of lines go, tabs become
// blanks, and what cannot be printed becomes visible.

#include <algorithm>

#include "Base/zeBaseExport.h"

#include "Shared/terminal.h"
#include "notebook/plug-ins/exporter.h"

extern "C" ZEBASE_API void exportLines(const std::string&, const std::vector<std::string>& lines,
                                       std::string& out) {
    for (std::string line : lines) {
        std::replace(line.begin(), line.end(), '\t', ' ');
        while (line.ends_with(' ') || line.ends_with('\r'))
            line.pop_back();
        out += app::visible(line) + "\n";
    }
}
