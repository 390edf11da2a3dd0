// SPDX-License-Identifier: MIT

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <exception>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Base/Undo/zeUndoGroup.h"

#include "Shared/failure.h"
#include "Shared/interruption.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "notebook/command.h"
#include "notebook/editor.h"
#include "notebook/file.h"
#include "notebook/input.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;

/// Lines from `first` up to `end`, counted from 0.
struct Range {
    std::size_t first;
    std::size_t end;
    std::size_t count() const { return end - first; }
};

class Session {
public:
    explicit Session(bool keepsGoing) : keepsGoing_(keepsGoing) {
        if (input_.isTerminal())
            interrupt_.emplace(); // the text is not lost by Ctrl-C
    }

    bool run(const std::optional<std::string>& file);

private:
    struct Command {
        const char* name;
        std::size_t words; ///< How many it takes at most.
        const char* takes; ///< "!" first if it may be forced.
        const char* does;
        void (Session::*run)(Words& words);
    };
    static constexpr std::size_t any = SIZE_MAX;
    static constexpr std::size_t longest = 65536; ///< Of a command.
    static const Command commands[];

    bool attempt(const std::string& line);
    void runCommand(Words& words);
    bool endsHere();

    const Lines& lines() const { return editor_.text().lines(); }
    bool isChanged() const { return editor_.text().version() != saved_; }

    /// The number of a line; "$" is that of the last one.
    std::size_t lineFrom(const std::string& word, std::size_t least) const {
        const std::size_t last = lines().size();
        if (const auto number = parsed(word == "$" ? std::to_string(last) : word, least, last))
            return *number;
        throw Failure(message("notebook.no_line", "there is no line '{1}' from {2} to {3}",
                              {word, std::to_string(least), std::to_string(last)}));
    }
    Range takeRange(Words& words) const {
        const std::string word = words.next();
        const std::size_t comma = word.find(',');
        const std::size_t first = lineFrom(word.substr(0, comma), 1);
        const bool isOne = comma == std::string::npos;
        return {first - 1, isOne ? first : lineFrom(word.substr(comma + 1), first)};
    }
    Range takeRangeOrAll(Words& words) const {
        return words.hasRange() ? takeRange(words) : Range{0, lines().size()};
    }
    Lines copyOf(const Range& range) const {
        const auto first = lines().begin();
        return {first + static_cast<std::ptrdiff_t>(range.first),
                first + static_cast<std::ptrdiff_t>(range.end)};
    }
    static std::string takeFile(Words& words) {
        std::string file = words.rest();
        if (file.empty())
            throw Failure(message("notebook.no_file", "the name of a file is missing"));
        return file;
    }

    void edit(const Range& range, Lines lines) {
        editor_.edit(line_, range.first, range.count(), std::move(lines), isAdded_);
    }
    static void note(const std::string& text) {
        app::messages()(app::normal, "%s\n", app::visible(text).c_str());
    }
    void requireSaved() const {
        if (isChanged() && !isForced_)
            throw Failure(message("notebook.changed", "there are changes that were not saved "
                                                      "(a \"!\" behind the command drops them)"));
    }
    /// Writes a file, which no signal breaks off at a terminal: it would cost the text.
    void write(const std::function<void()>& call) const {
        std::optional<app::HeldSignals> held;
        if (interrupt_)
            held.emplace();
        call();
    }

    /// The lines that follow, up to ".". One more dot stands before a line of dots alone.
    Lines takeLines() {
        linesFollow_ = false;
        Lines result;
        std::size_t size = 0;
        std::optional<std::string> line;
        while ((line = input_.line("", editor_.textLimit())) && line != ".") {
            if (!line->empty() && line->find_first_not_of('.') == std::string::npos)
                line->pop_back();
            size += line->size() + 1;
            if (size <= editor_.textLimit())
                result.push_back(std::move(*line));
        }
        if (!line && !input_.isTerminal()) // there, the key for the end does as well
            throw Failure(message("notebook.no_dot", "the lines end without a \".\""));
        if (size > editor_.textLimit())
            editor_.refuseSize();
        return result;
    }

