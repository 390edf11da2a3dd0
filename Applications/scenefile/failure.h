// SPDX-License-Identifier: MIT

/// @file
/// How the program gives up: an exception carries the message that the user reads.

#pragma once

#include <stdexcept>
#include <string>

namespace scenefile {

/// Bad input or a failed write. `what()` is a whole message, with the file and the place in it.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Arguments that the program cannot be meant to be called with.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// "No such file or directory" and its like, for an `errno`.
std::string systemMessage(int error);

} // namespace scenefile
