// SPDX-License-Identifier: MIT

/// @file
/// How the program gives up: an exception carries the message that the user reads, in one line.

#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace app {

/// Bad input or a failed write. `what()` is a whole message, with the file and the place in it.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file of the command line cannot be what its option wants.
class RefusedFile : public Failure {
public:
    RefusedFile(const std::string& name, const std::string& message)
        : Failure(message), name_(name) {}

    const std::string& name() const { return name_; }

private:
    std::string name_;
};

/// The arguments of the program are wrong.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The text of an `errno`, such as "No such file or directory".
inline std::string systemMessage(int error) {
    return std::generic_category().message(error);
}

} // namespace app
