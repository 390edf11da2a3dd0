// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <algorithm>
#include <new>
#include <optional>
#include <ostream>

#include "Shared/failure.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "command/command.h"
#include "document/document.h"
#include "document/documentFile.h"
#include "obj/obj.h"
#include "scene/scene.h"

namespace scenefile {

namespace {

/// What a command works with.
struct Call {
    const Arguments& arguments;
    const app::Target* target; ///< The file to write; null for commands that write none.
    std::ostream& out;         ///< For what the command has to say.

    const std::string& file(std::size_t number) const { return arguments.words[number]; }
};

void refuseSameFile(const std::string& source, const app::Target& target) {
    if (source != app::standardStream && target.isSameFile(source))
        throw app::UsageError(source + " and " + target.name() + " are the same file");
}

/// Writes the scene and says what became of it. Numbers are rounded first where the document needs
/// it: what is checked is what the document will hold.
void writeDocument(Scene& scene, const DocumentForm& form, const Call& call,
                   std::string (*describe)(const Scene&)) {
    const app::Target& target = *call.target;
    if (target.isStandardOutput() && form.isBinary() && isatty(STDOUT_FILENO) == 1)
        throw app::UsageError("a binary document cannot be written to a terminal");
    const int rounded = form.isText() ? roundForText(scene) : 0;
    if (const SceneFault fault = checkScene(scene); !fault.text.empty())
        throw app::Failure(target.name() + ": cannot be written: " + fault.text);
    app::saveFile(target, [&](int descriptor) { saveDocument(scene, form, descriptor); });
    call.out << app::visible(target.name()) << ": " << describe(scene) << "\n";
    if (rounded > 0)
        call.out << "note: " << counted(rounded, "number")
                 << " rounded to the 16 digits of a text document\n";
}

void writeModel(const Scene& scene, const Call& call) {
    app::saveFile(*call.target, [&](int descriptor) { writeObj(scene, descriptor); });
    call.out << app::visible(call.target->name()) << ": " << summary(scene) << "\n";
}

void importModel(const Call& call) {
    refuseSameFile(call.file(1), *call.target);
    ObjModel model = readObj(call.file(1), call.arguments.skipUnsupported);
    writeDocument(model.scene, call.arguments.form, call, summary);
    for (const auto& [keyword, count] : model.skipped)
        call.out << "skipped: " << keyword << " (" << counted(count, "time") << ")\n";
}

/// The new steps act last, on the scene whose bounds show prints.
void transform(const Call& call) {
    if (call.arguments.options.empty())
        throw app::UsageError("transform needs --rotate, --scale or --translate");
    Document document = loadDocument(call.file(1));
    if (!call.target->isStandardOutput() && !call.target->exists())
        throw app::Failure(call.file(1) + ": an entry of a package is read only");
    document.scene.root->transform *= call.arguments.transform;
    writeDocument(document.scene, document.form(), call,
                  [](const Scene& scene) { return boundsText(sceneBounds(scene)); });
}

void show(const Call& call) {
    showDocument(loadDocument(call.file(1)), call.out);
}

void verify(const Call& call) {
    reportSound(loadDocument(call.file(1)), call.out);
}

void exportModel(const Call& call) {
    refuseSameFile(placeOf(call.file(1)), *call.target);
    Document document = loadDocument(call.file(1));
    applyTransforms(document.scene);
    writeModel(document.scene, call);
}

void generate(const Call& call) {
    writeModel(generateModel(call.arguments.segments), call);
}

void hash(const Call& call) {
    const std::string& path = call.file(1);
    if (path == app::standardStream)
        throw app::UsageError("hash needs a file with a name");
    const std::string digest = fileHash(path, hashKey(call.arguments.keyFile));
    if (call.arguments.expectedHash)
        expectHash(path, digest, *call.arguments.expectedHash);
    call.out << digest << "  " << app::visible(path) << "\n";
}

struct Command {
    const char* name;
    std::vector<const char*> files;
    std::vector<const char*> options;
    void (*run)(const Call&);
    std::size_t written = 0; ///< Which of the files it writes, from 1; 0 if none.
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
    throw app::UsageError("there is no command '" + name + "'");
}

const Command& checkedCommand(const Arguments& arguments) {
    if (arguments.words.empty())
        throw app::UsageError("a command is missing");
    const Command& command = findCommand(arguments.words[0]);
    for (const std::string& option : arguments.options)
        if (std::find(command.options.begin(), command.options.end(), option) ==
            command.options.end())
            throw app::UsageError(std::string(command.name) + " takes no option " + option);
    if (arguments.words.size() != command.files.size() + 1) {
        std::string expected;
        for (const char* file : command.files)
            expected += std::string(" ") + file;
        throw app::UsageError(std::string(command.name) + " takes" + expected);
    }
    return command;
}

void printError(const std::exception& error, std::ostream& err) {
    err << "scenefile: " << app::visible(error.what()) << "\n";
}

int runCommand(const Arguments& arguments, std::ostream& out, std::ostream& err) {
    const Command& command = checkedCommand(arguments);
    const std::string& file = arguments.words[std::max<std::size_t>(command.written, 1)];
    std::optional<app::Target> target;
    if (command.written > 0)
        target.emplace(file);
    const bool isOutTaken = target && target->isStandardOutput();
    int code = 0;
    try {
        command.run({arguments, target ? &*target : nullptr, isOutTaken ? err : out});
    } catch (const app::Failure& failure) {
        printError(failure, err);
        if (target && target->isAsItWas())
            err << app::visible(file) << " is as it was\n";
        code = 1;
    }
    if (file != app::standardStream)
        for (const std::string& note : app::leftoverNotes(file))
            err << app::visible(note) << "\n";
    return code;
}

int runArguments(const Arguments& arguments, std::ostream& out, std::ostream& err) {
    int code = 0;
    if (arguments.help)
        out << helpText;
    else
        code = runCommand(arguments, out, err);
    if (!out.flush())
        throw app::Failure("standard output: cannot be written");
    return code;
}

} // namespace

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    try {
        return runArguments(parseArguments(arguments), out, err);
    } catch (const app::UsageError& error) {
        printError(error, err);
        err << "Try 'scenefile --help'.\n";
        return 2;
    } catch (const std::bad_alloc&) {
        err << "scenefile: out of memory\n";
    } catch (const std::exception& error) {
        printError(error, err);
    }
    return 1;
}

} // namespace scenefile
