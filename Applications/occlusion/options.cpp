// SPDX-License-Identifier: MIT

#include "Shared/options.h"

#include <charconv>
#include <string_view>

#include "Base/OS/zeOSSysInfo.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "occlusion/command.h"

namespace occlusion {

namespace {

using app::message;
using app::UsageError;
using Words = app::Options::Words;

constexpr const char* above =
    R"(usage: occlusion [OPTION]...

Computes how much of the sky each vertex of a model sees: open places are white,
and creases and holes are dark. The model is an OBJ file.
)";

constexpr const char* below = R"(
An option may be shortened as long as no other one begins so, and begins with
one dash or two; its value is the next argument. The file "-" is standard input
or standard output.

The output has all that the model has, with grey for the colours of its
vertices, which take the place of weights. The picture shows the model with the
y axis upwards. The result does not depend on the number of threads. Files are
written when all is computed, each whole or not at all; Ctrl-C before leaves
them as they were.

Exit codes: 0 success, 1 bad input or a failed write, 2 wrong use, 130 stopped
by Ctrl-C.
)";

/// The parser has looked at the beginning of the number only.
template<class Number>
std::optional<Number> parsed(std::string_view text, Number least, Number most) {
    Number number{};
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number);
    const bool isGood = error == std::errc() && end == last && number >= least && number <= most;
    return isGood ? std::optional(number) : std::nullopt;
}

int countFrom(const std::string& text, int most) {
    if (const std::optional<int> count = parsed(text, 1, most))
        return *count;
    throw UsageError(message("occlusion.no_count", "'{1}' is not a number from 1 to {2}",
                             {text, std::to_string(most)}));
}

void setSize(const std::string& text, View& view) {
    const std::string_view words = text;
    const std::size_t middle = std::min(words.find('x'), words.size() - 1);
    const std::optional<int> width = parsed(words.substr(0, middle), 1, 16384);
    const std::optional<int> height = parsed(words.substr(middle + 1), 1, 16384);
    if (!width || !height)
        throw UsageError(message("occlusion.no_size",
                                 "'{1}' is no size as in 800x600, each from 1 to 16384", {text}));
    view.width = *width;
    view.height = *height;
}

zeLinear::Vector directionFrom(const Words& words) {
    constexpr double most = 1e9;
    const auto number = [&](std::size_t i) { return parsed(words[i], -most, most); };
    zeLinear::Vector result;
    if (number(0) && number(1) && number(2))
        result.set(*number(0), *number(1), *number(2));
    if (result == zeLinear::Vector::zero)
        throw UsageError(message("occlusion.no_direction", "'{1} {2} {3}' is no direction",
                                 {words[0], words[1], words[2]}));
    return result;
}

} // namespace

std::optional<Settings> parseArguments(const std::vector<std::string>& arguments) {
    Settings settings;
    settings.threads = zeOS::sysInfo().numCPUs();
    app::Options options("occlusion");
    options.describe(above, below);
    options.declare("input", "inputfile-", L"read this model instead of standard input",
                    [&](const Words& words) { settings.input = words[0]; });
    options.declare("output", "outputfile-", L"write the model with colours to this OBJ file",
                    [&](const Words& words) { settings.output = words[0]; });
    options.declare("picture", "outputfile-", L"write a picture to this PGM file",
                    [&](const Words& words) { settings.picture = words[0]; });
    options.declare("size", "string", L"WIDTHxHEIGHT of the picture in pixels (default 800x600)",
                    [&](const Words& words) { setSize(words[0], settings.view); });
    options.declare("from", "float float float",
                    L"the direction in which the viewer is (default 1 0.8 1.5)",
                    [&](const Words& words) { settings.view.from = directionFrom(words); });
    options.declare("rays", "int", L"cast this many for each vertex, 1 to 65536 (default 64)",
                    [&](const Words& words) { settings.rays = countFrom(words[0], 65536); });
    options.declare("threads", "int", L"use this many (default: one for each processor)",
                    [&](const Words& words) { settings.threads = countFrom(words[0], 1024); });
    options.declare("serial", "", L"use one thread", [&](const Words&) { settings.threads = 1; });
    options.declare("compare", "",
                    L"compute serially too, check that both results are the same, and\n"
                    L"print the times",
                    [&](const Words&) { settings.compare = true; });
    if (!options.parse(arguments))
        return std::nullopt;
    if (!options.operands().empty())
        throw UsageError(message("occlusion.operands", "there are no files behind --"));
    if (settings.output.empty() && settings.picture.empty() && !settings.compare)
        throw UsageError(
            message("occlusion.nothing", "nothing to do: give -output, -picture or -compare"));
    if (settings.compare && settings.threads == 1)
        throw UsageError(message("occlusion.compare", "-compare needs -threads 2 or more"));
    return settings;
}

} // namespace occlusion
