// SPDX-License-Identifier: MIT

#include "commands.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <new>
#include <optional>
#include <ostream>
#include <tuple>
#include <utility>

#include "Base/Linear/zeLinearMatrix.h"

#include "document.h"
#include "failure.h"
#include "generate.h"
#include "hash.h"
#include "leftovers.h"
#include "objReader.h"
#include "objWriter.h"
#include "replaceFile.h"
#include "report.h"
#include "transform.h"
#include "transformOptions.h"

namespace scenefile {

namespace {

constexpr const char* help =
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
  verify    reads a document whole and says whether it is sound
  export    writes the model in a document as an OBJ file, with its transforms applied
  generate  writes a small model to try things out with
  hash      prints the keyed digest of a document's name and content; "--hash DOCUMENT" does, too

  --method METHOD     binary (the default) is small and exact; text can be read and compared by
                      people, and holds 16 digits of each number; binary-debug and text-debug have a
                      tag before each value, which finds a reader that is out of step
  --compress, --checksum, --encrypt
                      in any combination: make the document smaller, guard it against damage,
                      keep it from being read casually (it is no secret: every scenefile has the key)
  --skip-unsupported  passes over statements that a document has no place for, and says how many
  --rotate DEGREES,AXIS
                      right-handed, about x, y, z or a direction X,Y,Z through the origin: 90,z
  --scale FACTORS     away from the origin: one factor, or X,Y,Z; none is 0
  --translate X,Y,Z   in the units of the model
  --segments N        steps around the ring of the generated model, 3 to 2000 (default 48)
  --key-file FILE     all bytes of this file are the key of the digest; without it, the text of the
                      environment's SCENEFILE_KEY is, or else the word scenefile
  --expect DIGEST     an error if the digest is another one
  --                  what follows is a file, even if it begins with "-"

A document holds v, vt, vn, f, l, p, o, g, s, usemtl and mtllib: points, lines and polygons with
all index forms, negative numbers, weights or colours of vertices. Other statements of OBJ (curves
and surfaces, display attributes) are refused unless they are skipped. Comments are not kept, nor
are groups and materials that no element uses.

A transform acts in the order in which its options are given, each as often as you like, and after
the transforms that the document holds. It is kept as a matrix: the coordinates stay as they were
imported, and the opposite steps in the opposite order take it back. One that makes the model flat,
as a factor below 1e-12 does, or its coordinates too large, is refused.

A digest tells that a document was changed or renamed, however cleverly, by somebody who has not the
key: keep that where they cannot read it. With the word scenefile for a key it shows accidents only.

A file is written whole or not at all: if anything fails, the old one stays as it was. Exit codes: 0
success, 1 bad input or a failed write, 2 wrong use.
)";

struct Arguments {
    std::vector<std::string> words; // without the options
    DocumentForm form;
    bool skipUnsupported = false;
    int segments = 48;
    zeLinear::AffineMatrix transform; // what came first acts first
    std::optional<std::string> keyFile;
    std::optional<std::string> expectedHash;
    bool help = false;
    std::vector<std::string> options; // as they were given
};

/// Takes the arguments one by one, those that belong to an option with it.
class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : list_(arguments) {}

    Arguments parse() {
        for (bool optionsEnded = false; at_ < list_.size();) {
            const std::string& word = list_[at_++];
            if (optionsEnded || word.size() < 2 || word[0] != '-')
                result_.words.push_back(word);
            else if (word == "--")
                optionsEnded = true;
            else if (word == "--hash" && result_.words.empty())
                result_.words.push_back("hash"); // as other programs have it
            else
                option(word);
        }
        return std::move(result_);
    }

private:
    /// "--name value" or "--name=value".
    void option(const std::string& word) {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto value = [&] {
            if (equals != std::string::npos)
                return word.substr(equals + 1);
            if (at_ == list_.size())
                throw UsageError("option " + name + " needs a value");
            return list_[at_++];
        };
        if (name == "--method")
            setMethod(value());
        else if (name == "--segments")
            setSegments(value());
        else if (name == "--rotate")
            result_.transform *= rotation(value());
        else if (name == "--scale")
            result_.transform *= scaling(value());
        else if (name == "--translate")
            result_.transform *= translation(value());
        else if (name == "--key-file")
            result_.keyFile = value();
        else if (name == "--expect")
            result_.expectedHash = value();
        else if (word == "--compress")
            result_.form.filters.compress = true;
        else if (word == "--checksum")
            result_.form.filters.checksum = true;
        else if (word == "--encrypt")
            result_.form.filters.encrypt = true;
        else if (word == "--skip-unsupported")
            result_.skipUnsupported = true;
        else if (word == "--help" || word == "-h")
            result_.help = true;
        else
            throw UsageError("unknown option " + word);
        result_.options.push_back(name);
    }

