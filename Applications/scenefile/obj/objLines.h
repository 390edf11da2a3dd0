// SPDX-License-Identifier: MIT

/// @file
/// The lines of an OBJ file, as its statements see them.

#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "Shared/terminal.h"

namespace scenefile {

/// Gives the statements of a file, one after the other: lines that end in a backslash are joined
/// with the next; comments (from a "#" at the start of a word), blanks at the end and empty lines
/// are left out. Lines end in a newline, a carriage return or both.
class ObjLines {
public:
    /// Standard input for standardStream. Throws a Failure if the file cannot be opened.
    explicit ObjLines(const std::string& path);

    /// Goes to the next statement; false at the end of the file. Throws a Failure if the file
    /// cannot be read or is no text.
    bool next();

    /// The statement, until the next call of next().
    std::string_view text() const { return text_; }
    /// The line where it began, from 1.
    int line() const { return line_; }

    /// Throws a Failure that names the file and a line.
    [[noreturn]] void fail(int line, const std::string& message) const;
    [[noreturn]] void fail(const std::string& message) const { fail(line_, message); }

private:
    int readByte();
    bool readLine();

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string name_; // of the file
    std::unique_ptr<std::FILE, Close> file_;
    app::Progress progress_;
    std::int64_t bytes_ = 0; // read so far
    int lines_ = 0;          // read so far
    int line_ = 0;
    std::string text_;
};

/// Takes the first word off `text`; empty if there is none.
std::string_view takeWord(std::string_view& text);

} // namespace scenefile