    void append(Words& words) {
        const std::size_t at = words.isEmpty() ? lines().size() : lineFrom(words.next(), 0);
        if (Lines more = takeLines(); !more.empty())
            edit({at, at}, std::move(more));
    }

    void change(Words& words) {
        const Range range = takeRange(words);
        edit(range, takeLines());
    }

    void remove(Words& words) { edit(takeRange(words), {}); }

    /// The lines between the old place and the new one change places with those that move.
    void move(Words& words) {
        const Range range = takeRange(words);
        const std::size_t to = lineFrom(words.next(), 0);
        if (to >= range.first && to <= range.end)
            throw Failure(message("notebook.no_move", "the lines are there already"));
        const Range all = {std::min(range.first, to), std::max(range.end, to)};
        Lines moved = copyOf(all);
        const std::size_t middle = to < range.first ? range.first : range.end;
        std::rotate(moved.begin(), moved.begin() + static_cast<std::ptrdiff_t>(middle - all.first),
                    moved.end());
        edit(all, std::move(moved));
    }

    void replace(Words& words);

    void print(Words& words) {
        const Range range = takeRangeOrAll(words);
        std::string block;
        for (std::size_t i = range.first; i < range.end; ++i) {
            const std::string number = std::to_string(i + 1);
            block += std::string(6 - std::min<std::size_t>(number.size(), 6), ' ') + number + "  " +
                     shown(lines()[i]) + "\n";
            if (block.size() < 65536 && i + 1 < range.end)
                continue;
            app::results()("%s", block.c_str());
            block.clear();
            if (interrupt_ && interrupt_->isSet())
                break;
        }
    }

    void undo(Words& words) {
        for (std::size_t i = takeCount(words); i > 0; --i)
            editor_.undo();
    }

    void redo(Words& words) {
        for (std::size_t i = takeCount(words); i > 0; --i)
            editor_.redo();
    }

    static std::size_t takeCount(Words& words) {
        return words.isEmpty() ? 1 : numberFrom(words.next(), 1, INT_MAX);
    }

    void begin(Words& words) { editor_.begin(words.isEmpty() ? "step" : words.rest()); }

    void end(Words&) { editor_.end(); }

    void also(Words& words) {
        if (std::exchange(isAdded_, true))
            throw Failure(message("notebook.also", "also takes another command"));
        runCommand(words);
    }

    void history(Words&) {
        for (const zeUndo::Group* group : editor_.newestGroups())
            app::results()("%-6s %s%s (%d bytes)\n", group->lastWasUndoIt() ? "undone" : "done",
                           group->isGroupDynamic() ? "+ " : "",
                           app::visible(group->getName()).c_str(), group->getNumBytesUsed());
    }

    void limit(Words& words) {
        const std::string what = words.next();
        const std::string word = words.next();
        if (what == "text")
            editor_.setTextLimit(numberFrom(word, 1, Editor::mostText));
        else if (what == "memory")
            editor_.setMemoryLimit(static_cast<int>(numberFrom(word, 0, INT_MAX)));
        else if (what == "steps")
            editor_.setStepLimit(word == "off" ? -1
                                               : static_cast<int>(numberFrom(word, 0, INT_MAX)));
        else
            throw Failure(message("notebook.no_limit", "there is no limit of '{1}'", {what}));
    }

    void open(Words& words);
    void save(Words& words);

    void exportText(Words& words) {
        const std::string format = words.next();
        const std::string file = takeFile(words);
        file_.refuse(file);
        const std::string text = exported(format, file_.name(), lines());
        write([&] {
            app::saveFile(app::Target(file), [&](int descriptor) {
                if (!app::writeAll(descriptor, text))
                    throw Failure(app::systemMessage(errno));
            });
        });
    }