    void setMethod(const std::string& value) {
        static const std::pair<const char*, ioWriteMethod> methods[] = {
            {"binary", ioWriteBinary},
            {"text", ioWriteAscii},
            {"binary-debug", ioWriteBinaryDebug},
            {"text-debug", ioWriteAsciiDebug}};
        for (const auto& [name, method] : methods)
            if (value == name) {
                result_.form.method = method;
                return;
            }
        throw UsageError("there is no method '" + value +
                         "': it is binary or text, or one of them with -debug");
    }

    void setSegments(const std::string& value) {
        const char* last = value.data() + value.size();
        const auto [end, error] = std::from_chars(value.data(), last, result_.segments);
        if (error != std::errc() || end != last || result_.segments < 3 || result_.segments > 2000)
            throw UsageError("'" + value + "' is not a number of segments from 3 to 2000");
    }

    const std::vector<std::string>& list_;
    std::size_t at_ = 0;
    Arguments result_;
};

/// Nobody means to replace what is being read.
void refuseSameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    if (std::filesystem::equivalent(a, b, error))
        throw UsageError(a + " and " + b + " are the same file");
}

/// Returns how many numbers had to be rounded. What is checked is what the document will hold.
int writeDocument(Scene& scene, const DocumentForm& form, const std::string& target) {
    const bool isText = form.method == ioWriteAscii || form.method == ioWriteAsciiDebug;
    const int rounded = isText ? roundForText(scene) : 0;
    if (const SceneFault fault = checkScene(scene); !fault.text.empty())
        throw Failure(target + ": cannot be written: " + fault.text);
    replaceFile(target, [&](int descriptor) { saveDocument(scene, form, descriptor); });
    return rounded;
}

void noteRounded(int count, std::ostream& out) {
    if (count > 0)
        out << "note: " << count << " numbers were rounded to the 16 digits of a text document\n";
}

void importModel(const Arguments& arguments, std::ostream& out) {
    const std::string& model = arguments.words[1];
    const std::string& target = arguments.words[2];
    refuseSameFile(model, target);
    ObjModel read = readObj(model, arguments.skipUnsupported);
    const int rounded = writeDocument(read.scene, arguments.form, target);
    out << target << ": " << summary(read.scene) << "\n";
    for (const auto& [keyword, count] : read.skipped)
        out << "skipped: " << keyword << " (" << count << " times)\n";
    noteRounded(rounded, out);
}

/// What is new acts last, on the scene as show tells its bounds.
void transform(const Arguments& arguments, std::ostream& out) {
    if (arguments.options.empty())
        throw UsageError("transform takes --rotate, --scale or --translate");
    const std::string& target = arguments.words[1];
    Document document = loadDocument(target);
    Scene& scene = document.scene;
    scene.root->transform *= arguments.transform;
    const int rounded = writeDocument(scene, document.form(), target);
    out << target << ": " << boundsText(sceneBounds(scene)) << "\n";
    noteRounded(rounded, out);
}

void show(const Arguments& arguments, std::ostream& out) {
    showDocument(loadDocument(arguments.words[1]), arguments.words[1], out);
}

void verify(const Arguments& arguments, std::ostream& out) {
    reportSound(loadDocument(arguments.words[1]), arguments.words[1], out);
}

void writeModel(const Scene& scene, const std::string& target, std::ostream& out) {
    replaceFile(target, [&](int descriptor) { writeObj(scene, descriptor); });
    out << target << ": " << summary(scene) << "\n";
}

