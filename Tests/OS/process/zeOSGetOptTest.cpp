// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSGetOpt.h"

#include <cerrno>
#include <climits>
#include <clocale>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"
#include "Support/FaultTrial.h"
#include "Support/SystemFaults.h"

#include "OS/files/FileFixture.h"

using zeOS::GetOpt;
using zeString::CString;
using zeString::IString;
using zeUtil::Error;

namespace {

IString wide(const std::string& text) {
    return IString(text.c_str(), zeString::EncodingUTF8);
}

std::string narrow(const IString& text) {
    return text.asUTF8();
}

/// Words that spaces separate; '' is an empty one.
std::vector<IString> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<IString> result;
    for (std::string word; in >> word;)
        result.push_back(wide(word == "''" ? "" : word));
    return result;
}

std::string joined(const std::vector<IString>& texts) {
    std::string result;
    for (const IString& text : texts)
        result += (result.empty() ? "" : " ") + narrow(text);
    return result;
}

/// Everything that parsing gives, in one line: "option(its arguments) option() -- the rest", or at
/// the end "error: " and the message with its lines joined by a space.
std::string outcome(GetOpt& options) {
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : " ") + part; };
    while (const GetOpt::result* found = options.getOpt()) {
        EXPECT_EQ(options.getCurrentResult(), found);
        std::vector<IString> arguments;
        options.getResultArgs(found, arguments);
        add(options.getResultName(found).asChar() + ("(" + joined(arguments) + ")"));
    }
    EXPECT_EQ(options.getCurrentResult(), nullptr);
    EXPECT_EQ(options.getError().length() > 0, options.hasErrors());
    if (options.hasErrors()) {
        add("error: " + std::regex_replace(narrow(options.getError()), std::regex("\n *"), " "));
    } else {
        std::vector<IString> rest;
        options.remaining(rest);
        if (!rest.empty())
            add("-- " + joined(rest));
    }
    return text;
}

/// Each of the `names`, separated by spaces, is an option with these types.
struct Row {
    std::string names;
    std::string types;
    std::string arguments;
    std::string expected;
    bool needDash = true;
};

void check(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        GetOpt options;
        for (const IString& name : words(row.names))
            ASSERT_NE(options.addOption(name.asUTF8(), row.types.c_str()), nullptr);
        options.needLeadingDash(row.needDash);
        options.initialize(words(row.arguments));
        EXPECT_EQ(outcome(options), row.expected)
            << row.names << ": " << row.types << "\n  with " << row.arguments;
    }
}

/// In a folder of its own, which holds the file "file" and the directory "folder".
class GetOptFiles : public FileFixture {
protected:
    GetOptFiles() {
        std::filesystem::current_path(folder.path());
        folder.write("file", "content");
        makeFolder("folder");
    }
    ~GetOptFiles() override { std::filesystem::current_path("/"); }
};

} // namespace

// Here and below are the odd cases: the plain ones are the rows of Documentation/program.md.
TEST(GetOpt, FindsOptionsByTheBeginningOfTheirNames) {
    check({
        {"ab abcd", "", "-a -ab -abc", "abcd() ab() abcd()"}, // passes a name on the way
        {"abc abd ab", "", "-a", "error: Option does not exist or is ambiguous: -a"},
        {"o|output o|open", "", "-o -op", "output() open()"}, // the first one keeps it
        {"|output open", "", "-o", "error: Option does not exist or is ambiguous: -o"},
        {"o|out|put", "", "-out|put -ou -o", "out|put() out|put() out|put()"},
        {"r\xC3\xBCk", "", "-r\xC3\xBC --r", "r\xC3\xBCk() r\xC3\xBCk()"},
        {"-x", "", "---x", "-x()"},
    });
}

TEST(GetOpt, TakesOptionsApart) {
    check({
        {"x", "", "--", ""},
        {"x", "", "''", "error: Malformed option: no option specified: "},
        {"x", "", "[", "error: [ encountered outside of a sequence."},
        {"x", "", "]", "error: ] encountered outside of a sequence."},
        {"x", "", "[]", "error: Malformed option: no leading dash: []"},
        {"x y", "string", "x 1 -y 2 --", "x(1) y(2)", false},
        {"x", "", "x ''", "x() error: Malformed option: no option specified: ", false},
        {"x [", "", "[ x", "[() x()", false},
        {"x", "? int string", "-x 1 -x", "x(1) x()"},
        {"x", "int ? int", "-x 3 . 4", "x(3) error: Malformed option: no leading dash: ."},
        {"x .", "int ? int", "x 3 . 4", "x(3) .(4)", false},
        {"x", "?", "-x 3", "x() error: Malformed option: no leading dash: 3"},
        {"x", "int integer Int  string", "-x 1 2", "x(1 2)"}, // unknown words count for nothing
    });
}

