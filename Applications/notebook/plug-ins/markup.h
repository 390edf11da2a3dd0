// SPDX-License-Identifier: MIT

/// @file
/// Text in HTML and SVG.

#pragma once

#include <algorithm>
#include <string>

#include "Shared/terminal.h"

namespace notebook {

/// `text` as it may stand between tags and in attributes: nothing in it is markup, and what is not
/// allowed there becomes visible.
inline std::string escaped(std::string text) {
    std::replace(text.begin(), text.end(), '\t', ' ');
    std::string result;
    for (const char c : app::visible(text))
        if (c == '&' || c == '<' || c == '>' || c == '"')
            result += "&#" + std::to_string(static_cast<int>(c)) + ";";
        else
            result += c;
    return result;
}

} // namespace notebook
