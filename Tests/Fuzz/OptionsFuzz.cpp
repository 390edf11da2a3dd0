// SPDX-License-Identifier: MIT

// Declarations and a command line in one text: lines of names, a tab and types up to an empty line,
// then an argument in each line.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Base/OS/zeOSGetOpt.h"
#include "Base/Strings/zeStringCString.h"

#include "Fuzz/require.h"

namespace {

using zeOS::GetOpt;
using zeString::CString;
using zeString::IString;

/// Answers by the name, without a look at the disk.
class Options : public GetOpt {
public:
    zeUtil::Error validInputFile(const IString& name) const override { return answer(name, 3); }
    zeUtil::Error validOutputFile(const IString& name) const override { return answer(name, 5); }
    zeUtil::Error validDirectory(const IString& name) const override { return answer(name, 7); }

private:
    static zeUtil::Error answer(const IString& name, unsigned int wrong) {
        return name.length() % wrong == 1 ? zeUtil::Error(1, L"no %S", name.asWChar())
                                          : zeUtil::Error();
    }
};

/// The names and whose they are: what the parser's trie is to know.
using Names = std::map<std::string, int>;

/// The obvious way to find(): of all names that begin with the text, the longest, if all others lie
/// on the way to it.
int twinOfFind(const Names& names, const std::string& text) {
    if (const auto exact = names.find(text); exact != names.end())
        return exact->second;
    std::vector<std::string> longer;
    for (const auto& [name, index] : names)
        if (name.starts_with(text))
            longer.push_back(name);
    if (longer.empty())
        return -1;
    const std::string& last = *std::max_element(
        longer.begin(), longer.end(), [](auto& a, auto& b) { return a.size() < b.size(); });
    for (const std::string& name : longer)
        if (!last.starts_with(name))
            return -1;
    return names.at(last);
}

void declare(GetOpt& options, Names& names, const std::string& line) {
    const std::size_t tab = std::min(line.find('\t'), line.size());
    const std::string both = line.substr(0, tab).c_str(); // up to a terminator
    const std::string types = line.substr(std::min(tab + 1, line.size()));
    const std::size_t bar = both.find('|');
    const std::string longName = both.substr(bar == std::string::npos ? 0 : bar + 1);
    const GetOpt::option* added = options.addOption(both.c_str(), types.c_str());
    require((added == nullptr) == names.contains(longName));
    if (added == nullptr)
        return;
    names[longName] = options.getOptionIndex(added);
    if (bar != std::string::npos && bar > 0)
        names.emplace(both.substr(0, bar), options.getOptionIndex(added));
}

void checkNames(const GetOpt& options, const Names& names) {
    for (const auto& [name, index] : names)
        for (std::size_t length = 0; length <= name.size(); ++length) {
            const std::string text = name.substr(0, length);
            require(options.findOption(text.c_str()) == twinOfFind(names, text));
        }
    for (int i = 0; i < options.getNumOptions(); ++i) {
        const CString shortest = options.getOptionShortestName(options.getOption(i));
        require(options.findOption(shortest.asChar()) == i);
        require(options.getOptionUsage(options.getOption(i), true).length() > 0);
    }
    std::vector<int> sorted;
    options.getSortedOptions(sorted);
    require(sorted.size() == static_cast<std::size_t>(options.getNumOptions()));
}

std::size_t unread(const GetOpt& options) {
    std::vector<IString> rest;
    options.remaining(rest);
    return rest.size();
}

/// Each step takes an argument at least, and an option no more than it took from the line.
void parse(GetOpt& options) {
    for (std::size_t before = unread(options); before > 0;) {
        const GetOpt::result* found = options.getOpt();
        const std::size_t after = unread(options);
        require(after < before);
        if (found != nullptr) {
            const int taken = static_cast<int>(before - after) - 1;
            require(!options.hasErrors() && options.getNumArguments(found) <= taken);
        } else {
            require(options.hasErrors() == (options.getError().length() > 0));
            if (!options.hasErrors())
                return; // "--"
            options.resetError();
        }
        before = after;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream text(
        {reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 4096)});
    Options options;
    Names names;
    std::string line;
    while (std::getline(text, line) && !line.empty())
        declare(options, names, line);
    checkNames(options, names);
    options.needLeadingDash(size % 2 == 0);
    std::vector<IString> arguments;
    while (std::getline(text, line))
        arguments.emplace_back(line.c_str(), zeString::EncodingUTF8);
    options.initialize(arguments);
    parse(options);
    return 0;
}
