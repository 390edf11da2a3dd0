// SPDX-License-Identifier: MIT

/// @file
/// Standard input, line by line.

#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"

namespace notebook {

/// At a terminal there are prompts, and after an end there may be more.
class Input {
public:
    Input() : file_(fdopen(app::duplicate(STDIN_FILENO).release(), "r"), std::fclose) {}

    bool isTerminal() const { return isTerminal_; }
    /// "standard input:NUMBER: ", for a command of a script.
    std::string place() const {
        return isTerminal_ ? ""
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

} // namespace notebook
