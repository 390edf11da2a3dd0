// SPDX-License-Identifier: MIT

/// @file
/// Command-line options: declared at run time, parsed, checked and explained from one declaration.
///
/// Declare the options, give the arguments to GetOpt::initialize() and call GetOpt::getOpt() until
/// it returns null; then ask GetOpt::hasErrors(), and take what is left with GetOpt::remaining().
///
/// **A declaration** is two strings. The first one holds the names: `o|output` is the option
/// `output` with the second name `o`, and `output` has no second name. An empty second name is
/// none. Names are UTF-8. The second string holds the types of the option's arguments, separated by
/// spaces; words that it does not know are ignored:
///
/// | Type | Takes |
/// |---|---|
/// | `bool` | 1, true, yes, on; 0, false, no, off. The result is "1" or "0". |
/// | `int` | What begins with a digit, or with "-" and a digit: also "12abc". |
/// | `float` | The same, where a digit may have a "." before it. |
/// | `string` | Anything. |
/// | `inputfile` | A file that exists and is readable; not "-". |
/// | `inputfile-` | The same, or "-" for standard input. |
/// | `outputfile` | A file that is writable, or can be made; not "-". |
/// | `outputfile-` | The same, or "-" for standard output. |
/// | `inoutfile` | A file that is readable and writable. |
/// | `directory` | A directory that exists. |
/// | `sequence` | Any number of arguments: `[ a b ]`, nested too, or `a b .` up to a full stop. |
/// | `?` | No argument: those that follow are optional. |
///
/// Only the beginning of a number is checked: convert the text with a function that sees the rest.
/// Files are checked when the option is read, which is no promise that opening them succeeds later.
///
/// **On the command line** an option is written with one dash or two, followed by its arguments,
/// each an argument of its own: there is no `--name=value`, and no joining of short names. Any
/// beginning of a name that belongs to one option only stands for it; an exact name always wins.
/// An option may be repeated. Required arguments may begin with "-"; optional ones end there, and
/// at a ".", which stays. The argument `--` ends the options. An argument that is neither an option
/// nor belongs to one is an error: programs take their files behind `--`, as arguments of an
/// option, or by needLeadingDash().
///
/// **After an error** getOpt() returns null until resetError(); what the failed option took is
/// gone.
///
/// **Arguments in `char`** are decoded in the locale's encoding, which is ASCII until the program
/// calls `setlocale(LC_ALL, "")`: see zeString::IString.
///
/// Nothing throws.
///
/// Threads: a GetOpt, and all results and options of it, belong to one thread at a time.
///
/// @code
/// zeOS::GetOpt options;
/// options.addOption("o|output", "outputfile-", L"where the result goes");
/// const auto* scale = options.addOption("scale", "float ? float", L"by one factor, or by two");
/// const char* argv[] = {"--out", "-", "-s", "2", "-scale", "1", "0.5", "--", "scene.ze"};
/// options.initialize(9, argv); // all of them: leave the program's name out
/// int factors = 0;
/// while (const auto* result = options.getOpt())
///     if (options.getResultOption(result) == scale)
///         factors += options.getNumArguments(result);
/// assert(!options.hasErrors() && factors == 3);
/// std::vector<zeString::IString> files;
/// options.remaining(files);
/// assert(files.size() == 1 && files[0] == L"scene.ze");
/// assert(options.getOptionUsage(scale, true) == L"  -s float ? float\n"
///                                               L"  -scale float ? float\n"
///                                               L"    by one factor, or by two\n");
/// @endcode

#pragma once

#include <vector>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class CString;
}

namespace zeOS {

class GetOptImpl;

namespace impl {
class option;
struct result;
} // namespace impl

/// A parser with its options. Pointers to options stay valid as long as the parser; a result only
/// until the next getOpt(). Where one is asked for, it must not be null.
class ZEBASE_API GetOpt {
public:
    using option = impl::option; ///< A declared option.
    using result = impl::result; ///< An option that was found, with its arguments.

    /// Without options and arguments.
    GetOpt();
    GetOpt(const GetOpt&) = delete;            ///< Declare the options of another parser.
    GetOpt& operator=(const GetOpt&) = delete; ///< Declare the options of another parser.
    /// Options and results go with it.
    virtual ~GetOpt();

    /// @name Checks of files
    /// What an argument of a file type must pass; override them to change what counts as a good
    /// file. A failure has code 1 and a message for the user; one of the library's says the name in
    /// the locale's encoding. A file that cannot be looked at counts as one that does not exist.
    /// @{

