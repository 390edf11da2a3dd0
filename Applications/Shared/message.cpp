// SPDX-License-Identifier: MIT

#include "Shared/message.h"

#include <algorithm>

#include "Base/Strings/zeStringTableManager.h"
#include "Base/Strings/zeStringTableStringTable.h"

#include "Shared/failure.h"

namespace app {

namespace {

/// The argument that "{1}" at the start of `text` stands for, or null.
const std::string_view* placeholder(std::string_view text,
                                    std::initializer_list<std::string_view> arguments) {
    if (text.size() < 3 || text[0] != '{' || text[2] != '}' || text[1] < '1' || text[1] > '9')
        return nullptr;
    const auto index = static_cast<std::size_t>(text[1] - '1');
    return index < arguments.size() ? arguments.begin() + index : nullptr;
}

} // namespace

zeString::IString wide(const std::string& text) {
    return zeString::IString(text.c_str(), zeString::EncodingUTF8);
}

std::string narrow(const zeString::IString& text) {
    return text.asUTF8();
}

std::string message(const char* key, std::string_view english,
                    std::initializer_list<std::string_view> arguments) {
    bool isFound = false;
    const zeString::IString& found = zeStringTable::appStringTable().getString(key, &isFound);
    const std::string text = isFound ? narrow(found) : std::string(english);
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (const auto* argument = placeholder(std::string_view(text).substr(i), arguments)) {
            result += *argument;
            i += 2;
        } else {
            result += text[i];
        }
    return result;
}

std::string oneLine(std::string text) {
    while (text.ends_with('\n'))
        text.pop_back();
    std::string line;
    for (std::size_t at = 0; at < text.size();)
        if (text[at] != '\n') {
            line += text[at++];
        } else {
            at = std::min(text.find_first_not_of(" \n", at), text.size());
            if (!line.empty() && line.back() != ' ')
                line += ": ";
        }
    return line;
}

void loadMessages(const std::string& file) {
    const zeUtil::Error error = zeStringTable::Manager::loadCatalog(wide(file));
    if (error.code() != 0)
        throw Failure(oneLine(error.message()));
}

} // namespace app
