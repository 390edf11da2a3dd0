// SPDX-License-Identifier: MIT

// The commands: what each takes and does.

#include <algorithm>
#include <charconv>
#include <climits>
#include <string_view>
#include <utility>

#include "Base/Undo/zeUndoGroup.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/terminal.h"
#include "notebook/plugIns.h"
#include "notebook/session.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;
using Words = Command::Words;

struct Range {
    std::size_t first; ///< Counted from 0.
    std::size_t count;
};

std::size_t numberFrom(const std::string& word, std::size_t least, std::size_t most) {
    std::size_t number = 0;
    const char* const last = word.data() + word.size();
    const auto [end, error] = std::from_chars(word.data(), last, number);
    if (error == std::errc() && end == last && number >= least && number <= most)
        return number;
    throw Failure(message("notebook.no_number", "'{1}' is not a number from {2} to {3}",
                          {word, std::to_string(least), std::to_string(most)}));
}

/// The number of a line; "$" is that of the last one.
std::size_t lineFrom(const Session& session, const std::string& word, std::size_t least) {
    const std::size_t last = session.editor.text().lines().size();
    return word == "$" && last >= least ? last : numberFrom(word, least, last);
}

Range rangeFrom(const Session& session, const std::string& word) {
    const std::size_t comma = word.find(',');
    const std::size_t first = lineFrom(session, word.substr(0, comma), 1);
    const bool isOne = comma == std::string::npos;
    const std::size_t last = isOne ? first : lineFrom(session, word.substr(comma + 1), first);
    return {first - 1, last - first + 1};
}

/// The lines that follow, up to ".". A line of dots alone has one dot more.
Lines takeLines(Input& input) {
    Lines lines;
    std::size_t size = 0;
    std::optional<std::string> line;
    while ((line = input.line("", Text::mostBytes)) && line != ".") {
        if (!line->empty() && line->find_first_not_of('.') == std::string::npos)
            line->pop_back();
        size += line->size() + 1;
        if (size > Text::mostBytes)
            throw Failure(message("notebook.text_limit", "the text would become too large"));
        lines.push_back(std::move(*line));
    }
    if (!line && !input.isTerminal()) // there, the key for the end does as well
        throw Failure(message("notebook.no_dot", "the lines end without a \".\""));
    return lines;
}

void append(Session& session, const Words& words) {
    const std::size_t at = lineFrom(session, words.empty() ? "$" : words[0], 0);
    session.edit({at, 0, takeLines(session.input)});
}

void change(Session& session, const Words& words) {
    const Range range = rangeFrom(session, words[0]);
    session.edit({range.first, range.count, takeLines(session.input)});
}

void remove(Session& session, const Words& words) {
    const Range range = rangeFrom(session, words[0]);
    session.edit({range.first, range.count, {}});
}

/// Tabs are shown as blanks.
void print(Session& session, const Words& words) {
    const Lines& lines = session.editor.text().lines();
    const Range range = words.empty() ? Range{0, lines.size()} : rangeFrom(session, words[0]);
    const std::size_t end = range.first + range.count;
    for (std::size_t i = range.first; i < end && !session.isInterrupted(); ++i) {
        std::string line = lines[i];
        std::replace(line.begin(), line.end(), '\t', ' ');
        app::results()("%6d  %s\n", static_cast<int>(i + 1), app::visible(line).c_str());
    }
}

void also(Session& session, const Words& words) {
    if (std::exchange(session.isAdded, true))
        throw Failure(message("notebook.also", "also takes another command"));
    session.runCommand(words[0]);
}

void history(Session& session, const Words&) {
    for (const zeUndo::Group* group : session.editor.newestGroups())
        app::results()("%-6s %s%s (%d bytes)\n", group->lastWasUndoIt() ? "undone" : "done",
                       group->isGroupDynamic() ? "+ " : "", app::visible(group->getName()).c_str(),
                       group->getNumBytesUsed());
}

void limit(Session& session, const Words& words) {
    const auto number = static_cast<int>(numberFrom(words[1], 0, INT_MAX));
    if (words[0] == "steps")
        session.editor.setStepLimit(number);
    else if (words[0] == "memory")
        session.editor.setMemoryLimit(number);
    else
        throw Failure(message("notebook.no_limit", "there is no limit of '{1}'", {words[0]}));
}

void exportText(Session& session, const Words& words) {
    const app::Target target = session.file.otherTarget(words[1]);
    save(target, exported(words[0], session.file.name(), session.editor.text().lines()));
}

void draw(Session& session, const Words& words) {
    save(session.file.otherTarget(words[0]), [&](const std::string& name) {
        drawInto(name, session.editor.text().lines(), session.editor.newestGroups());
    });
}

void help(Session&, const Words&);

const Command commands[] = {
    {"append", 0, 1, "[LINE]", "insert the lines that follow behind a line", append},
    {"change", 1, 1, "RANGE", "replace lines by those that follow", change},
    {"delete", 1, 1, "RANGE", "delete lines", remove},
    {"print", 0, 1, "[RANGE]", "print lines with their numbers", print},
    {"undo", 0, 0, "", "undo the last step",
     [](Session& session, const Words&) { session.editor.undo(); }},
    {"redo", 0, 0, "", "redo the step that was undone last",
     [](Session& session, const Words&) { session.editor.redo(); }},
    {"begin", 1, 1, "NAME", "make one step of all edits up to end",
     [](Session& session, const Words& words) { session.editor.begin(words[0]); }},
    {"end", 0, 0, "", "end the step", [](Session& session, const Words&) { session.editor.end(); }},
    {"also", 1, 1, "COMMAND", "run a command and add its edit to the last step", also},
    {"history", 0, 0, "", "print the steps and their memory", history},
    {"limit", 2, 2, "WHAT NUMBER", "limit the steps or their memory", limit},
    {"save", 0, 1, "[FILE]", "write the text into its file, or a new one",
     [](Session& session, const Words& words) {
         session.save(words.empty() ? session.file.name() : words[0]);
     }},
    {"export", 2, 2, "FORMAT FILE", "write the text in a format", exportText},
    {"draw", 1, 1, "FILE", "draw the lines and the history as SVG", draw},
    {"help", 0, 0, "", "print this", help},
    {"quit", 0, 0, "", "end", [](Session& session, const Words&) { session.quit(); }},
};

void help(Session&, const Words&) {
    for (const Command& command : commands)
        app::results()("%-8s %-12s %s\n", command.name, command.takes, command.does);
}

} // namespace

const Command& findCommand(const std::string& name) {
    for (const Command& command : commands)
        if (std::string_view(command.name).starts_with(name))
            return command;
    throw Failure(message("notebook.no_command", "there is no command '{1}'", {name}));
}

} // namespace notebook
