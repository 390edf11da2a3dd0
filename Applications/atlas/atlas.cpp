// SPDX-License-Identifier: MIT

// Packs rectangles into one, and writes where each one goes as text and as a picture.

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSProtectedWrite.h"
#include "Base/Utility/zeUtilPacking.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/options.h"
#include "Shared/output.h"

namespace {

using app::Failure;
using app::message;
using app::UsageError;
using zeUtil::IntRange2d;

constexpr const char* helpAbove =
    R"(usage: atlas [OPTION]... [-- SIZE...]

Packs rectangles into one, without overlap and without turning them, and prints
where each one goes. A SIZE is WIDTHxHEIGHT; with no size and no -input, the
sizes come from standard input.
)";

constexpr const char* helpBelow = R"(
An option may be shortened as long as no other one begins so, and begins with
one dash or two; its value is the next argument.

The first line of the output is the bound; each further one is X Y WIDTHxHEIGHT
and the name. Exit status: 0 if all is well, 1 if the sizes are bad, do not fit,
or a file cannot be used, 2 if the arguments are wrong.
)";

// With these limits every bound fits into 32 bits, and a hostile list ends soon.
constexpr int longestSide = 65535;
constexpr long mostPixels = 1 << 30;
constexpr std::size_t mostRectangles = 1000000;

struct Work {
    std::optional<IntRange2d> bound;
    bool powerOfTwo = false;
    std::string output = "-";
    std::string svg;
    std::vector<IntRange2d> rects;
    std::vector<std::string> names; ///< Of the rectangles, in the same order; may be empty.
    long pixels = 0;

    void add(const IntRange2d& rect, std::string_view name) {
        pixels += static_cast<long>(rect.size[0]) * rect.size[1];
        if (rects.size() == mostRectangles || pixels > mostPixels)
            throw Failure(message("atlas.too_many",
                                  "more than 1000000 rectangles, or 2^30 pixels in all of them"));
        rects.push_back(rect);
        names.emplace_back(name);
    }
};

std::string sizeRule() {
    return message("atlas.size", "a size is WIDTHxHEIGHT, each from 1 to 65535");
}

/// A number up to longestSide at the front of `text`, which it is taken off; 0 if there is none.
int takeNumber(std::string_view& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc() && number > 0 && number <= longestSide ? number : 0;
}

std::optional<IntRange2d> parseSize(std::string_view text) {
    const int width = takeNumber(text);
    if (width == 0 || !text.starts_with('x'))
        return std::nullopt;
    text.remove_prefix(1);
    const int height = takeNumber(text);
    if (height == 0 || !text.empty())
        return std::nullopt;
    return IntRange2d(0, 0, width, height);
}

IntRange2d sizeArgument(const std::string& text) {
    if (const std::optional<IntRange2d> rect = parseSize(text))
        return *rect;
    throw UsageError(sizeRule());
}

void readLine(std::string_view line, Work& work) {
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    if (line.empty() || line[0] == '#')
        return;
    const std::size_t end = std::min(line.find(' '), line.size());
    const std::optional<IntRange2d> rect = parseSize(line.substr(0, end));
    if (!rect)
        throw Failure(sizeRule());
    work.add(*rect, line.substr(std::min(end + 1, line.size())));
}

void readList(std::istream& in, const std::string& source, Work& work) {
    char line[4096];
    int number = 1;
    try {
        for (; in.getline(line, sizeof line); ++number) // at the end there is no line end to count
            readLine({line, static_cast<std::size_t>(in.gcount() - (in.eof() ? 0 : 1))}, work);
        if (in.bad() || !in.eof())
            throw Failure(in.bad() ? message("atlas.not_read", "cannot be read")
                                   : message("atlas.long_line", "the line is too long"));
    } catch (const Failure& failure) {
        throw Failure(source + ":" + std::to_string(number) + ": " + failure.what());
    }
}

void readFile(const std::string& name, Work& work) {
    const app::Step step("read", message("atlas.reading", "reading {1}", {name}));
    if (name == "-")
        return readList(std::cin, message("atlas.standard_input", "standard input"), work);
    std::ifstream file(name);
    if (!file)
        throw Failure(name + ": " + std::strerror(errno));
    readList(file, name, work);
}

