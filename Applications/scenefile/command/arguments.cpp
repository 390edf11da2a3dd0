// SPDX-License-Identifier: MIT

#include <charconv>
#include <cstring>
#include <utility>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/options.h"
#include "command/command.h"
#include "document/documentFile.h"

namespace scenefile {

namespace {

using app::message;

constexpr const char* above =
    R"(usage: scenefile COMMAND FILE... [OPTION]...

Keeps the models of OBJ files in documents.
)";

constexpr const char* below = R"(
A command and an option may be shortened as long as no other one begins so. An
option begins with one dash or two; its value is the next argument.

The file "-" is standard input or standard output, except for hash. Transform
reads the one and writes the other. What would go to standard output otherwise
then goes to standard error. A file that begins with a dash is written ./-file.

Show, verify and export also take a document that is an entry of a package:
PACKAGE:ENTRY. It is read in place. A file that has all of that for its name
comes first.

A document holds v, vt, vn, f, l, p, o, g, s, usemtl and mtllib: points, lines
and polygons with all index forms, negative numbers, weights or colours of
vertices. Other statements of OBJ (curves and surfaces, display attributes) are
refused unless they are skipped. Comments are not kept, nor are groups and
materials that no element uses.

The steps of a transform act in the order of their options, which may be
repeated, and after the transforms that the document holds already. The
transform is kept as a matrix: the coordinates stay as they were imported, and
the opposite steps in the opposite order undo it. A transform is refused if it
makes the model flat, as a factor below 1e-12 does, or its coordinates too
large.

A digest shows that a document was changed or renamed, even deliberately, by
somebody who does not have the key: keep the key where they cannot read it. With
the word scenefile for a key it detects accidental changes only.

A file is written whole or not at all: if anything fails, the old file stays as
it was. Exit codes: 0 success, 1 bad input or a failed write, 2 wrong use.
)";

ioWriteMethod methodOf(const std::string& value) {
    static constexpr std::pair<const char*, ioWriteMethod> methods[] = {
        {"binary", ioWriteBinary},
        {"text", ioWriteAscii},
        {"binary-debug", ioWriteBinaryDebug},
        {"text-debug", ioWriteAsciiDebug}};
    for (const auto& [name, method] : methods)
        if (value == name)
            return method;
    throw app::UsageError(
        message("scenefile.no_method",
                "there is no method '{1}': use binary, text, binary-debug or text-debug", {value}));
}

/// The parser has looked at the beginning of the number only.
int segmentsOf(const std::string& value) {
    int segments = 0;
    const char* last = value.data() + value.size();
    const auto [end, error] = std::from_chars(value.data(), last, segments);
    if (error != std::errc() || end != last || segments < 3 || segments > 2000)
        throw app::UsageError(message("scenefile.no_segments",
                                      "'{1}' is not a number of segments from 3 to 2000", {value}));
    return segments;
}

/// The command line of scenefile, and what it leaves in an Arguments.
class Options : public app::Options {
public:
    explicit Options(Arguments& arguments) : app::Options("scenefile"), result_(arguments) {
        describe(above, below);
        for (const Command& each : commands())
            declareCommand(each.name, each.files, each.usage, [&](const Words& files) {
                result_.command = &each;
                result_.files = files;
            });
        declareForm();
        declareTransform();
        declareHash();
    }

    /// A document may be an entry of a package.
    zeUtil::Error validInputFile(const zeString::IString& name) const override {
        return app::Options::validInputFile(app::wide(placeOf(app::narrow(name))));
    }

private:
    void declareForm() {
        declare("method", "string",
                L"binary (the default) is small and exact; text can be read and compared\n"
                L"by people, and holds 16 digits of each number; binary-debug and\n"
                L"text-debug put a tag before each value, which finds a reader that does\n"
                L"not match its writer",
                [this](const Words& words) { result_.form.method = methodOf(words[0]); });
        declare("compress", "", L"makes the document smaller",
                [this](const Words&) { result_.form.filters.compress = true; });
        declare("checksum", "", L"detects damage",
                [this](const Words&) { result_.form.filters.checksum = true; });
        declare("encrypt", "",
                L"prevents casual reading, and is no protection: every scenefile has the key",
                [this](const Words&) { result_.form.filters.encrypt = true; });
        declare("skip-unsupported", "",
                L"skips statements that a document cannot hold, and counts them",
                [this](const Words&) { result_.skipUnsupported = true; });
        declare("segments", "int",
                L"steps around the ring of the generated model, 3 to 2000 (default 48)",
                [this](const Words& words) { result_.segments = segmentsOf(words[0]); });
    }

    void declareTransform() {
        declare("rotate", "string",
                L"DEGREES,AXIS: right-handed, about x, y, z or a direction X,Y,Z through\n"
                L"the origin, as in 90,z",
                [this](const Words& words) { result_.transform *= rotation(words[0]); });
        declare("scale", "string", L"away from the origin, by one factor or by X,Y,Z; none is 0",
                [this](const Words& words) { result_.transform *= scaling(words[0]); });
        declare("translate", "string", L"by X,Y,Z in the units of the model",
                [this](const Words& words) { result_.transform *= translation(words[0]); });
    }

    void declareHash() {
        declare("key-file", "inputfile",
                L"the bytes of this file are the key of the digest; without it, the key is\n"
                L"the text of the environment variable SCENEFILE_KEY, or else the word\n"
                L"scenefile",
                [this](const Words& words) { result_.keyFile = words[0]; });
        declare("expect", "string", L"fails if the digest is a different one",
                [this](const Words& words) { result_.expectedHash = words[0]; });
    }

    Arguments& result_;
};

} // namespace

std::optional<Arguments> parseArguments(const std::vector<std::string>& list) {
    Arguments result;
    Options options(result);
    if (!options.parse(list))
        return std::nullopt;
    if (result.command == nullptr)
        throw app::UsageError(message("scenefile.no_command", "a command is missing"));
    if (!options.operands().empty())
        throw app::UsageError(
            message("scenefile.operands", "{1} takes no files behind --", {result.command->name}));
    result.options = options.given();
    return result;
}

} // namespace scenefile
