// SPDX-License-Identifier: MIT

/// @file
/// Commands as they come in: lines, words and numbers.

#pragma once

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"
#include "Shared/terminal.h"

namespace notebook {

/// Standard input, line by line. At a terminal there are prompts, and after an end there may be
/// more.
class Input {
public:
    Input() : file_(fdopen(app::duplicate(STDIN_FILENO).release(), "r"), std::fclose) {}

    bool isTerminal() const { return isTerminal_; }
    /// "standard input:NUMBER: ", for a command of a script.
    std::string place() const {
        return isTerminal_ || number_ == 0
                   ? ""
                   : app::message("notebook.place",
                                  "standard input:{1}: ", {std::to_string(number_)});
    }

    /// The next line, or nothing at the end. Of one that is too long there are `most` + 1 bytes.
    std::optional<std::string> line(const char* prompt, std::size_t most) {
        if (isTerminal_)
            app::messages()("%s", prompt);
        std::clearerr(file_.get());
        std::string line;
        int byte = std::getc(file_.get());
        if (byte == EOF && std::ferror(file_.get()) != 0 && !isTerminal_)
            throw app::Failure(app::systemMessage(errno));
        if (byte == EOF)
            return std::nullopt;
        for (++number_; byte != EOF && byte != '\n'; byte = std::getc(file_.get()))
            if (line.size() <= most)
                line.push_back(static_cast<char>(byte));
        return line;
    }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    bool isTerminal_ = isatty(STDIN_FILENO) == 1;
    std::size_t number_ = 0;
};

/// The words of a command, taken one after the other.
class Words {
public:
    explicit Words(std::string_view text) : text_(text) { skipBlanks(); }

    bool isEmpty() const { return text_.empty(); }
    std::size_t count() const {
        std::size_t count = 0;
        for (Words words = *this; !words.isEmpty(); words.next())
            ++count;
        return count;
    }
    bool hasRange() const {
        return !isEmpty() && (text_[0] == '$' || (text_[0] >= '0' && text_[0] <= '9'));
    }
    /// Empty at the end.
    std::string next() {
        const std::size_t end = std::min(text_.find(' '), text_.size());
        const std::string word(text_.substr(0, end));
        text_.remove_prefix(end);
        skipBlanks();
        return word;
    }
    /// All that is left; names of files may have blanks.
    std::string rest() { return std::string(std::exchange(text_, {})); }

private:
    void skipBlanks() { text_.remove_prefix(std::min(text_.find_first_not_of(' '), text_.size())); }

    std::string_view text_;
};

/// A line of the text as it may be printed: tabs stay.
inline std::string shown(std::string_view line) {
    std::string result;
    for (std::size_t tab = 0; (tab = line.find('\t')) != std::string_view::npos;) {
        result += app::visible(line.substr(0, tab)) + '\t';
        line.remove_prefix(tab + 1);
    }
    return result + app::visible(line);
}

/// A whole number, or nothing.
inline std::optional<std::size_t> parsed(std::string_view word, std::size_t least,
                                         std::size_t most) {
    std::size_t number = 0;
    const char* const last = word.data() + word.size();
    const auto [end, error] = std::from_chars(word.data(), last, number);
    const bool isGood = error == std::errc() && end == last && number >= least && number <= most;
    return isGood ? std::optional(number) : std::nullopt;
}

/// The same; throws a Failure if it is none.
inline std::size_t numberFrom(const std::string& word, std::size_t least, std::size_t most) {
    if (const auto number = parsed(word, least, most))
        return *number;
    throw app::Failure(app::message("notebook.no_number", "'{1}' is not a number from {2} to {3}",
                                    {word, std::to_string(least), std::to_string(most)}));
}

} // namespace notebook
