// SPDX-License-Identifier: MIT

// Undo in a list of words. Each change is made by a command, which can turn it back; what the user
// sees as one step is a group of commands. Arguments are carried out one after the other.
//
//     $ undo add:one add:two,three
//     one two three
//     $ undo add:one add:two,three undo
//     one
//     $ undo add:one add:two,three undo add:four undo redo
//     one four
//     $ undo add:b,a,c sort undo undo redo redo clear undo
//     a b c
//     $ undo add:b,a,c sort undo undo undo
//     (empty)

#include <algorithm>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Base/Undo/zeUndoCommand.h"
#include "Base/Undo/zeUndoGroup.h"
#include "Base/Undo/zeUndoManager.h"

namespace {

using Words = std::vector<std::string>;

/// Puts a word at the end of the list.
class Append : public zeUndo::Command {
public:
    /// Makes the change at once: the first that the history asks for is to undo it.
    Append(Words& words, std::string word)
        : Command(nullptr, "append"), words_(words), word_(std::move(word)) {
        doCommand();
    }
    bool doCommand() override {
        words_.push_back(std::exchange(word_, {}));
        return true;
    }
    bool undoCommand() override {
        word_ = std::move(words_.back());
        words_.pop_back();
        return true;
    }

private:
    Words& words_;
    std::string word_; ///< While it is not in the list.
};

/// Puts another list in the place of the list. Both live as long as the change can be turned, so
/// that the memory limit should know of them.
class Replace : public zeUndo::Command {
public:
    Replace(Words& words, Words other)
        : Command(nullptr, "replace"), words_(words), other_(std::move(other)) {
        doCommand();
    }
    bool doCommand() override {
        words_.swap(other_);
        return true;
    }
    bool undoCommand() override { return doCommand(); }
    int getNumBytesUsed() const override {
        return static_cast<int>(sizeof *this + other_.size() * sizeof(std::string));
    }

private:
    Words& words_;
    Words other_;
};

class Editor {
public:
    /// False for what is not known.
    bool carryOut(const std::string& action) {
        if (action == "undo")
            return history_->undoIt();
        if (action == "redo")
            return history_->doIt();
        if (action == "sort")
            replace("sort", sorted());
        else if (action == "clear")
            replace("clear", {});
        else if (action.starts_with("add:"))
            append(action.substr(4));
        else
            return false;
        return true;
    }

    void print() const {
        for (std::size_t i = 0; i < words_.size(); ++i)
            std::printf("%s%s", i == 0 ? "" : " ", words_[i].c_str());
        std::puts(words_.empty() ? "(empty)" : "");
    }

private:
    /// One step, and one command for each word. The group owns them.
    void append(const std::string& words) {
        zeUndo::Group* step = history_->newGroup("add", false);
        std::istringstream rest(words);
        for (std::string word; std::getline(rest, word, ',');)
            step->addCommand(new Append(words_, word));
    }

    void replace(const char* name, Words words) {
        history_->newGroup(name, false)->addCommand(new Replace(words_, std::move(words)));
    }

    Words sorted() const {
        Words words = words_;
        std::sort(words.begin(), words.end());
        return words;
    }

    Words words_;
    std::unique_ptr<zeUndo::Manager> history_{zeUndo::newManager()}; // goes first
};

} // namespace

int main(int argc, char** argv) {
    Editor editor;
    for (int i = 1; i < argc; ++i) {
        if (!editor.carryOut(argv[i])) {
            std::fputs("usage: undo {add:WORD,... | sort | clear | undo | redo}...\n", stderr);
            return 2;
        }
    }
    editor.print();
    return 0;
}