    /// A regular file that may be read.
    virtual zeUtil::Error validInputFile(const zeString::IString& name) const;
    /// A regular file that may be written; or one that does not exist in a directory that may be
    /// written.
    virtual zeUtil::Error validOutputFile(const zeString::IString& name) const;
    /// What passes validInputFile() and then validOutputFile().
    virtual zeUtil::Error validInOutFile(const zeString::IString& name) const;
    /// A directory.
    virtual zeUtil::Error validDirectory(const zeString::IString& name) const;
    /// Refuses an empty name, as the four above do.
    zeUtil::Error validFileName(const zeString::IString& name) const;
    /// @}

    /// @name Declaring
    /// @{

    /// Declares an option by its names and the types of its arguments: see the top of this page.
    /// Null types are none. Null if another option has that long name. A second name that is taken
    /// is left out.
    option* addOption(const char* names, const char* types);
    /// addOption() and addOptionUsage() in one.
    option* addOption(const char* names, const char* types, const wchar_t* usage) {
        option* const added = addOption(names, types);
        if (added != nullptr)
            addOptionUsage(getOptionIndex(added), usage);
        return added;
    }
    /// Sets the help text of an option, which may have several lines. Nothing happens without an
    /// option of that index.
    void addOptionUsage(int index, const wchar_t* text);
    /// Marks an option for the program's own use: the parser treats it like any other. Nothing
    /// happens without an option of that index.
    void markOptionDeprecated(int index);
    /// @{
    /// Whether the option was marked; false without an option of that index.
    bool isOptionDeprecated(int index) const;
    bool isOptionDeprecated(const option* declared) const;
    /// @}
    /// Whether an option must begin with "-", which it must at first. If not, `output` stands for
    /// `-output`, which is still understood.
    void needLeadingDash(bool isNeeded);
    /// What needLeadingDash() set.
    bool getNeedLeadingDash() const;
    /// @}

    /// @name Parsing
    /// @{

    /// @{
    /// Replaces the arguments that are not read yet. The program's name is not one of them: give
    /// `argc - 1` and `argv + 1`. A negative `argc` counts as 0. Neither an error nor the end at
    /// "--" is taken back: after "--" nothing more is parsed by this object.
    void initialize(int argc, const char* const* argv);
    void initialize(int argc, const wchar_t* const* argv);
    void initialize(const std::vector<zeString::IString>& arguments);
    /// @}
    /// Reads the next option and its arguments. Null at the end, at "--" and after an error.
    const result* getOpt();
    /// Replaces the content of `arguments` by those that were not read, which stay for getOpt().
    void remaining(std::vector<zeString::IString>& arguments) const;
    /// What the last getOpt() returned; null after an error or abort(), and after resetError() the
    /// option that was refused, with the arguments that were read until then.
    const result* getCurrentResult() const;
    /// Whether an option was refused, or abort() called.
    bool hasErrors() const;
    /// The message of the last error, which may have several lines; empty without one. Valid until
    /// the next getOpt().
    const zeString::IString& getError() const;
    /// Makes getOpt() go on behind what it has read.
    void resetError();
    /// Makes getOpt() return null from now on, as after an error.
    void abort();
    /// @}

    /// @name Results
    /// @{

    /// The option that was found.
    const option* getResultOption(const result* found) const;
    /// How many arguments it has.
    int getNumArguments(const result* found) const;
    /// The argument of that number, from 0; empty without one.
    zeString::IString getResultArg(const result* found, int i) const;
    /// Replaces the content of `arguments` by all arguments.
    void getResultArgs(const result* found, std::vector<zeString::IString>& arguments) const;
    /// The name of the option.
    const zeString::CString& getResultName(const result* found) const;
    /// The index of the option.
    int getResultIndex(const result* found) const;
    /// @}

    /// @name Options
    /// Their indices are 0, 1, ... in the order of their declaration.
    /// @{

    /// How many options there are.
    int getNumOptions() const;
    /// The option of that index, or null.
    const option* getOption(int i) const;
    /// The long name.
    const zeString::CString& getOptionName(const option* declared) const;
    /// The index.
    int getOptionIndex(const option* declared) const;
    /// The index of the option that this name, or beginning of a name, stands for on the command
    /// line, without dashes; -1 if there is none, or more than one.
    int findOption(const char* name) const;
    /// @}

    /// @name Usage
    /// @{

    /// One line: the name with its dash, and a word for each type.
    zeString::IString getOptionTitle(const option* declared) const;
    /// The title indented by two spaces, and each line of the help text by four. With
    /// `withShortest` a line with getOptionShortestName() stands above, if that is another name.
    zeString::IString getOptionUsage(const option* declared, bool withShortest) const;
    /// A short beginning of the long name, which stands for this option: up to where no other name
    /// begins so, refused ones counted, or up to the second name if that is on the way.
    zeString::CString getOptionShortestName(const option* declared) const;
    /// Replaces the content of `indices` by those of all options, in the order of their names.
    void getSortedOptions(std::vector<int>& indices) const;
    /// @}

private:
    GetOptImpl* impl_; ///< Owned.
};

} // namespace zeOS
