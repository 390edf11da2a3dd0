// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "Base/OS/zeOSAppOutput.h"

#include "Shared/terminal.h"
#include "command.h"
#include "package.h"

namespace zepackage {

namespace {

/// On a terminal, control characters are made visible; a pipe gets the name as it is.
std::string shown(const std::string& name) {
    return isatty(STDOUT_FILENO) == 1 ? app::visible(name) : name;
}

std::string dateText(long seconds) {
    const std::time_t time = seconds;
    std::tm parts = {};
    char text[32] = "?";
    if (localtime_r(&time, &parts) != nullptr)
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &parts);
    return text;
}

/// A string of JSON, with all control characters escaped: those of one byte, and U+0080 to U+009F,
/// which are 0xC2 and a second byte.
std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto code = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        const bool isControlOfTwo = code == 0xC2 && next < 0xA0;
        if (isControlOfTwo) {
            code = next;
            ++i;
        }
        char escape[8];
        if (code < 0x20 || code == 0x7F || isControlOfTwo) {
            std::snprintf(escape, sizeof escape, "\\u%04x", code);
            result += escape;
        } else {
            if (code == '"' || code == '\\')
                result += '\\';
            result += text[i];
        }
    }
    return result + '"';
}

std::string jsonLine(const ioPackageFileEntry& entry) {
    return "    {\"name\": " + quoted(nameOf(entry)) +
           ", \"offset\": " + std::to_string(entry.getOffset()) +
           ", \"size\": " + std::to_string(entry.getSize()) +
           ", \"modified\": " + std::to_string(entry.getTimeStamp()) +
           ", \"compressed\": " + zeOS::AppOutputStream::aBool(entry.getCompressed()) + "}";
}

std::string jsonText(const std::string& package, const Entries& entries) {
    std::string text =
        "{\n  \"package\": " + quoted(libraryText(package).asUTF8()) + ",\n  \"entries\": [";
    for (const ioPackageFileEntry* entry : entries)
        text += (entry == entries.front() ? "\n" : ",\n") + jsonLine(*entry);
    return text + (entries.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

std::string line(const ioPackageFileEntry& entry, bool isLong) {
    std::string name = shown(nameOf(entry)) + "\n";
    if (!isLong)
        return name;
    char size[24];
    std::snprintf(size, sizeof size, "%12ld", entry.getSize());
    return std::string(size) + (entry.getCompressed() ? " c " : "   ") +
           dateText(entry.getTimeStamp()) + " " + name;
}

} // namespace

bool list(const Arguments& arguments) {
    const PackageReader package(arguments.package());
    const Entries entries = selectEntries(package.package(), arguments.names());
    std::string text;
    if (arguments.json)
        text = jsonText(arguments.package(), entries);
    else
        for (const ioPackageFileEntry* entry : entries)
            text += line(*entry, arguments.verbose);
    zeOS::AppOutput::getInstance().application1("%s", text.c_str());
    return true;
}

} // namespace zepackage
