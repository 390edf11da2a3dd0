// SPDX-License-Identifier: MIT

#include "relay/command.h"

#include <new>

#include "Base/Utility/zeUtilError.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"

namespace relay {

namespace {

using app::message;

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
        const std::optional<Settings> settings = parseArguments(arguments);
        const int code = settings ? runCommand(*settings) : 0;
        app::flushResults();
        return code;
    } catch (const app::UsageError& error) {
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
