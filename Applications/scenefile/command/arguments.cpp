// SPDX-License-Identifier: MIT

#include <charconv>
#include <utility>

#include "Shared/failure.h"
#include "command/command.h"

namespace scenefile {

const char* const helpText =
    R"(usage: scenefile import MODEL.obj DOCUMENT [--method METHOD] [--compress] [--checksum] [--encrypt]
                        [--skip-unsupported]
       scenefile transform DOCUMENT [--rotate DEGREES,AXIS] [--scale FACTORS] [--translate X,Y,Z]
       scenefile show DOCUMENT
       scenefile verify DOCUMENT
       scenefile export DOCUMENT MODEL.obj
       scenefile generate MODEL.obj [--segments N]
       scenefile hash DOCUMENT [--key-file FILE] [--expect DIGEST]
       scenefile --help

Keeps the models of OBJ files in documents.

  import    reads a model and writes it as a document
  transform turns, scales and moves the whole scene in a document
  show      prints what is in a document, with counts, sizes and bounds
  verify    reads a whole document and says whether it is sound
  export    writes the model in a document as an OBJ file, with its transforms applied
  generate  writes a small model to try things out with
  hash      prints the keyed digest of a document's name and content, as does "--hash DOCUMENT"

  --method METHOD     binary (the default) is small and exact; text can be read and compared by
                      people, and holds 16 digits of each number; binary-debug and text-debug put a
                      tag before each value, which finds a reader that does not match its writer
  --compress, --checksum, --encrypt
                      in any combination: make the document smaller, detect damage, prevent casual
                      reading (this is no protection: every scenefile has the key)
  --skip-unsupported  skips statements that a document cannot hold, and counts them
  --rotate DEGREES,AXIS
                      right-handed, about x, y, z or a direction X,Y,Z through the origin: 90,z
  --scale FACTORS     away from the origin: one factor, or X,Y,Z; none is 0
  --translate X,Y,Z   in the units of the model
  --segments N        steps around the ring of the generated model, 3 to 2000 (default 48)
  --key-file FILE     the bytes of this file are the key of the digest; without it, the key is the
                      text of the environment variable SCENEFILE_KEY, or else the word scenefile
  --expect DIGEST     fails if the digest is a different one
  --                  all that follows are files, even if they begin with "-"

The file "-" is standard input or standard output, except for hash. Transform reads the one and
writes the other. What would go to standard output otherwise then goes to standard error.

Show, verify and export also take a document that is an entry of a package: PACKAGE:ENTRY. It is
read in place. A file that has all of that for its name comes first.

A document holds v, vt, vn, f, l, p, o, g, s, usemtl and mtllib: points, lines and polygons with
all index forms, negative numbers, weights or colours of vertices. Other statements of OBJ (curves
and surfaces, display attributes) are refused unless they are skipped. Comments are not kept, nor
are groups and materials that no element uses.

The steps of a transform act in the order of their options, which may be repeated, and after the
transforms that the document holds already. The transform is kept as a matrix: the coordinates stay
as they were imported, and the opposite steps in the opposite order undo it. A transform is refused
if it makes the model flat, as a factor below 1e-12 does, or its coordinates too large.

A digest shows that a document was changed or renamed, even deliberately, by somebody who does not
have the key: keep the key where they cannot read it. With the word scenefile for a key it detects
accidental changes only.

A file is written whole or not at all: if anything fails, the old file stays as it was. Exit codes:
0 success, 1 bad input or a failed write, 2 wrong use.
)";

namespace {

/// Takes the arguments one by one, together with the values of options.
class Parser {
public:
    explicit Parser(const std::vector<std::string>& list) : list_(list) {}

    Arguments parse() {
        for (bool optionsEnded = false; at_ < list_.size();) {
            const std::string& word = list_[at_++];
            if (optionsEnded || word.size() < 2 || word[0] != '-')
                result_.words.push_back(word);
            else if (word == "--")
                optionsEnded = true;
            else if (word == "--hash" && result_.words.empty())
                result_.words.push_back("hash");
            else
                option(word);
        }
        return std::move(result_);
    }

private:
    /// "--name", "--name value" or "--name=value".
    void option(const std::string& word) {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        if (!flag(word) && !setting(name, equals))
            throw app::UsageError("unknown option " + word);
        result_.options.push_back(name);
    }

    bool flag(const std::string& word) {
        const std::pair<const char*, bool*> flags[] = {
            {"--compress", &result_.form.filters.compress},
            {"--checksum", &result_.form.filters.checksum},
            {"--encrypt", &result_.form.filters.encrypt},
            {"--skip-unsupported", &result_.skipUnsupported},
            {"--help", &result_.help},
            {"-h", &result_.help}};
        for (const auto& [name, target] : flags)
            if (word == name)
                return *target = true;
        return false;
    }

    bool setting(const std::string& name, std::size_t equals) {
        static constexpr std::pair<const char*, void (Parser::*)(const std::string&)> settings[] = {
            {"--method", &Parser::method},   {"--segments", &Parser::segments},
            {"--rotate", &Parser::rotate},   {"--scale", &Parser::scale},
            {"--expect", &Parser::expect},   {"--translate", &Parser::translate},
            {"--key-file", &Parser::keyFile}};
        for (const auto& [known, set] : settings)
            if (name == known) {
                (this->*set)(value(name, equals));
                return true;
            }
        return false;
    }

    std::string value(const std::string& name, std::size_t equals) {
        if (equals != std::string::npos)
            return list_[at_ - 1].substr(equals + 1);
        if (at_ == list_.size())
            throw app::UsageError("option " + name + " needs a value");
        return list_[at_++];
    }

    void rotate(const std::string& value) { result_.transform *= rotation(value); }
    void scale(const std::string& value) { result_.transform *= scaling(value); }
    void translate(const std::string& value) { result_.transform *= translation(value); }
    void keyFile(const std::string& value) { result_.keyFile = value; }
    void expect(const std::string& value) { result_.expectedHash = value; }

    void method(const std::string& value) {
        static constexpr std::pair<const char*, ioWriteMethod> methods[] = {
            {"binary", ioWriteBinary},
            {"text", ioWriteAscii},
            {"binary-debug", ioWriteBinaryDebug},
            {"text-debug", ioWriteAsciiDebug}};
        for (const auto& [name, method] : methods)
            if (value == name) {
                result_.form.method = method;
                return;
            }
        throw app::UsageError("there is no method '" + value +
                              "': use binary, text, binary-debug or text-debug");
    }

    void segments(const std::string& value) {
        const char* last = value.data() + value.size();
        const auto [end, error] = std::from_chars(value.data(), last, result_.segments);
        if (error != std::errc() || end != last || result_.segments < 3 || result_.segments > 2000)
            throw app::UsageError("'" + value + "' is not a number of segments from 3 to 2000");
    }

    const std::vector<std::string>& list_;
    std::size_t at_ = 0;
    Arguments result_;
};

} // namespace

Arguments parseArguments(const std::vector<std::string>& list) {
    return Parser(list).parse();
}

} // namespace scenefile