TEST_F(GetOptFiles, AreCheckedByTheTypesOfArguments) {
    const auto refused = [](const std::string& what) {
        return "error: While processing option: -x " + what;
    };
    check({
        {"x", "bool", "-x 0 -x false -x no -x off", "x(0) x(0) x(0) x(0)"},
        {"x", "bool", "-x 1 -x true -x yes -x on", "x(1) x(1) x(1) x(1)"},
        {"x", "int", "-x +1", refused("Expected an integer, got: +1")},
        {"x", "int", "-x .5", refused("Expected an integer, got: .5")},
        {"x", "float", "-x -.5e9x -x .5 -x 1.", "x(-.5e9x) x(.5) x(1.)"},
        {"x", "float", "-x -.", refused("Expected a floating point value, got: -.")},
        {"x", "float", "-x inf", refused("Expected a floating point value, got: inf")},
        {"x", "string", "-x -- -x '' -x \xE2\x82\xAC", "x(--) x() x(\xE2\x82\xAC)"},

        {"x", "inputfile", "-x ''", refused(" (InputFile) file name is empty.")},
        {"x", "inputfile", "-x folder", refused(" (InputFile) folder exists but is not a file.")},
        {"x", "outputfile", "-x file -x new -x folder/new -x folder/../new",
         "x(file) x(new) x(folder/new) x(folder/../new)"},
        {"x", "outputfile", "-x -", refused(" (OutputFile) The filename \"-\" is not valid")},
        {"x", "outputfile", "-x ''", refused(" (OutputFile) file name is empty.")},
        {"x", "outputfile", "-x folder", refused(" (OutputFile) folder exists but is not a file.")},
        {"x", "outputfile", "-x file/new", refused(" (OutputFile) file/new is not a valid path.")},
        {"x", "inoutfile", "-x -", refused(" (InputOutputFile) - does not exist.")},
        {"x", "directory", "-x gone", refused(" (Directory) gone does not exist.")},
        {"x", "directory", "-x -", refused(" (Directory) - does not exist.")},
    });
}

TEST_F(GetOptFiles, AreParsedAsTheDocumentationSays) {
    std::ofstream("scene.ze") << "a scene";
    makeFolder("shots");
    std::ifstream page(PROGRAM_PAGE);
    const std::regex row(R"(\| `(.*)` \| (?:`(.*)` )?\| `(.*)` \| `(.*)` \|)");
    int lines = 0;
    int rows = 0;
    for (std::string line; std::getline(page, line);) {
        lines += line.starts_with("| `");
        if (std::smatch cell; std::regex_match(line, cell, row)) {
            const std::string names = std::regex_replace(cell.str(1), std::regex(R"(\\\|)"), "|");
            check({{names, cell.str(2), cell.str(3), cell.str(4)}});
            ++rows;
        }
    }
    EXPECT_GT(rows, 0);
    EXPECT_EQ(rows, lines) << "a row of Documentation/program.md has another form";
}

TEST(GetOpt, ReadsSequencesWithBracketsAndWithout) {
    check({
        {"s", "sequence", "-s a -s . -s .", "s(a -s) s()"},
        {"s", "sequence", "-s [ a . -s .", "s(a) s()"},     // a full stop ends it in any depth
        {"s", "sequence", "-s [ a [ b", "s(a [ b)"},        // brackets may stay open
        {"s", "sequence", "-s a [ b ] -s .", "s(a b) s()"}, // and open anywhere
        {"s", "sequence", "-s ] ] [ b .",
         "error: While processing option: -s Too many ']' characters"},
        {"s", "sequence", "-s ] [ [ b ] -s .", "s(] [ b) s()"}, // a bracket makes up for one before
        {"s", "sequence string", "-s [ ] end", "s(end)"},
        {"s", "? sequence", "-s . -s", "s() error: Malformed option: no leading dash: ."},
        {"s", "? sequence", "-s [ -s . ]", "s(-s) error: ] encountered outside of a sequence."},
    });
}

