// SPDX-License-Identifier: MIT

// The format "html": a page that shows the lines as they are.

#include "Base/zeBaseExport.h"

#include "notebook/plug-ins/exporter.h"
#include "notebook/plug-ins/markup.h"

extern "C" ZEBASE_API void exportLines(const std::string& title,
                                       const std::vector<std::string>& lines, std::string& out) {
    using notebook::escaped;
    out += "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>" + escaped(title) +
           "</title>\n</head>\n<body>\n<pre>\n";
    for (const std::string& line : lines)
        out += escaped(line) + "\n";
    out += "</pre>\n</body>\n</html>\n";
}
