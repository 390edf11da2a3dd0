// SPDX-License-Identifier: MIT

#include "Plugin/exporter.h"

#include <cstdlib>
#include <fstream>

namespace {

/// When all that happens at exit has happened.
[[gnu::destructor]] void writeJournal() {
    if (const char* path = std::getenv("ZEBASE_TEST_JOURNAL"))
        for (std::ofstream file(path); const std::string& line : journal())
            file << line << '\n';
}

} // namespace

std::vector<std::string>& journal() {
    static auto& lines = *new std::vector<std::string>; // for plug-ins that are closed at exit
    return lines;
}

Exporter::~Exporter() = default;

zeString::IString Exporter::getType() const {
    return L"exporter";
}
