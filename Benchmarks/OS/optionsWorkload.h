// SPDX-License-Identifier: MIT

/// @file
/// 50 options, 10 each without an argument and with an int, a float, a text and a bool; and a
/// command line that uses each one once by its full name.

#pragma once

#include <string>
#include <vector>

namespace bench {

struct OptionName {
    std::string name;
    int kind; ///< 0 flag, 1 int, 2 float, 3 text, 4 bool.
};

inline std::vector<OptionName> optionNames() {
    const char* const beginnings[] = {"flag", "count", "scale", "label", "switch"};
    std::vector<OptionName> names;
    for (int i = 0; i < 50; ++i)
        names.push_back(
            {std::string(beginnings[i % 5]) + "option" + char('a' + i / 10) + char('a' + i % 10),
             i % 5});
    return names;
}

inline std::vector<std::string> optionLine() {
    const char* const values[] = {"", "42", "1.25", "text", "on"};
    std::vector<std::string> line;
    for (const OptionName& option : optionNames()) {
        line.push_back("--" + option.name);
        if (option.kind != 0)
            line.push_back(values[option.kind]);
    }
    return line;
}

constexpr const char* fileNames[] = {"file0", "file1", "file2", "file3", "file4",
                                     "file5", "file6", "file7", "file8", "file9"};

/// The sum of the numbers on the line.
constexpr double optionSum = 10 * (42 + 1.25 + 1);

/// What getopt and its like take: pointers into texts that live as long.
inline std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts)
        result.push_back(text.data());
    return result;
}

} // namespace bench
