// SPDX-License-Identifier: MIT

#include "obj/objLines.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Shared/failure.h"
#include "Shared/save.h"

namespace scenefile {

namespace {

constexpr std::string_view blanks = " \t\v\f";

/// Longer than any statement: an input that reaches it is no model, but perhaps an endless device.
constexpr std::size_t longestStatement = std::size_t{64} << 20;

/// Null if it cannot be opened; errno says why.
std::FILE* openModel(const std::string& path) {
    if (path != app::standardStream)
        return std::fopen(path.c_str(), "re");
    zeUtil::Descriptor input = app::duplicate(STDIN_FILENO);
    std::FILE* file = fdopen(input.get(), "r");
    if (file != nullptr)
        input.release(); // the file closes it
    return file;
}

std::int64_t sizeOf(std::FILE* file) {
    struct stat status = {};
    return file != nullptr && fstat(fileno(file), &status) == 0 ? status.st_size : 0;
}

/// Cuts off a comment that begins at `start` or later, and the blanks at the end.
void trim(std::string& text, std::size_t start) {
    for (std::size_t at = text.find('#', start); at != std::string::npos;
         at = text.find('#', at + 1))
        if (at == 0 || blanks.find(text[at - 1]) != std::string_view::npos) {
            text.resize(at);
            break;
        }
    text.resize(text.find_last_not_of(blanks) + 1); // npos + 1 is 0
}

/// Removes the backslashes at the end; true if there were any.
bool takeContinuation(std::string& text) {
    const std::size_t size = text.size();
    text.resize(text.find_last_not_of('\\') + 1);
    return text.size() < size;
}

} // namespace

ObjLines::ObjLines(const std::string& path)
    : name_(path == app::standardStream ? "standard input" : path),
      file_(openModel(path)),
      progress_("reading", sizeOf(file_.get())) {
    if (!file_)
        throw app::Failure(name_ + ": cannot be opened: " + app::systemMessage(errno));
}

void ObjLines::fail(int line, const std::string& message) const {
    throw app::Failure(name_ + ":" + std::to_string(line) + ": " + message);
}

int ObjLines::readByte() {
    const int byte = getc_unlocked(file_.get());
    if (byte == EOF && std::ferror(file_.get()))
        throw app::Failure(name_ + ": cannot be read: " + app::systemMessage(errno));
    ++bytes_;
    return byte;
}

/// Adds the next line of the file to the statement; false if there is none.
bool ObjLines::readLine() {
    int byte = readByte();
    if (byte == EOF)
        return false;
    ++lines_;
    for (; byte != EOF && byte != '\n' && byte != '\r'; byte = readByte()) {
        if (byte == 0)
            fail(lines_, "a zero byte: this is not a text file");
        if (text_.size() == longestStatement)
            fail(lines_, "the statement is too long");
        text_.push_back(static_cast<char>(byte));
    }
    if (byte == '\r' && (byte = readByte()) != '\n' && byte != EOF)
        std::ungetc(byte, file_.get());
    return true;
}

bool ObjLines::next() {
    text_.clear();
    while (text_.empty()) {
        line_ = lines_ + 1;
        bool more = true;
        for (bool continued = true; continued && more;) {
            const std::size_t start = text_.size();
            more = readLine();
            trim(text_, start);
            continued = takeContinuation(text_);
            if (continued)
                text_.push_back(' ');
        }
        trim(text_, text_.size());
        progress_.report(bytes_);
        if (!more)
            break;
    }
    return !text_.empty();
}

std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(blanks));
    text.remove_prefix(word.size());
    return word;
}

} // namespace scenefile
