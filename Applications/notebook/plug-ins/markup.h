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
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    return result;
}

} // namespace notebook