/// What the command line asks for; nothing if it has been done already.
std::optional<Work> parse(const std::vector<std::string>& arguments) {
    using Words = app::Options::Words;
    Work work;
    Words inputs;
    app::Options options("atlas");
    options.describe(helpAbove, helpBelow);
    options.declare("bound", "string", L"WIDTHxHEIGHT: pack into this bound, in the order given",
                    [&](const Words& words) { work.bound = sizeArgument(words[0]); });
    options.declare("input", "inputfile-",
                    L"read sizes from this file: on each line WIDTHxHEIGHT and perhaps a\n"
                    L"name; lines that begin with # are comments; - is standard input",
                    [&](const Words& words) { inputs.push_back(words[0]); });
    options.declare("output", "outputfile-",
                    L"write the placements to this file instead of standard output",
                    [&](const Words& words) { work.output = words[0]; });
    options.declare("power-of-two", "", L"choose a bound whose sides are powers of two",
                    [&](const Words&) { work.powerOfTwo = true; });
    options.declare("svg", "outputfile-", L"write a picture of the packing to this file",
                    [&](const Words& words) { work.svg = words[0]; });
    if (!options.parse(arguments))
        return std::nullopt;
    if (work.bound && work.powerOfTwo)
        throw UsageError(
            message("atlas.two_bounds", "-bound and -power-of-two exclude each other"));
    for (const std::string& size : options.operands())
        work.add(sizeArgument(size), "");
    if (inputs.empty() && options.operands().empty())
        inputs.push_back("-");
    for (const std::string& input : inputs)
        readFile(input, work);
    return work;
}

std::string sizeText(const IntRange2d& rect) {
    return std::to_string(rect.size[0]) + "x" + std::to_string(rect.size[1]);
}

std::string placements(const Work& work) {
    std::string text = sizeText(*work.bound) + "\n";
    for (std::size_t i = 0; i < work.rects.size(); ++i) {
        const IntRange2d& rect = work.rects[i];
        text += std::to_string(rect.origin[0]) + " " + std::to_string(rect.origin[1]) + " " +
                sizeText(rect) + (work.names[i].empty() ? "" : " ") + work.names[i] + "\n";
    }
    return text;
}

std::string svgRect(const IntRange2d& rect, const std::string& fill) {
    const auto attribute = [](const char* name, int value) {
        return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
    };
    return "<rect" + attribute("x", rect.origin[0]) + attribute("y", rect.origin[1]) +
           attribute("width", rect.size[0]) + attribute("height", rect.size[1]) + " fill=\"" +
           fill + "\"/>\n";
}

std::string picture(const IntRange2d& bound, const std::vector<IntRange2d>& rects) {
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " +
                       std::to_string(bound.size[0]) + " " + std::to_string(bound.size[1]) +
                       "\" stroke=\"#333\">\n" + svgRect(bound, "#eee");
    int hue = 0; // far apart for neighbours in the list
    for (const IntRange2d& rect : rects)
        text += svgRect(rect, "hsl(" + std::to_string(hue = (hue + 137) % 360) + ",55%,70%)");
    return text + "</svg>\n";
}

/// Writes a whole file, or leaves the one that was there; "-" is standard output.
void write(const std::string& name, const std::string& text) {
    const app::Step step("write", message("atlas.writing", "writing {1}", {name}));
    if (name == "-") {
        app::results()("%s", text.c_str()); // app::flushResults() sees whether it went well
        return;
    }
    zeOS::ProtectedWrite save(zeOS::Filename(app::wide(name), L'/'));
    bool isWritten = save.init();
    if (isWritten) {
        std::ofstream file(save.getTempFilename().path().asUTF8(), std::ios::binary);
        file << text;
        file.close();
        isWritten = file.good();
    }
    if (!isWritten || !save.finalize())
        throw Failure(message("atlas.not_written", "{1}: cannot be written", {name}));
}

void pack(Work& work) {
    const app::Step step("pack", message("atlas.packing", "packing {1} rectangles",
                                         {std::to_string(work.rects.size())}));
    int left = 0;
    if (work.bound)
        left = zeUtil::pack(work.rects, *work.bound);
    else
        work.bound = zeUtil::pack(work.rects, work.powerOfTwo);
    if (left > 0)
        throw Failure(message("atlas.left_over", "the bound is too small: {1} pixels are left over",
                              {std::to_string(left)}));
}

int run(const std::vector<std::string>& arguments) {
    try {
        if (std::optional<Work> work = parse(arguments)) {
            pack(*work);
            if (!work->svg.empty())
                write(work->svg, picture(*work->bound, work->rects));
            write(work->output, placements(*work));
        }
        app::flushResults();
        return 0;
    } catch (const UsageError& error) {
        app::report("atlas", error.what());
        app::report("", message("shared.try_help", "Try '{1} --help'.", {"atlas"}));
        return 2;
    } catch (const std::exception& error) {
        app::report("atlas", error.what());
        return 1;
    }
}

} // namespace

int main(int argc, char** argv, char** envp) {
    std::setlocale(LC_CTYPE, "C.UTF-8"); // names are UTF-8
    zeOS::AppMain::getInstance().initialize(argc, argv, envp);
    app::openOutput();
    return run({argv + (argc > 0), argv + argc});
}
