// SPDX-License-Identifier: MIT

#include "Shared/options.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "Base/Strings/zeStringCString.h"
#include "Base/zeBaseExport.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"

namespace app {

using zeString::IString;
using zeUtil::Error;

namespace {

/// An argument that is not UTF-8 would become another one.
std::vector<IString> wideWords(const Options::Words& words) {
    std::vector<IString> result;
    for (const std::string& word : words) {
        bool ok = false;
        result.emplace_back(word.c_str(), zeString::EncodingUTF8, &ok);
        if ((!ok && !word.empty()) || narrow(result.back()) != word)
            throw Failure(message("shared.utf8", "{1}: is not UTF-8", {word}));
    }
    return result;
}

Options::Words narrowWords(const std::vector<IString>& texts) {
    Options::Words result;
    for (const IString& text : texts)
        result.push_back(narrow(text));
    return result;
}

/// What can be read, but is no file for the library.
bool isReadableDevice(const IString& name) {
    struct stat status = {};
    const char* const path = name.asUTF8();
    return stat(path, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode) &&
           access(path, R_OK) == 0;
}

void setLevel(Level level) {
    zeOS::AppOutput::getInstance().setLevel(level);
}

} // namespace

Options::Options(const char* program) : program_(program) {
    setLevel(normal);
    declareCommon("h|help", "", L"print this and end", [this](const Words&) { wantsHelp_ = true; });
    declareCommon("V|version", "", L"print the version and end",
                  [this](const Words&) { wantsVersion_ = true; });
    declareCommon("messages", "inputfile", L"take what is said from this catalog",
                  [](const Words& words) { loadMessages(words[0]); });
    declareCommon("quiet", "", L"print failures and what was asked for, and no more",
                  [](const Words&) { setLevel(quiet); });
    declareCommon("verbose", "", L"print each step and how long it took",
                  [](const Words&) { setLevel(verbose); });
    declareCommon("trace", "", L"print when each step begins and ends as well",
                  [](const Words&) { setLevel(trace); });
}

Options::~Options() = default;

void Options::declare(const char* names, const char* types, const wchar_t* usage, Take take) {
    add(names, types, usage, {std::move(take), Kind::own});
}

void Options::declareCommand(const char* names, const char* types, const wchar_t* usage,
                             Take take) {
    add(names, types, usage, {std::move(take), Kind::command});
    needLeadingDash(false);
}

void Options::declareCommon(const char* names, const char* types, const wchar_t* usage, Take take) {
    add(names, types, usage, {std::move(take), Kind::common});
}

void Options::add(const char* names, const char* types, const wchar_t* usage, Entry entry) {
    if (addOption(names, types, usage) != nullptr)
        entries_.push_back(std::move(entry));
}

void Options::describe(const char* above, const char* below) {
    above_ = above;
    below_ = below;
}

bool Options::parse(const Words& arguments) {
    initialize(wideWords(arguments));
    while (const result* found = getOpt())
        take(*found);
    if (hasErrors())
        fail();
    std::vector<IString> rest;
    remaining(rest);
    operands_ = narrowWords(rest);
    if (wantsHelp_)
        printHelp();
    else if (wantsVersion_)
        results()("%s (zeBase) %d.%d.%d\n", program_.c_str(), ZEBASE_VERSION_MAJOR,
                  ZEBASE_VERSION_MINOR, ZEBASE_VERSION_PATCH);
    return !wantsHelp_ && !wantsVersion_;
}

/// Behind the command, options need their dash: a word too many would pass for one.
void Options::take(const result& found) {
    const std::string name = getResultName(&found).asChar();
    const Entry& entry = entries_[static_cast<std::size_t>(getResultIndex(&found))];
    if (entry.kind == Kind::own)
        given_.push_back(name);
    if (entry.kind == Kind::command) {
        if (!command_.empty())
            throw UsageError(
                message("shared.two_commands", "{1} and {2} are both commands", {command_, name}));
        command_ = name;
        needLeadingDash(true);
    }
    std::vector<IString> arguments;
    getResultArgs(&found, arguments);
    entry.take(narrowWords(arguments));
}

void Options::fail() const {
    if (refusal_.length() > 0)
        throw RefusedFile(narrow(file_), narrow(refusal_));
    const std::string text = narrow(getError());
    throw UsageError(oneLine(text.substr(0, text.find("\nUsage:")))); // the help has the usage
}

void Options::printHelp() {
    for (int i = 0; i < getNumOptions(); ++i) {
        const std::string usage = helpText(getOptionName(getOption(i)).asChar(), "");
        if (!usage.empty())
            addOptionUsage(i, wide(usage).asWChar());
    }
    results()("%s", helpText("above", above_).c_str());
    printList(Kind::command, message("shared.commands", "Commands:"));
    printList(Kind::own, message("shared.options", "Options:"));
    printList(Kind::common, message("shared.common_options", "Options of all programs:"));
    results()("%s", helpText("below", below_).c_str());
}

std::string Options::helpText(std::string name, const char* english) const {
    std::replace(name.begin(), name.end(), '-', '_');
    return message((program_ + ".help_" + name).c_str(), english);
}

void Options::printList(Kind kind, const std::string& title) {
    needLeadingDash(kind != Kind::command);
    std::string text;
    for (int i = 0; i < getNumOptions(); ++i)
        if (entries_[static_cast<std::size_t>(i)].kind == kind)
            text += narrow(getOptionUsage(getOption(i), false));
    if (!text.empty())
        results()("\n%s\n%s", title.c_str(), text.c_str());
}

Error Options::validInputFile(const IString& name) const {
    return isReadableDevice(name) ? Error() : noted(name, GetOpt::validInputFile(name));
}

Error Options::validOutputFile(const IString& name) const {
    if (name.length() > 0 && name[0] == L'-')
        return noted(name, Error(1, L"%S looks like an option: a file of that name is ./%S",
                                 name.asWChar(), name.asWChar()));
    return noted(name, GetOpt::validOutputFile(name));
}

Error Options::validDirectory(const IString& name) const {
    return noted(name, GetOpt::validDirectory(name));
}

Error Options::noted(const IString& name, const Error& error) const {
    file_ = name;
    refusal_.assign(error.message());
    return error;
}

} // namespace app
