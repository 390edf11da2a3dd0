// SPDX-License-Identifier: MIT

// The format "text": what can be read everywhere. Blanks at the end of lines go, tabs become
// blanks, and what cannot be printed becomes visible.

#include <algorithm>

#include "Shared/terminal.h"
#include "notebook/plug-ins/exporter.h"

extern "C" [[gnu::visibility("default")]] std::string
exportLines(const std::string&, const std::vector<std::string>& lines) {
    std::string text;
    for (std::string line : lines) {
        std::replace(line.begin(), line.end(), '\t', ' ');
        while (line.ends_with(' ') || line.ends_with('\r'))
            line.pop_back();
        text += app::visible(line) + "\n";
    }
    return text;
}