TEST(GetOpt, TellsTheWholeOfAnError) {
    GetOpt options;
    options.addOption("r\xC3\xBC", "string int", L"first\n  second");
    std::setlocale(LC_CTYPE, "C");                 // in which a narrow message could not be made
    EXPECT_STREQ(options.getError().asUTF8(), ""); // which the next message does not keep
    const auto errorOf = [&](const std::string& arguments) {
        options.initialize(words(arguments));
        EXPECT_EQ(options.getOpt(), nullptr);
        EXPECT_TRUE(options.hasErrors());
        const IString error = options.getError();
        EXPECT_STREQ(options.getError().asUTF8(), IString(error.asWChar()).asUTF8());
        options.resetError();
        return error;
    };
    EXPECT_EQ(errorOf("-r \xC3\xBC"), L"Insufficient arguments when processing option: r\u00FC\n"
                                      L"Usage:\n"
                                      L"  -r\u00FC string integer\n"
                                      L"    first\n"
                                      L"    second\n");
    EXPECT_EQ(errorOf("-r 1 \xC3\xBC"), L"While processing option: -r\u00FC\n"
                                        L"  Expected an integer, got: \u00FC");
    EXPECT_EQ(errorOf("-\xC3\xBC"), L"Option does not exist or is ambiguous: -\u00FC");
}

TEST(GetOpt, GoesOnBehindAnErrorWhenAskedTo) {
    GetOpt options;
    options.addOption("x", "int ? string");
    options.initialize(words("-x no -x 1 a -x 2 -- -x 3"));
    EXPECT_EQ(options.getOpt(), nullptr);
    EXPECT_EQ(options.getOpt(), nullptr);
    options.resetError();
    EXPECT_GT(options.getError().length(), 0U); // until the next getOpt()
    const GetOpt::result* found = options.getOpt();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(options.getError().length(), 0U);
    for (const int outside : {-1, 2, INT_MAX, INT_MIN})
        EXPECT_EQ(options.getResultArg(found, outside), L"");
    EXPECT_EQ(options.getResultArg(found, 1), L"a");
    options.abort();
    EXPECT_TRUE(options.hasErrors());
    EXPECT_EQ(options.getCurrentResult(), nullptr);
    EXPECT_EQ(options.getOpt(), nullptr);
    options.resetError();
    EXPECT_EQ(outcome(options), "x(2) -- -x 3");
    // "--" was the end for good.
    options.initialize(words("-x 4"));
    EXPECT_EQ(outcome(options), "-- -x 4");
}

TEST(GetOpt, TakesArgumentsOfEveryKind) {
    GetOpt options;
    options.addOption("x", "string");
    const char* narrowArguments[] = {"-x", "1", "\xFF"};
    options.initialize(2, narrowArguments);
    EXPECT_EQ(outcome(options), "x(1)");
    const wchar_t* wideArguments[] = {L"-x", L"\u20AC"};
    options.initialize(2, wideArguments);
    EXPECT_EQ(outcome(options), "x(\xE2\x82\xAC)");
    options.initialize(-1, wideArguments);
    EXPECT_EQ(outcome(options), "");
    const wchar_t* notACharacter[] = {L"\x7FFFFFFF"}; // has no UTF-8 form, so that it is no name
    options.needLeadingDash(false);
    options.initialize(1, notACharacter);
    EXPECT_EQ(options.getOpt(), nullptr);
    EXPECT_TRUE(options.hasErrors());
}

TEST(GetOpt, ExplainsItsOptions) {
    GetOpt options;
    const GetOpt::option* output = options.addOption("o|output", "outputfile- ? bool int nothing",
                                                     L"  where it goes \n\n\tand how  \n");
    const GetOpt::option* open = options.addOption("open", nullptr);
    const GetOpt::option* all =
        options.addOption("All", "float string inputfile inputfile- outputfile inoutfile "
                                 "directory sequence");
    EXPECT_EQ(options.getOptionUsage(output, true), L"  -o file ? bool integer\n"
                                                    L"  -output file ? bool integer\n"
                                                    L"    where it goes\n"
                                                    L"    \n"
                                                    L"    and how\n");
    EXPECT_EQ(options.getOptionUsage(open, true), L"  -op\n  -open\n");
    EXPECT_EQ(options.getOptionUsage(open, false), L"  -open\n");
    EXPECT_EQ(options.getOptionTitle(all),
              L"-All float string file file file file directory sequence\n");
    options.needLeadingDash(false);
    EXPECT_EQ(options.getOptionTitle(open), L"open\n");
    EXPECT_EQ(options.getOptionUsage(all, true).find(L"  A float"), 0U);

    std::vector<int> sorted;
    options.getSortedOptions(sorted);
    EXPECT_EQ(sorted, (std::vector<int>{2, 1, 0})); // upper case first
}

