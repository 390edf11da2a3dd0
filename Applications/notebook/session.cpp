// SPDX-License-Identifier: MIT

#include "notebook/session.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;

constexpr std::size_t longestCommand = 8192;

/// The next word, with the blanks behind it.
std::string takeWord(std::string& line) {
    const std::size_t end = std::min(line.find(' '), line.size());
    std::string word = line.substr(0, end);
    line.erase(0, std::min(line.find_first_not_of(' ', end), line.size()));
    return word;
}

} // namespace

Session::Session(const std::optional<std::string>& name)
    : editor(name ? file.read(*name) : Text()) {
    if (input.isTerminal())
        interrupt_.emplace(); // Ctrl-C does not cost the text
}

bool Session::run() {
    bool isGood = true;
    while (isRunning_ && (isGood || input.isTerminal())) {
        if (interrupt_)
            interrupt_->clear();
        if (const auto line = input.line("> ", longestCommand))
            isGood = attempt(*line);
        else if (mayEnd())
            break;
    }
    return isGood || input.isTerminal();
}

bool Session::attempt(const std::string& line) {
    std::string reason;
    try {
        if (line.size() > longestCommand || line.find('\0') != std::string::npos)
            throw Failure(message("notebook.no_text", "the command is too long or holds a NUL"));
        const std::size_t first = std::min(line.find_first_not_of(' '), line.size());
        line_ = line.substr(first, line.find_last_not_of(' ') + 1 - first);
        isAdded = false;
        if (!line_.empty() && line_[0] != '#')
            runCommand(line_);
        app::flushResults();
        return true;
    } catch (const std::bad_alloc&) {
        reason = message("shared.no_memory", "out of memory");
    } catch (const std::exception& error) { // also one that a plug-in lets out
        reason = error.what();
    }
    app::report("notebook", input.place() + reason);
    return false;
}

void Session::runCommand(const std::string& line) {
    std::string rest = line;
    const Command& command = findCommand(takeWord(rest));
    Command::Words words;
    while (!rest.empty())
        words.push_back(words.size() + 1 < command.most ? takeWord(rest) : std::exchange(rest, {}));
    if (words.size() < command.least || words.size() > command.most)
        throw Failure(message("notebook.usage", "usage: {1} {2}", {command.name, command.takes}));
    command.run(*this, words);
}

void Session::edit(Patch patch) {
    if (patch.count > 0 || !patch.lines.empty())
        editor.edit(line_, std::move(patch), isAdded);
}

void Session::save(const std::string& name) {
    if (name.empty())
        throw Failure(message("notebook.no_file", "the text has no file yet"));
    file.write(editor.text(), name);
    if (name != app::standardStream)
        saved_ = editor.text().changes();
}

/// At a terminal, changes that would be lost are pointed out once before the end.
bool Session::mayEnd() {
    const std::uint64_t changes = editor.text().changes();
    if (changes == saved_ || std::exchange(warned_, changes) == changes)
        return true;
    app::report("", message("notebook.not_saved", "note: there are changes that were not saved"));
    return !input.isTerminal();
}

} // namespace notebook
