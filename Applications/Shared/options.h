// SPDX-License-Identifier: MIT

/// @file
/// The command line of a program: options and commands are declared with what they do, and parsing,
/// checks of files and the help screen come from the declarations.
///
/// @code
/// app::Options options("tool");
/// options.declareCommand("show", "inputfile-", L"prints a file", [&](const auto& words) {
///     file = words[0];
/// });
/// options.declare("l|lines", "int", L"how many lines", [&](const auto& words) { ... });
/// if (!options.parse(arguments))
///     return 0; // the help or the version was printed
/// @endcode

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Base/OS/zeOSGetOpt.h"

namespace app {

/// The options of one program: --help, --version, --messages, --quiet, --verbose and --trace, which
/// act by themselves, and those that it declares. Texts are in UTF-8.
class Options : public zeOS::GetOpt {
public:
    using Words = std::vector<std::string>;
    using Take = std::function<void(const Words& arguments)>;

    explicit Options(const char* program);
    ~Options() override;

    /// Declares an option as addOption() does; `take` is called with its arguments when it is met.
    void declare(const char* names, const char* types, const wchar_t* usage, Take take);
    /// The same for a command: the one option that is written without a dash.
    void declareCommand(const char* names, const char* types, const wchar_t* usage, Take take);
    /// The texts above and below the lists of the help screen. Catalogs may replace them under the
    /// keys PROGRAM.help_above and PROGRAM.help_below, and what is said of an option or a command
    /// under PROGRAM.help_NAME, with "_" for "-".
    void describe(const char* above, const char* below);

    /// Parses the arguments, without the program's name. False if they asked for the help or the
    /// version, which has been printed. Throws a UsageError, a RefusedFile for a file that cannot
    /// be what an option wants, or a Failure for a text that is not UTF-8.
    bool parse(const Words& arguments);

    /// The command that was given; empty without one.
    const std::string& command() const { return command_; }
    /// The long names of the options that were given, but for those that all programs have.
    const Words& given() const { return given_; }
    /// The arguments behind "--".
    const Words& operands() const { return operands_; }

    /// @{
    /// As the library checks files, but that an input may also be a pipe or a device, and that a
    /// new file is not taken for an option: its name must not begin with "-".
    zeUtil::Error validInputFile(const zeString::IString& name) const override;
    zeUtil::Error validOutputFile(const zeString::IString& name) const override;
    zeUtil::Error validDirectory(const zeString::IString& name) const override;
    /// @}

private:
    enum class Kind { command, own, common };
    struct Entry {
        Take take;
        Kind kind;
    };

    void declareCommon(const char* names, const char* types, const wchar_t* usage, Take take);
    void add(const char* names, const char* types, const wchar_t* usage, Entry entry);
    void take(const result& found);
    [[noreturn]] void fail() const;
    zeUtil::Error noted(const zeString::IString& name, const zeUtil::Error& error) const;
    void printHelp();
    void printList(Kind kind, const std::string& title);
    /// What catalogs have for it, or else `english`.
    std::string helpText(std::string name, const char* english) const;

    std::string program_;
    std::vector<Entry> entries_; // by the index of the option
    const char* above_ = "";
    const char* below_ = "";
    std::string command_;
    Words given_;
    Words operands_;
    bool wantsHelp_ = false;
    bool wantsVersion_ = false;
    // The file that was refused last, and why; empty for one that was not.
    mutable zeString::IString file_;
    mutable zeString::IString refusal_;
};

} // namespace app