TEST(GetOpt, KnowsTheShortestNameOfEachOption) {
    GetOpt options;
    const auto shortest = [&](const char* added, int option) {
        options.addOption(added, "");
        return options.getOptionShortestName(options.getOption(option)).asChar() + std::string();
    };
    EXPECT_EQ(shortest("verbose", 0), "v");
    EXPECT_EQ(shortest("version", 0), "verb");
    // The second name is no beginning of the long one.
    EXPECT_EQ(shortest("V|version-of-a-file", 2), "version-");
    EXPECT_EQ(shortest("yes", 3), "y");
    EXPECT_EQ(shortest("yes", 3), "yes"); // a name that is refused counts all the same
    EXPECT_EQ(options.findOption("y"), 3);
    EXPECT_EQ(shortest("\xC3\xB6l", 4), "\xC3"); // byte by byte
}

TEST(GetOpt, CountsOptionsFromZero) {
    GetOpt options;
    EXPECT_EQ(options.findOption(""), -1);
    options.addOption("xa", "", L"help");
    EXPECT_EQ(options.addOption("b|xa", "", L"other help"), nullptr); // and b is not taken
    EXPECT_EQ(options.getOptionIndex(options.addOption("b|xb", "")), 1);
    EXPECT_EQ(options.findOption("b"), 1);
    for (const int outside : {-1, 2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(options.getOption(outside), nullptr);
        options.addOptionUsage(outside, L"nowhere");
        options.markOptionDeprecated(outside);
        EXPECT_FALSE(options.isOptionDeprecated(outside));
    }
    options.markOptionDeprecated(1);
    EXPECT_TRUE(options.isOptionDeprecated(options.getOption(1)));
}

namespace {

/// Answers each check, and notes which were asked for.
class OwnChecks : public GetOpt {
public:
    Error validInputFile(const IString& name) const override { return answer("input", name); }
    Error validOutputFile(const IString& name) const override { return answer("output", name); }
    Error validDirectory(const IString& name) const override { return answer("directory", name); }

    mutable std::string asked;

private:
    Error answer(const std::string& kind, const IString& name) const {
        asked += kind + " " + narrow(name) + "; ";
        return name == wide("bad-" + kind) ? Error(7, "no %s", kind.c_str()) : Error();
    }
};

} // namespace

TEST(GetOpt, AsksTheChecksOfTheProgram) {
    OwnChecks options;
    options.addOption("i", "inputfile-");
    options.addOption("o", "outputfile");
    options.addOption("io", "inoutfile");
    options.addOption("d", "directory");
    const std::string error = "error: While processing option: ";
    const std::string rows[][2] = {
        {"-i - -i '' -o -",
         "i(-) i() " + error + "-o  (OutputFile) The filename \"-\" is not valid"},
        {"-o a -io - -d b", "o(a) io(-) d(b)"},
        {"-io bad-input", error + "-io  (InputOutputFile) no input"},
        {"-io bad-output", error + "-io  (InputOutputFile) no output"},
    };
    for (const auto& [arguments, expected] : rows) {
        options.initialize(words(arguments));
        EXPECT_EQ(outcome(options), expected);
        options.resetError();
    }
    EXPECT_EQ(options.getResultIndex(options.getCurrentResult()), 2); // what was refused
    EXPECT_EQ(options.asked, "input ; output a; input -; output -; directory b; input bad-input; "
                             "input bad-output; output bad-output; ");
}

TEST_F(GetOptFiles, MayLieWhereNothingMayBeMade) {
    const std::pair<std::string, std::string> rows[] = {
        {"-x new", "The current directory is not writable."},
        {"-x folder/new", "Directory is not writable: folder"},
    };
    for (const auto& [arguments, message] : rows) {
        const SystemFaults faults(SystemFaults::onAccess, {{}, {EACCES}});
        check({{"x", "outputfile", arguments,
                "error: While processing option: -x  (OutputFile) " + message}});
    }
}

TEST_F(GetOptFiles, AreRefusedOnlyForWhatTheQuestionWas) {
    GetOpt options;
    options.addOption("f", "inoutfile");
    FaultTrial trial;
    std::string result;
    trial.prepare = [&] {
        options.resetError();
        options.initialize(words("-f file"));
    };
    trial.operation = [&] { result = outcome(options); };
    trial.check = [&](const Fault& fault) {
        // Asked twice, for reading and for writing, each time for both rights. A file that the
        // second question does not find may be made anew.
        const bool isStat = fault.call == SystemFaults::onStat;
        const std::string what = isStat && fault.n == 1    ? "does not exist."
                                 : !isStat && fault.n == 1 ? "is not readable."
                                 : !isStat && fault.n == 4 ? "is not writable."
                                                           : "";
        EXPECT_EQ(result,
                  fault.n == 0 || what.empty()
                      ? "f(file)"
                      : "error: While processing option: -f  (InputOutputFile) file " + what);
    };
    EXPECT_EQ(trial.runAll(), "stat access");
    trial.report("options that name files");
}
