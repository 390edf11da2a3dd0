// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <algorithm>
#include <new>
#include <optional>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "command/command.h"
#include "document/document.h"
#include "document/documentFile.h"
#include "obj/obj.h"
#include "scene/scene.h"

namespace scenefile {

/// What a command works with.
struct Call {
    const Arguments& arguments;
    const app::Target* target;  ///< The file to write; null for commands that write none.
    zeOS::AppOutputStream& out; ///< For what the command has to say.

    const std::string& file(std::size_t number) const { return arguments.files[number - 1]; }

    /// Says what was done.
    void note(const std::string& text) const { out(app::normal, "%s\n", text.c_str()); }
};

namespace {

using app::message;
using app::visible;

void refuseSameFile(const std::string& source, const app::Target& target) {
    if (source != app::standardStream && target.isSameFile(source))
        throw app::UsageError(message("scenefile.same_file", "{1} and {2} are the same file",
                                      {source, target.name()}));
}

Document load(const Call& call) {
    const app::Step step("read", message("scenefile.reading", "reading {1}", {call.file(1)}));
    return loadDocument(call.file(1));
}

void save(const Call& call, const std::function<void(int)>& write) {
    const app::Step step("write",
                         message("scenefile.writing", "writing {1}", {call.target->name()}));
    app::saveFile(*call.target, write);
}

void noteWritten(const Call& call, const std::string& what) {
    call.note(visible(call.target->name()) + ": " + what);
}

/// Writes the scene and says what became of it. Numbers are rounded first where the document needs
/// it: what is checked is what the document will hold.
void writeDocument(Scene& scene, const DocumentForm& form, const Call& call,
                   std::string (*describe)(const Scene&)) {
    const app::Target& target = *call.target;
    if (target.isStandardOutput() && form.isBinary() && isatty(STDOUT_FILENO) == 1)
        throw app::UsageError(
            message("scenefile.terminal", "a binary document cannot be written to a terminal"));
    const int rounded = form.isText() ? roundForText(scene) : 0;
    if (const SceneFault fault = checkScene(scene); !fault.text.empty())
        throw app::Failure(target.name() + ": cannot be written: " + fault.text);
    save(call, [&](int descriptor) { saveDocument(scene, form, descriptor); });
    noteWritten(call, describe(scene));
    if (rounded > 0)
        call.note(message("scenefile.rounded",
                          "note: {1} rounded to the 16 digits of a text document",
                          {counted(rounded, "number")}));
}

void writeModel(const Scene& scene, const Call& call) {
    save(call, [&](int descriptor) { writeObj(scene, descriptor); });
    noteWritten(call, summary(scene));
}

ObjModel readModel(const Call& call) {
    const app::Step step("read", message("scenefile.reading", "reading {1}", {call.file(1)}));
    return readObj(call.file(1), call.arguments.skipUnsupported);
}

void importModel(const Call& call) {
    refuseSameFile(call.file(1), *call.target);
    ObjModel model = readModel(call);
    writeDocument(model.scene, call.arguments.form, call, summary);
    for (const auto& [keyword, count] : model.skipped)
        call.note(
            message("scenefile.skipped", "skipped: {1} ({2})", {keyword, counted(count, "time")}));
}

/// The new steps act last, on the scene whose bounds show prints.
void transform(const Call& call) {
    if (call.arguments.options.empty())
        throw app::UsageError(
            message("scenefile.no_steps", "transform needs -rotate, -scale or -translate"));
    Document document = load(call);
    if (!call.target->isStandardOutput() && !call.target->exists())
        throw app::Failure(message("scenefile.read_only", "{1}: an entry of a package is read only",
                                   {call.file(1)}));
    document.scene.root->transform *= call.arguments.transform;
    writeDocument(document.scene, document.form(), call,
                  [](const Scene& scene) { return boundsText(sceneBounds(scene)); });
}

void show(const Call& call) {
    showDocument(load(call), call.out);
}

void verify(const Call& call) {
    reportSound(load(call), call.out);
}

void exportModel(const Call& call) {
    refuseSameFile(placeOf(call.file(1)), *call.target);
    Document document = load(call);
    applyTransforms(document.scene);
    writeModel(document.scene, call);
}

void generate(const Call& call) {
    writeModel(generateModel(call.arguments.segments), call);
}

void hash(const Call& call) {
    const std::string& path = call.file(1);
    const std::string digest = fileHash(path, hashKey(call.arguments.keyFile));
    if (call.arguments.expectedHash)
        expectHash(path, digest, *call.arguments.expectedHash);
    call.out("%s  %s\n", digest.c_str(), visible(path).c_str());
}

/// Throws a UsageError unless the command takes the options.
void checkOptions(const Arguments& arguments) {
    const std::vector<std::string>& taken = arguments.command->options;
    for (const std::string& option : arguments.options)
        if (std::find(taken.begin(), taken.end(), option) == taken.end())
            throw app::UsageError(message("scenefile.no_option", "{1} takes no option -{2}",
                                          {arguments.command->name, option}));
}

void reportLeftovers(const std::string& file) {
    for (const std::string& note : app::leftoverNotes(file))
        app::report("", note);
}

int runCommand(const Arguments& arguments) {
    checkOptions(arguments);
    const Command& command = *arguments.command;
    const std::string& file = arguments.files[std::max<std::size_t>(command.written, 1) - 1];
    std::optional<app::Target> target;
    if (command.written > 0)
        target.emplace(file);
    const bool isOutTaken = target && target->isStandardOutput();
    int code = 0;
    try {
        command.run({arguments, target ? &*target : nullptr,
                     isOutTaken ? app::messages() : app::results()});
    } catch (const app::Failure& failure) {
        app::report("scenefile", failure.what());
        if (target && target->isAsItWas())
            app::report("", message("scenefile.as_it_was", "{1} is as it was", {file}));
        code = 1;
    }
    if (file != app::standardStream)
        reportLeftovers(file);
    return code;
}

int runArguments(const std::vector<std::string>& list) {
    const std::optional<Arguments> arguments = parseArguments(list);
    const int code = arguments ? runCommand(*arguments) : 0;
    app::flushResults();
    return code;
}

} // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> list = {
        {"import",
         "inputfile- outputfile-",
         L"reads a model, the first file, and writes it as a document, the second",
         {"method", "compress", "checksum", "encrypt", "skip-unsupported"},
         importModel,
         2},
        {"transform",
         "inputfile-",
         L"turns, scales and moves the whole scene in a document",
         {"rotate", "scale", "translate"},
         transform,
         1},
        {"show",
         "inputfile-",
         L"prints what is in a document, with counts, sizes and bounds",
         {},
         show},
        {"verify",
         "inputfile-",
         L"reads a whole document and says whether it is sound",
         {},
         verify},
        {"export",
         "inputfile- outputfile-",
         L"writes the model in a document, the first file, as an OBJ file, the\n"
         L"second, with its transforms applied",
         {},
         exportModel,
         2},
        {"generate",
         "outputfile-",
         L"writes a small model to try things out with",
         {"segments"},
         generate,
         1},
        {"hash",
         "inputfile",
         L"prints the keyed digest of a document's name and content",
         {"key-file", "expect"},
         hash},
    };
    return list;
}

int run(const std::vector<std::string>& arguments) {
    try {
        return runArguments(arguments);
    } catch (const app::UsageError& error) {
        app::report("scenefile", error.what());
        app::report("", message("shared.try_help", "Try '{1} --help'.", {"scenefile"}));
        return 2;
    } catch (const app::RefusedFile& refused) {
        app::report("scenefile", refused.what());
        reportLeftovers(refused.name()); // it may be missing because a save was killed
    } catch (const std::bad_alloc&) {
        app::report("scenefile", message("shared.no_memory", "out of memory"));
    } catch (const std::exception& error) {
        app::report("scenefile", error.what());
    }
    return 1;
}

} // namespace scenefile
