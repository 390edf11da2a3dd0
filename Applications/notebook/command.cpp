// SPDX-License-Identifier: MIT

#include "notebook/command.h"

#include <optional>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/options.h"
#include "Shared/output.h"
#include "notebook/session.h"

namespace notebook {

namespace {

using app::message;

constexpr const char* above =
    R"(usage: notebook [OPTION]...

Edits a text by commands from standard input, each in a line of its own: the
command "help" prints them all. Steps are undone and redone, and the text is
exported and drawn by plug-ins, which are opened when they are needed.
)";

constexpr const char* below = R"(
An option may be shortened as long as no other one begins so, and begins with
one dash or two; its value is the next argument.

On a terminal there are prompts, and a failure ends nothing but its command. A
script ends where it failed, and saves only by its own commands. A file is
written whole or not at all.

Exit codes: 0 success, 1 a command of a script failed, 2 wrong use.
)";

int runArguments(const std::vector<std::string>& arguments) {
    std::optional<std::string> file;
    app::Options options("notebook");
    options.describe(above, below);
    options.declare("file", "string", L"begin with this file, which may be a new one",
                    [&](const auto& words) { file = words[0]; });
    if (options.parse(arguments)) {
        if (!options.operands().empty())
            throw app::UsageError(message("notebook.operands", "nothing may follow --"));
        if (!Session(file).run())
            return 1;
    }
    app::flushResults();
    return 0;
}

} // namespace

int run(const std::vector<std::string>& arguments) {
    try {
        return runArguments(arguments);
    } catch (const app::UsageError& error) {
        app::report("notebook", error.what());
        app::report("", message("shared.try_help", "Try '{1} --help'.", {"notebook"}));
        return 2;
    } catch (const std::exception& error) {
        app::report("notebook", error.what());
    }
    return 1;
}

} // namespace notebook
