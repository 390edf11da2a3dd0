// SPDX-License-Identifier: MIT

#include "relay/command.h"

#include <new>
#include <optional>
#include <type_traits>

#include "Base/Utility/zeUtilError.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/options.h"
#include "Shared/output.h"
#include "relay/protocol.h"

namespace relay {

namespace {

using app::message;
using app::UsageError;
using Words = app::Options::Words;

constexpr const char* above =
    R"(usage: relay COMMAND [OPTION]...

Keeps documents, packet files, for others on the network.
)";

constexpr const char* below = R"(
A command comes first, its arguments right behind it. A command and an option
may be shortened as long as no other one begins so. An option begins with one
dash or two; its value is the next argument. A file that begins with a dash is
written ./-file.

A document is kept or received whole, or the old one stays; one that arrives cut
off, damaged or too large is refused. Documents with filters (compressed, with a
checksum, encrypted) are refused too, since relay cannot check them.

There is no encryption and no authentication: whoever reaches the port may read
and replace all documents. A server takes connections from its own host alone,
unless -any is given: do that only on a network that you trust.

Exit codes: 0 success, 1 a failure, 2 wrong use; a server that a signal ended
gives 128 and the number of the signal: 130 for Ctrl-C.
)";

std::uint64_t numberIn(const std::string& text, std::uint64_t least, std::uint64_t most) {
    const auto number = numberFrom(text);
    if (number && *number >= least && *number <= most)
        return *number;
    throw UsageError(message("relay.no_number", "'{1}' is not a number from {2} to {3}",
                             {text, std::to_string(least), std::to_string(most)}));
}

void declareCommands(app::Options& options, Settings& settings) {
    const auto take = [&](const Words& words) { settings.words = words; };
    options.declareCommand("put", "inputfile", L"sends a document to the server", take);
    options.declareCommand("get", "string outputfile",
                           L"receives the document of that name and writes it to a file", take);
    options.declareCommand("list", "", L"prints the sizes and names of all documents", take);
    options.declareCommand("serve", "directory",
                           L"keeps documents in this folder, until Ctrl-C or SIGTERM", take);
}

void declareOptions(app::Options& options, Settings& settings) {
    const auto number = [](auto& result, std::uint64_t least, std::uint64_t most) {
        return [&result, least, most](const Words& words) {
            result = static_cast<std::decay_t<decltype(result)>>(numberIn(words[0], least, most));
        };
    };
    options.declare("host", "string", L"where the server is (default 127.0.0.1)",
                    [&](const Words& words) { settings.host = words[0]; });
    options.declare("port", "int",
                    L"the server's port; serve without it, or with 0, takes a free one and\n"
                    L"prints it",
                    number(settings.port, 0, 65535));
    options.declare("name", "string", L"the name under which put keeps it (default: the file's)",
                    [&](const Words& words) { settings.name = words[0]; });
    options.declare("any", "", L"serve other hosts too: see below",
                    [&](const Words&) { settings.isOpenToAny = true; });
    options.declare("max-size", "int",
                    L"take no document, or list, of more bytes (default 67108864)",
                    number(settings.maxSize, 1, std::uint64_t{1} << 40));
    options.declare("timeout", "int",
                    L"end a connection on which nothing moves for so many seconds, 1 to\n"
                    L"3600 (default 10)",
                    number(settings.timeout, 1, 3600));
}

void check(const Settings& settings) {
    if (settings.command.empty())
        throw UsageError(message("relay.no_command", "a command is missing"));
    if (settings.command != "serve" && settings.port == 0)
        throw UsageError(message("relay.port", "{1} needs -port", {settings.command}));
}

/// Nothing if the help or the version was asked for, and has been printed.
std::optional<Settings> parsed(const std::vector<std::string>& arguments) {
    Settings settings;
    app::Options options("relay");
    options.describe(above, below);
    declareCommands(options, settings);
    declareOptions(options, settings);
    if (!options.parse(arguments))
        return std::nullopt;
    if (!options.operands().empty())
        throw UsageError(message("relay.operands", "there are no files behind --"));
    settings.command = options.command();
    check(settings);
    return settings;
}

int runCommand(const Settings& settings) {
    if (settings.command == "serve")
        return 128 + serve(settings); // as a shell has it for a program that a signal ended
    if (settings.command == "put")
        put(settings);
    else if (settings.command == "get")
        get(settings);
    else
        list(settings);
    return 0;
}

} // namespace

int run(const std::vector<std::string>& arguments) {
    try {
        const std::optional<Settings> settings = parsed(arguments);
        const int code = settings ? runCommand(*settings) : 0;
        app::flushResults();
        return code;
    } catch (const UsageError& error) {
        app::report("relay", error.what());
        app::report("", message("shared.try_help", "Try '{1} --help'.", {"relay"}));
        return 2;
    } catch (const std::bad_alloc&) {
        app::report("relay", message("shared.no_memory", "out of memory"));
    } catch (const zeUtil::Error& error) { // an empty host
        app::report("relay", app::oneLine(error.message()));
    } catch (const std::exception& error) {
        app::report("relay", error.what());
    }
    return 1;
}

} // namespace relay
