// SPDX-License-Identifier: MIT

/// @file
/// The dialogue: commands are read, run and answered until the end.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Shared/interruption.h"
#include "notebook/editor.h"
#include "notebook/file.h"
#include "notebook/input.h"

namespace notebook {

class Session {
public:
    /// Reads the file, if there is one. Throws a Failure.
    explicit Session(const std::optional<std::string>& name);

    /// Runs the commands of standard input. A script ends at its first failure, since what follows
    /// was meant for another text: false then.
    bool run();

    /// @{
    /// For the commands.
    void runCommand(const std::string& line);
    /// Makes an edit, which is named by the whole command, and is added to the last step after
    /// "also".
    void edit(Patch patch);
    void save(const std::string& name);
    void quit() { isRunning_ = !mayEnd(); }
    /// Whether the user wants long output to end.
    bool isInterrupted() const { return interrupt_ && interrupt_->isSet(); }

    Input input;
    File file;
    Editor editor;
    bool isAdded = false;
    /// @}

private:
    bool attempt(const std::string& line);
    bool mayEnd();

    std::optional<app::InterruptFlag> interrupt_; ///< At a terminal.
    std::uint64_t saved_ = 0;                     ///< The changes that are in the file,
    std::uint64_t warned_ = 0;                    ///< or that may be lost.
    std::string line_;
    bool isRunning_ = true;
};

/// A command of the language.
struct Command {
    using Words = std::vector<std::string>;

    const char* name;
    std::size_t least; ///< How many words it takes.
    std::size_t most;  ///< The last one may have blanks.
    const char* takes;
    const char* does;
    void (*run)(Session& session, const Words& words);
};

/// The first one whose name begins so. Throws a Failure if there is none.
const Command& findCommand(const std::string& name);

} // namespace notebook