    void formats(Words&) {
        for (const std::string& format : exportFormats())
            app::results()("%s\n", app::visible(format).c_str());
    }

    void draw(Words& words) {
        const std::string file = takeFile(words);
        file_.refuse(file);
        write([&] {
            app::saveFile(app::Target(file), [&](const std::string& name) {
                drawInto(name, lines(), editor_.newestGroups());
            });
        });
    }

    void help(Words&);

    void quit(Words&) {
        requireSaved();
        isRunning_ = false;
    }

    const bool keepsGoing_;
    Input input_;
    Editor editor_;
    File file_;
    std::uint64_t saved_ = 0; ///< The version of the text that is in the file.
    std::optional<app::InterruptFlag> interrupt_;
    std::string line_; ///< The command, which names its step.
    bool isAdded_ = false;
    bool isForced_ = false;
    bool linesFollow_ = false; ///< And belong to this command.
    bool isWarned_ = false;
    bool isRunning_ = true;
};

const Session::Command Session::commands[] = {
    {"append", 1, "[LINE]", "put the lines that follow behind a line", &Session::append},
    {"change", 1, "RANGE", "put the lines that follow in their place", &Session::change},
    {"delete", 1, "RANGE", "delete lines", &Session::remove},
    {"move", 2, "RANGE LINE", "move lines to behind another", &Session::move},
    {"replace", any, "[RANGE] /OLD/NEW/", "replace a text wherever it stands", &Session::replace},
    {"print", 1, "[RANGE]", "print lines with their numbers", &Session::print},
    {"undo", 1, "[COUNT]", "undo the last steps", &Session::undo},
    {"redo", 1, "[COUNT]", "do again what was undone", &Session::redo},
    {"begin", any, "[NAME]", "make one step of all edits up to end", &Session::begin},
    {"end", 0, "", "end the step", &Session::end},
    {"also", any, "COMMAND", "run a command and add its edit to the last step", &Session::also},
    {"history", 0, "", "print the steps and their memory", &Session::history},
    {"limit", 2, "WHAT NUMBER", "limit the steps, their memory or the text", &Session::limit},
    {"open", any, "! FILE", "take a file, or a new one, in the place of the text", &Session::open},
    {"save", any, "! [FILE]", "write the text into its file, or another", &Session::save},
    {"export", any, "FORMAT FILE", "write the text in a format", &Session::exportText},
    {"formats", 0, "", "print the formats for export", &Session::formats},
    {"draw", any, "FILE", "draw the lines and the history as SVG", &Session::draw},
    {"help", 0, "", "print this", &Session::help},
    {"quit", 0, "!", "end", &Session::quit},
};

/// A script ends where it failed: what follows was meant for another text.
bool Session::run(const std::optional<std::string>& file) {
    bool isGood = !file || attempt("open " + *file);
    while (isRunning_ && (isGood || keepsGoing_ || input_.isTerminal())) {
        if (interrupt_)
            interrupt_->clear();
        if (const auto line = input_.line("> ", longest))
            isGood = attempt(*line) && isGood;
        else if (endsHere())
            break;
    }
    return isGood || input_.isTerminal();
}

bool Session::attempt(const std::string& line) {
    line_ = line;
    isAdded_ = false;
    isWarned_ = false;
    linesFollow_ = false;
    std::string reason;
    try {
        Words words(line_);
        if (line.size() > longest)
            throw Failure(message("notebook.too_long", "the command is too long"));
        if (!words.isEmpty() && !line.starts_with('#'))
            runCommand(words);
        app::flushResults();
        return true;
    } catch (const std::bad_alloc&) {
        reason = message("shared.no_memory", "out of memory");
    } catch (const std::exception& error) { // also one that a plug-in lets out
        reason = error.what();
    }
    app::report("notebook", input_.place() + reason);
    while (linesFollow_ && !input_.isTerminal() && input_.line("", longest).value_or(".") != ".") {
    }
    return false;
}

