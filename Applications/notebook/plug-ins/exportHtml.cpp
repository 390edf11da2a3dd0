// SPDX-License-Identifier: MIT

// The format "html": lines that begin with "# " to "###### " are headings, those that begin with
// "- " items, and the others paragraphs, up to an empty line.

#include "Base/zeBaseExport.h"

#include "notebook/plug-ins/exporter.h"
#include "notebook/plug-ins/markup.h"

namespace {

/// Closes the block that is open, unless it is of this kind, which it opens then.
void enter(const char* kind, std::string& open, std::string& html) {
    if (open == kind)
        return;
    if (!open.empty())
        html += "</" + open + ">\n";
    open = kind;
    if (!open.empty())
        html += "<" + open + ">\n";
}

} // namespace

extern "C" ZEBASE_API void exportLines(const std::string& title,
                                       const std::vector<std::string>& lines, std::string& html) {
    using notebook::escaped;
    html += "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>" + escaped(title) +
            "</title>\n</head>\n<body>\n";
    std::string open;
    for (const std::string& line : lines) {
        const std::size_t level = line.find_first_not_of('#');
        if (level >= 1 && level <= 6 && line[level] == ' ') {
            enter("", open, html);
            const std::string tag = "h" + std::to_string(level) + ">";
            html += "<" + tag + escaped(line.substr(level + 1)) + "</" + tag + "\n";
        } else if (line.starts_with("- ")) {
            enter("ul", open, html);
            html += "<li>" + escaped(line.substr(2)) + "</li>\n";
        } else if (line.find_first_not_of(" \t\r") == std::string::npos) {
            enter("", open, html);
        } else {
            enter("p", open, html);
            html += escaped(line) + "\n";
        }
    }
    enter("", open, html);
    html += "</body>\n</html>\n";
}
