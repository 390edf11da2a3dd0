// SPDX-License-Identifier: MIT

/// @file
/// The command line: run(), and the parts that it is made of.

#pragma once

#include <string>
#include <vector>

namespace zepackage {

/// Does what the arguments (without the program's name) ask for, and returns the exit code: 0 for
/// success, 1 for bad input or a failed write, 2 for wrong use. Results go to
/// zeOS::AppOutput::application1, which must be open, and messages to standard error.
int run(const std::vector<std::string>& arguments);

/// What `zepackage --help` prints.
extern const char* const helpText;

/// The command, its files and its options.
struct Arguments {
    std::vector<std::string> words; ///< The command, the package, and what follows it.
    std::string folder = ".";       ///< Where files are, and where they go.
    bool compress = false;
    bool force = false;
    bool json = false;
    bool verbose = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> options; ///< The long names of the options that were given.

    const std::string& package() const { return words[1]; }
    /// What follows the package.
    std::vector<std::string> names() const { return {words.begin() + 2, words.end()}; }
};

/// Throws an app::UsageError for an option that does not exist, or lacks its value.
Arguments parseArguments(const std::vector<std::string>& list);

// The commands. They throw an app::Failure, or report failures of single entries and return false.

bool create(const Arguments& arguments);
bool add(const Arguments& arguments);
bool remove(const Arguments& arguments);
bool compact(const Arguments& arguments);
bool list(const Arguments& arguments);
bool extract(const Arguments& arguments);
bool cat(const Arguments& arguments);
bool verify(const Arguments& arguments);

/// A message to the user, with control characters made visible.
void report(const std::string& message);

/// Says with --verbose what has been done with an entry or a file.
void reportDone(const std::string& name, const Arguments& arguments);

} // namespace zepackage