void exportModel(const Arguments& arguments, std::ostream& out) {
    const std::string& source = arguments.words[1];
    const std::string& target = arguments.words[2];
    refuseSameFile(source, target);
    Document document = loadDocument(source);
    applyTransforms(document.scene);
    writeModel(document.scene, target, out);
}

void generate(const Arguments& arguments, std::ostream& out) {
    writeModel(generateModel(arguments.segments), arguments.words[1], out);
}

void hash(const Arguments& arguments, std::ostream& out) {
    const std::string& path = arguments.words[1];
    const std::string digest = fileHash(path, hashKey(arguments.keyFile));
    if (arguments.expectedHash)
        expectHash(path, digest, *arguments.expectedHash);
    out << digest << "  " << path << "\n";
}

struct Command {
    const char* name;
    std::vector<const char*> files;
    std::vector<const char*> options;
    void (*run)(const Arguments&, std::ostream&);
    std::size_t written = 0; ///< which of the words is the file that it writes, if any
};

const Command& findCommand(const std::string& name) {
    static const Command commands[] = {
        {"import",
         {"MODEL.obj", "DOCUMENT"},
         {"--method", "--compress", "--checksum", "--encrypt", "--skip-unsupported"},
         importModel,
         2},
        {"transform", {"DOCUMENT"}, {"--rotate", "--scale", "--translate"}, transform, 1},
        {"show", {"DOCUMENT"}, {}, show},
        {"verify", {"DOCUMENT"}, {}, verify},
        {"export", {"DOCUMENT", "MODEL.obj"}, {}, exportModel, 2},
        {"generate", {"MODEL.obj"}, {"--segments"}, generate, 1},
        {"hash", {"DOCUMENT"}, {"--key-file", "--expect"}, hash},
    };
    for (const Command& command : commands)
        if (name == command.name)
            return command;
    throw UsageError("there is no command '" + name + "'");
}

/// Knows whether a file was touched.
class Witness {
public:
    explicit Witness(const std::string& file) : file_(file), before_(look()) {}

    bool isAsItWas() const { return before_ && look() == before_; }

private:
    /// A file in its place has another number, and a change of it another time.
    using Look = std::tuple<dev_t, ino_t, off_t, time_t, long>;

    std::optional<Look> look() const {
        struct stat now = {};
        if (stat(file_.c_str(), &now) != 0)
            return {};
        return Look(now.st_dev, now.st_ino, now.st_size, now.st_mtim.tv_sec, now.st_mtim.tv_nsec);
    }

    std::string file_;
    std::optional<Look> before_;
};

void runCommand(const Arguments& arguments, std::ostream& out, std::ostream& err) {
    if (arguments.words.empty())
        throw UsageError("a command is missing");
    const Command& command = findCommand(arguments.words[0]);
    for (const std::string& option : arguments.options)
        if (std::find(command.options.begin(), command.options.end(), option) ==
            command.options.end())
            throw UsageError(std::string(command.name) + " takes no option " + option);
    if (arguments.words.size() != command.files.size() + 1) {
        std::string expected;
        for (const char* file : command.files)
            expected += std::string(" ") + file;
        throw UsageError(std::string(command.name) + " takes" + expected);
    }
    const std::string& file = arguments.words[command.written > 0 ? command.written : 1];
    const Witness witness(file);
    try {
        command.run(arguments, out);
    } catch (const Failure& failure) {
        std::string message = failure.what();
        if (command.written > 0 && witness.isAsItWas())
            message += "\n" + file + " is as it was";
        for (const std::string& note : leftoverNotes(file))
            message += "\n" + note;
        throw Failure(message);
    }
    for (const std::string& note : leftoverNotes(file))
        err << note << "\n";
}

} // namespace

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    try {
        const Arguments parsed = Parser(arguments).parse();
        if (parsed.help)
            out << help;
        else
            runCommand(parsed, out, err);
        out.flush();
        if (!out)
            throw Failure("standard output: cannot be written");
        return 0;
    } catch (const UsageError& error) {
        err << "scenefile: " << error.what() << "\n"
            << "Try 'scenefile --help'.\n";
        return 2;
    } catch (const std::bad_alloc&) {
        err << "scenefile: out of memory\n";
    } catch (const std::exception& error) {
        err << "scenefile: " << error.what() << "\n";
    }
    return 1;
}

} // namespace scenefile
