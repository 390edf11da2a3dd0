// SPDX-License-Identifier: MIT

// Packs rectangles into one, and writes where each one goes as text and as a picture.

#include <getopt.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Base/OS/zeOSProtectedWrite.h"
#include "Base/Utility/zeUtilPacking.h"
#include "Base/zeBaseExport.h"

namespace {

using zeUtil::IntRange2d;

constexpr const char* help =
    R"(usage: atlas [OPTION]... [WIDTHxHEIGHT]...

Packs rectangles into one, without overlap and without turning them, and prints where each one goes.
With no size on the command line and no --input, the sizes come from standard input.

  -b, --bound=WIDTHxHEIGHT  pack into this bound, in the order given
  -i, --input=FILE          read sizes from FILE: on each line WIDTHxHEIGHT and perhaps a name;
                            lines that begin with # are comments; - is standard input
  -o, --output=FILE         write the placements to FILE instead of standard output
  -p, --power-of-two        choose a bound whose sides are powers of two
  -s, --svg=FILE            write a picture of the packing to FILE
  -h, --help                print this and end
  -V, --version             print the version and end

The first line of the output is the bound; each further one is X Y WIDTHxHEIGHT and the name.
Exit status: 0 if all is well, 1 if the sizes are bad, do not fit, or a file cannot be used,
2 if the arguments are wrong.
)";

// With these limits every bound fits into 32 bits, and a hostile list ends soon.
constexpr int longestSide = 65535;
constexpr long mostPixels = 1 << 30;
constexpr std::size_t mostRectangles = 1000000;

/// Bad input or a failed write, with the whole message.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Arguments that the program cannot be meant to be called with.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Options {
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
            throw Failure("more than 1000000 rectangles, or 2^30 pixels in all of them");
        rects.push_back(rect);
        names.emplace_back(name);
    }
};

constexpr const char* sizeRule = "a size is WIDTHxHEIGHT, each from 1 to 65535";

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

IntRange2d sizeArgument(const char* text) {
    if (const std::optional<IntRange2d> rect = parseSize(text))
        return *rect;
    throw UsageError(sizeRule);
}

void readLine(std::string_view line, Options& options) {
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    if (line.empty() || line[0] == '#')
        return;
    const std::size_t end = std::min(line.find(' '), line.size());
    const std::optional<IntRange2d> rect = parseSize(line.substr(0, end));
    if (!rect)
        throw Failure(sizeRule);
    options.add(*rect, line.substr(std::min(end + 1, line.size())));
}

void readList(std::istream& in, const std::string& source, Options& options) {
    char line[4096];
    int number = 1;
    try {
        for (; in.getline(line, sizeof line); ++number) // at the end there is no line end to count
            readLine({line, static_cast<std::size_t>(in.gcount() - (in.eof() ? 0 : 1))}, options);
        if (in.bad() || !in.eof())
            throw Failure(in.bad() ? "cannot be read" : "the line is too long");
    } catch (const Failure& failure) {
        throw Failure(source + ":" + std::to_string(number) + ": " + failure.what());
    }
}

void readFile(const std::string& name, Options& options) {
    if (name == "-")
        return readList(std::cin, "standard input", options);
    std::ifstream file(name);
    if (!file)
        throw Failure(name + ": " + std::strerror(errno));
    readList(file, name, options);
}

/// What the command line asks for; nothing if it has been done already.
std::optional<Options> parse(int argc, char** argv) {
    constexpr option names[] = {
        {"bound", required_argument, nullptr, 'b'},  {"input", required_argument, nullptr, 'i'},
        {"output", required_argument, nullptr, 'o'}, {"power-of-two", no_argument, nullptr, 'p'},
        {"svg", required_argument, nullptr, 's'},    {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, 'V'},      {nullptr, 0, nullptr, 0}};
    Options options;
    std::vector<std::string> inputs;
    for (int c; (c = getopt_long(argc, argv, "b:i:o:ps:hV", names, nullptr)) != -1;) {
        if (c == 'b') {
            options.bound = sizeArgument(optarg);
        } else if (c == 'i') {
            inputs.push_back(optarg);
        } else if (c == 'o') {
            options.output = optarg;
        } else if (c == 'p') {
            options.powerOfTwo = true;
        } else if (c == 's') {
            options.svg = optarg;
        } else if (c == 'h') {
            std::cout << help;
            return std::nullopt;
        } else if (c == 'V') {
            std::cout << "atlas (zeBase) " << ZEBASE_VERSION_MAJOR << '.' << ZEBASE_VERSION_MINOR
                      << '.' << ZEBASE_VERSION_PATCH << '\n';
            return std::nullopt;
        } else {
            throw UsageError(""); // getopt_long() has said what is wrong
        }
    }
    if (options.bound && options.powerOfTwo)
        throw UsageError("--bound and --power-of-two exclude each other");
    for (int i = optind; i < argc; ++i)
        options.add(sizeArgument(argv[i]), "");
    if (inputs.empty() && optind == argc)
        inputs.push_back("-");
    for (const std::string& input : inputs)
        readFile(input, options);
    return options;
}

std::string sizeText(const IntRange2d& rect) {
    return std::to_string(rect.size[0]) + "x" + std::to_string(rect.size[1]);
}

std::string placements(const IntRange2d& bound, const Options& options) {
    std::string text = sizeText(bound) + "\n";
    for (std::size_t i = 0; i < options.rects.size(); ++i) {
        const IntRange2d& rect = options.rects[i];
        text += std::to_string(rect.origin[0]) + " " + std::to_string(rect.origin[1]) + " " +
                sizeText(rect) + (options.names[i].empty() ? "" : " ") + options.names[i] + "\n";
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
    if (name == "-") {
        std::cout << text; // main() sees whether it went well
        return;
    }
    const zeString::IString path(name.c_str(), zeString::EncodingUTF8);
    if (path.asUTF8() != name) // or another file than this one would be written
        throw Failure("the name of an output file is not valid UTF-8");
    zeOS::ProtectedWrite save(zeOS::Filename(path, L'/'));
    bool isWritten = save.init();
    if (isWritten) {
        std::ofstream file(save.getTempFilename().path().asUTF8(), std::ios::binary);
        file << text;
        file.close();
        isWritten = file.good();
    }
    if (!isWritten || !save.finalize())
        throw Failure(name + ": cannot be written");
}

void run(Options& options) {
    const IntRange2d bound =
        options.bound ? *options.bound : zeUtil::pack(options.rects, options.powerOfTwo);
    const int left = options.bound ? zeUtil::pack(options.rects, bound) : 0;
    if (left > 0)
        throw Failure("the bound is too small: " + std::to_string(left) + " pixels are left over");
    if (!options.svg.empty())
        write(options.svg, picture(bound, options.rects));
    write(options.output, placements(bound, options));
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    try {
        if (std::optional<Options> options = parse(argc, argv))
            run(*options);
        if (!std::cout.flush())
            throw Failure("standard output cannot be written");
        return 0;
    } catch (const UsageError& error) {
        if (*error.what())
            std::cerr << "atlas: " << error.what() << '\n';
        std::cerr << "Try 'atlas --help' for more information.\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "atlas: " << error.what() << '\n';
        return 1;
    }
}