void Session::help(Words&) {
    for (const Command& command : commands)
        app::results()("%-8s %-18s %s\n", command.name, command.takes, command.does);
}

/// As long as no other one begins so, the beginning of a name will do.
void Session::runCommand(Words& words) {
    std::string word = words.next();
    isForced_ = word.ends_with('!');
    word.resize(word.size() - isForced_);
    const Command* found = nullptr;
    for (const Command& command : commands)
        if (std::string_view(command.name).starts_with(word)) {
            if (found != nullptr)
                throw Failure(message("notebook.two_commands", "'{1}' may be {2} or {3}",
                                      {word, found->name, command.name}));
            found = &command;
        }
    if (found == nullptr || (isForced_ && found->takes[0] != '!'))
        throw Failure(message("notebook.no_command", "there is no command '{1}'",
                              {word + (isForced_ ? "!" : "")}));
    linesFollow_ = found->run == &Session::append || found->run == &Session::change;
    if (words.count() > found->words)
        throw Failure(message("notebook.too_much", "too much behind {1}", {found->name}));
    (this->*found->run)(words);
}

/// At a terminal, whoever ends the input is asked once about changes.
bool Session::endsHere() {
    if (isChanged() && !isWarned_)
        note(message("notebook.not_saved", "note: there are changes that were not saved"));
    return !isChanged() || !input_.isTerminal() || std::exchange(isWarned_, true);
}

void Session::replace(Words& words) {
    const Range range = takeRangeOrAll(words);
    const std::string text = words.rest();
    const std::size_t middle = text.empty() ? 0 : text.find(text[0], 1);
    if (middle < 2 || middle == std::string::npos)
        throw Failure(message("notebook.no_pattern", "replace takes /OLD/NEW/"));
    const std::string old = text.substr(1, middle - 1);
    std::string now = text.substr(middle + 1);
    if (now.ends_with(text[0]))
        now.pop_back();
    Lines result = copyOf(range);
    std::size_t count = 0;
    for (std::string& line : result) {
        const std::string before = std::exchange(line, {});
        std::size_t at = 0;
        for (std::size_t next; (next = before.find(old, at)) != std::string::npos;
             at = next + old.size()) {
            line.append(before, at, next - at).append(now);
            if (++count * now.size() > Editor::mostText)
                editor_.refuseSize();
        }
        line.append(before, at);
    }
    if (count == 0)
        throw Failure(message("notebook.not_found", "'{1}' is not there", {old}));
    edit(range, std::move(result));
    note(message("notebook.replaced", "replaced: {1}", {std::to_string(count)}));
}

void Session::open(Words& words) {
    const std::string name = takeFile(words);
    requireSaved();
    editor_.requireClosed();
    std::optional<Text> text = file_.read(name, editor_.textLimit());
    const bool isNew = !text;
    editor_.replace(std::move(text).value_or(Text()));
    saved_ = editor_.text().version();
    note(isNew ? message("notebook.new", "{1}: a new file", {name})
               : message("notebook.opened", "{1}: {2} lines",
                         {name, std::to_string(lines().size())}));
    if (editor_.text().lacksLastLineEnd())
        note(message("notebook.no_end", "note: the last line has no line end, and will have none"));
    for (const std::string& left : app::leftoverNotes(name))
        note(left);
}

void Session::save(Words& words) {
    Words name = words.isEmpty() ? Words(file_.name()) : words;
    const std::string file = takeFile(name);
    write([&] { file_.write(editor_.text(), file, isForced_); });
    if (file == app::standardStream)
        return;
    saved_ = editor_.text().version();
    note(message("notebook.saved", "{1}: {2} lines written",
                 {file, std::to_string(lines().size())}));
}

} // namespace

bool runCommands(const std::optional<std::string>& file, bool keepsGoing) {
    return Session(keepsGoing).run(file);
}

} // namespace notebook
