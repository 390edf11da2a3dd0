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
/// which are 0xC2 and a second byte. U+FFFD stands for each byte that is not UTF-8.
std::string quoted(std::string_view text) {
    std::string result = "\"";
    while (!text.empty()) {
        std::size_t size = app::printableSize(text);
        if (size > 0) {
            if (text[0] == '"' || text[0] == '\\')
                result += '\\';
            result += text.substr(0, size);
        } else {
            unsigned int code = static_cast<unsigned char>(text[0]);
            const unsigned int next = text.size() > 1 ? static_cast<unsigned char>(text[1]) : 0;
            const bool isControlOfTwo = code == 0xC2 && next >= 0x80 && next < 0xA0;
            size = isControlOfTwo ? 2 : 1;
            if (code >= 0x80)
                code = isControlOfTwo ? next : 0xFFFD;
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", code);
            result += escape;
        }
        text.remove_prefix(size);
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
    std::string text = "{\n  \"package\": " + quoted(package) + ",\n  \"entries\": [";
    for (const ioPackageFileEntry* entry : entries) {
        text += entry == entries.front() ? "\n" : ",\n";
        text += jsonLine(*entry);
    }
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
