// SPDX-License-Identifier: MIT

/// @file
/// The command line: run(), and the commands.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace relay {

/// Does what the arguments (without the program's name) ask for, and returns the exit code: 0 for
/// success, 1 for a failure, 2 for wrong use; for a server that a signal ended, 128 and its number.
/// Results go to app::results(), messages to app::messages(): they must be open. SIGPIPE must be
/// ignored, since a peer that is gone is a failure like others.
int run(const std::vector<std::string>& arguments);

struct Settings {
    std::string command;
    std::vector<std::string> words; ///< What follows the command.
    std::string name;               ///< Empty: that of the file.
    std::string host = "127.0.0.1";
    int port = 0; ///< 0: the system chooses.
    bool isOpenToAny = false;
    std::uint64_t maxSize = 67108864; ///< Of a document, in bytes.
    int timeout = 10;                 ///< In seconds.
};

/// @name The commands
/// @{

/// Does what the command of that name is for. Throws a Failure.
void put(const Settings& settings);
void get(const Settings& settings);
void list(const Settings& settings);
/// @}

/// Serves a folder until SIGHUP, SIGINT or SIGTERM comes, and returns its number. Throws a Failure.
int serve(const Settings& settings);

} // namespace relay
