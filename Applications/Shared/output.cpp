// SPDX-License-Identifier: MIT

#include "Shared/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/terminal.h"

namespace app {

namespace {

/// Without the stream, a failure is told all the same.
void say(const std::string& line) {
    if (messages().ok())
        messages()("%s\n", line.c_str());
    else
        std::fprintf(stderr, "%s\n", line.c_str());
}

/// Opened by name, a file that standard error was redirected to would be written to from a position
/// of its own, over or under what others write there; and a socket cannot be opened so.
void openMessages() {
    if (messages().open("/dev/null", true))
        ::dup3(STDERR_FILENO, ::fileno(messages().getFile()), O_CLOEXEC);
}

} // namespace

void openOutput() {
    results().open("-", false);
    openMessages();
}

zeOS::AppOutputStream& results() {
    return zeOS::AppOutput::getInstance().application1;
}

zeOS::AppOutputStream& messages() {
    return zeOS::AppOutput::getInstance().status;
}

void report(const std::string& program, const std::string& text) {
    say((program.empty() ? "" : program + ": ") + visible(text));
}

void flushResults() {
    std::FILE* const file = results().getFile();
    if (file != nullptr && (std::fflush(file) != 0 || std::ferror(file) != 0))
        throw Failure(message("shared.output", "standard output: cannot be written"));
}

Indent::Indent(zeOS::AppOutputStream& stream)
    : stream_(stream), before_(stream.setIndentLevel(stream.getIndentLevel() + 2)) {}

Indent::~Indent() {
    stream_.setIndentLevel(before_);
}

Step::Step(const char* name, const std::string& text) : trace_(name, trace) {
    const std::string shown = visible(text);
    messages()(verbose, "%s\n", shown.c_str());
    trace_.start(shown.c_str());
    tab_.emplace(verbose);
    watch_.start();
}

Step::~Step() {
    messages()(verbose, "%s\n", messages().elapsed(watch_.stop()));
    tab_.reset();
    trace_.stop();
}

} // namespace app
