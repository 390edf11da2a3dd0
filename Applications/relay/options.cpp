// SPDX-License-Identifier: MIT

#include "Shared/options.h"

#include <algorithm>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "relay/command.h"
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

/// The commands that take an option.
struct Use {
    const char* option;
    const char* commands;
};
constexpr Use uses[] = {
    {"host", "put get list"},       {"name", "put"},          {"any", "serve"},
    {"max-size", "get list serve"}, {"max-clients", "serve"},
};

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
    const auto number = [](int& result, int least, int most) {
        return [&result, least, most](const Words& words) {
            result = static_cast<int>(numberIn(words[0], static_cast<std::uint64_t>(least),
                                               static_cast<std::uint64_t>(most)));
        };
    };
    options.declare("host", "string", L"where the server is (default 127.0.0.1)",
                    [&](const Words& words) { settings.host = words[0]; });
    options.declare("port", "int",
                    L"the server's port; serve without it, or with 0, takes a free one and\n"
                    L"prints it",
                    number(settings.port, 0, 65535));
    options.declare("port-file", "string",
                    L"serve writes its port to this file, and deletes it at the end; the\n"
                    L"others read it there",
                    [&](const Words& words) { settings.portFile = words[0]; });
    options.declare("name", "string", L"the name that the document gets (default: the file's)",
                    [&](const Words& words) { settings.name = words[0]; });
    options.declare("any", "", L"take connections from other hosts too: see below",
                    [&](const Words&) { settings.isOpenToAny = true; });
    options.declare("max-size", "int",
                    L"take no document, or list, of more bytes (default 67108864)",
                    [&](const Words& words) {
                        settings.maxSize = numberIn(words[0], 1, std::uint64_t{1} << 40);
                    });
    options.declare("max-clients", "int",
                    L"serve so many at once, 1 to 10000 (default 500); others wait",
                    number(settings.maxClients, 1, 10000));
    options.declare("timeout", "int",
                    L"end a connection on which nothing moves for so many seconds, 1 to\n"
                    L"3600 (default 10)",
                    number(settings.timeout, 1, 3600));
}

void check(const Settings& settings, const Words& given) {
    if (settings.command.empty())
        throw UsageError(message("relay.no_command", "a command is missing"));
    for (const auto& [option, commands] : uses)
        if (std::find(given.begin(), given.end(), option) != given.end() &&
            std::string(commands).find(settings.command) == std::string::npos)
            throw UsageError(
                message("relay.no_option", "{1} takes no option -{2}", {settings.command, option}));
    if (settings.command != "serve" && settings.port == 0 && settings.portFile.empty())
        throw UsageError(
            message("relay.port", "{1} needs -port or -port-file", {settings.command}));
}

} // namespace

std::optional<Settings> parseArguments(const std::vector<std::string>& arguments) {
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
    check(settings, options.given());
    return settings;
}

} // namespace relay
