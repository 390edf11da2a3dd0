// SPDX-License-Identifier: MIT

/// @file
/// Messages to the user: four streams that print through `printf` formats, each with a verbosity
/// level and an indent.
///
/// The library opens none of the streams; until the application does, what is printed goes nowhere.
/// Printing never reports a failure: a full disk or a closed pipe costs text, nothing else. It is
/// the C library's own output, so that the rules of its streams apply: a write that a signal
/// interrupts (a handler without `SA_RESTART`) can lose text, and a pipe without a reader raises
/// `SIGPIPE`, which ends a process that does not ignore it.
///
/// Formats follow the C library: `%s` takes a `const char*` in the locale's encoding and `%S` a
/// `const wchar_t*`. Where the locale cannot convert an argument, the text ends before it: call
/// `setlocale(LC_ALL, "")` at the start of the program.
///
/// Threads: a stream, and so AppOutput with its four, belongs to one thread at a time; calls of
/// AppOutputStream::elapsed() must not overlap, whatever the stream; any thread may call
/// getInstance().
///
/// @code
/// zeOS::AppOutput& output = zeOS::AppOutput::getInstance();
/// assert(output.status.open("-", false)); // standard output
/// output.setLevel(1);
/// const int count = 3;
/// output.status.printf("%d file%s\n", count, output.status.plural(count));
/// {
///     const zeOS::AppOutputStatusTab tab(1); // what follows is indented, if level 1 is shown
///     output.status(1, "scene.zd\nnotes.txt\n");
///     output.status(2, "details that level 1 does not show\n");
/// }
/// output.status.close();
/// @endcode

#pragma once

#include <cstdarg>
#include <cstdio>

#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeStringPrintf.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class AppOutputStreamImpl;

/// One stream of messages: a file or standard output.
///
/// Level and indent can only be set while the stream is open. They outlive close(), and hold for
/// the next file.
///
/// **Indentation goes into the format.** Each line of a format gets the indent in front if the
/// format before it ended in a newline. A newline that an argument brings along is not seen: the
/// text behind it is not indented, and a format that ends in such an argument leaves the next one
/// without indent.
class ZEBASE_API AppOutputStream {
public:
    /// Closed, with level and indent 0. `buffered` false writes each print out at once.
    explicit AppOutputStream(bool buffered);
    AppOutputStream(const AppOutputStream&) = delete;            ///< Pass a reference.
    AppOutputStream& operator=(const AppOutputStream&) = delete; ///< Pass a reference.
    /// Closes the stream.
    ~AppOutputStream();

    /// Closes what is open, and opens a file, which is made if it is missing and emptied unless
    /// `append` is true; "-" is standard output, which close() leaves open. Returns ok(); `errno`
    /// says why a file could not be opened.
    bool open(const zeString::IString& name, bool append);
    /// Closes the file, ignoring failures.
    void close();
    /// Whether the stream is open.
    bool ok() const;

    /// Sets the highest level that is printed. Ignored while the stream is closed.
    void setLevel(int level);
    /// The highest level that is printed.
    int getLevel() const;

    /// Sets the number of spaces before each line; a negative `spaces` counts as 0. Returns the
    /// indent before. Ignored while the stream is closed.
    int setIndentLevel(int spaces);
    /// setIndentLevel() with four more.
    int increaseIndentLevel();
    /// setIndentLevel() with four less.
    int decreaseIndentLevel();
    /// The number of spaces before each line.
    int getIndentLevel() const;

    /// What is printed to; null while the stream is closed. Stays the stream's.
    std::FILE* getFile();

    /// @{
    /// Prints at any level. A null format prints nothing. Compilers check the arguments of literal
    /// formats if ZEBASE_CHECK_FORMATS is defined.
    void operator()(const char* format, ...) const ZEBASE_FORMAT(2, 3);
    void printf(const char* format, ...) const ZEBASE_FORMAT(2, 3);
    void printArg(const char* format, va_list arguments) const ZEBASE_FORMAT(2, 0);
    /// @}

    /// @{
    /// Prints if `level` is at most getLevel(). What is not printed costs a call and two
    /// comparisons.
    void operator()(int level, const char* format, ...) const ZEBASE_FORMAT(3, 4);
    void printf(int level, const char* format, ...) const ZEBASE_FORMAT(3, 4);
    void printArg(int level, const char* format, va_list arguments) const ZEBASE_FORMAT(3, 0);
    /// @}

    /// Prints "Timestamp: ", the local time as `ctime` has it, and the newline that ends it. The
    /// next print is not indented, as the newline belongs to an argument.
    void timestamp() const;

    /// @name Texts for messages
    /// @{

    /// A duration: "1.500 seconds", or "62:05 minutes" from 60 seconds on. Empty while the stream
    /// is closed. Valid until the next call on any stream.
    const char* elapsed(double seconds) const;
    /// "" for 1, else "s".
    static const char* plural(int n);
    /// "true" or "false".
    static const char* aBool(bool value);
    /// @}

private:
    friend class AppOutput;
    ZEBASE_HIDDEN bool prints(int level) const;

    AppOutputStreamImpl* impl_; ///< Owned.
};

/// The streams of the application. All are closed at first, and unbuffered.
class ZEBASE_API AppOutput {
public:
    AppOutputStream status;       ///< What the user sees; also trace output.
    AppOutputStream log;          ///< A record of the run.
    AppOutputStream application1; ///< The library does not print to it.
    AppOutputStream application2; ///< The library does not print to it.

    /// Streams of one's own; the library prints to those of getInstance() alone.
    AppOutput();

    /// The streams that the library prints to.
    static AppOutput& getInstance();

    /// Sets the level of all four streams; those that are closed ignore it.
    void setLevel(int level);

    /// @{
    /// Prints to `status` and `log`, each by its own level and indent. The two do the same: the
    /// name tells a reader what is meant.
    void error(const char* format, ...) const ZEBASE_FORMAT(2, 3);
    void error(int level, const char* format, ...) const ZEBASE_FORMAT(3, 4);
    void info(const char* format, ...) const ZEBASE_FORMAT(2, 3);
    void info(int level, const char* format, ...) const ZEBASE_FORMAT(3, 4);
    /// @}

private:
    ZEBASE_HIDDEN void print(int level, const char* format, va_list arguments) const;

    ZEBASE_HIDDEN static AppOutput s_instance;
};

/// Indents AppOutput::status of AppOutput::getInstance() as long as the guard lives, if messages of
/// `level` are shown there when it begins.
class ZEBASE_API AppOutputStatusTab {
public:
    /// Increases the indent by four.
    explicit AppOutputStatusTab(int level);
    AppOutputStatusTab(const AppOutputStatusTab&) = delete;            ///< Make another one.
    AppOutputStatusTab& operator=(const AppOutputStatusTab&) = delete; ///< Make another one.
    /// Takes the indent back.
    ~AppOutputStatusTab();

private:
    bool active_;
};

} // namespace zeOS
