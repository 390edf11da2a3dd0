// SPDX-License-Identifier: MIT

// 50 options and a line of 90 arguments that uses each of them, with 10 file names behind.
// declare_and_parse: makes the parser, declares, parses, reads the values as numbers, and destroys.
// parse: the line alone, with a parser that is there.

#include <cwchar>

#include "Base/OS/zeOSGetOpt.h"
#include "Support/Workload.h"

#include "OS/optionsWorkload.h"

namespace {

using zeOS::GetOpt;

/// A parser can be used again as long as it has not met "--", so that the files are the arguments
/// of an option.
std::vector<std::string> line() {
    std::vector<std::string> result = bench::optionLine();
    result.push_back("--files");
    result.insert(result.end(), std::begin(bench::fileNames), std::end(bench::fileNames));
    return result;
}

void declare(GetOpt& options, const std::vector<bench::OptionName>& names) {
    const char* const types[] = {"", "int", "float", "string", "bool"};
    for (const bench::OptionName& option : names)
        options.addOption(option.name.c_str(), types[option.kind], L"help text");
    options.addOption("files", "sequence");
}

/// The sum of the numbers, and the count of all arguments.
struct Values {
    double sum = 0;
    int arguments = 0;
};

Values read(GetOpt& options, const std::vector<bench::OptionName>& names) {
    Values values;
    while (const GetOpt::result* found = options.getOpt()) {
        values.arguments += options.getNumArguments(found);
        const auto index = static_cast<size_t>(options.getResultIndex(found));
        const int kind = index < names.size() ? names[index].kind : 0;
        if (kind == 1 || kind == 4)
            values.sum +=
                double(std::wcstol(options.getResultArg(found, 0).asWChar(), nullptr, 10));
        else if (kind == 2)
            values.sum += std::wcstod(options.getResultArg(found, 0).asWChar(), nullptr);
    }
    return values;
}

void declareAndParse(State& s) {
    const std::vector<bench::OptionName> names = bench::optionNames();
    std::vector<std::string> texts = line();
    const std::vector<char*> arguments = bench::pointers(texts);
    for (auto _ : s) {
        GetOpt options;
        declare(options, names);
        options.initialize(int(arguments.size()), arguments.data());
        const Values values = read(options, names);
        bench::require(values.sum == bench::optionSum && values.arguments == 50, "the values");
    }
}

void parse(State& s) {
    const std::vector<bench::OptionName> names = bench::optionNames();
    std::vector<std::string> texts = line();
    const std::vector<char*> arguments = bench::pointers(texts);
    GetOpt options;
    declare(options, names);
    for (auto _ : s) {
        options.initialize(int(arguments.size()), arguments.data());
        int found = 0;
        while (options.getOpt() != nullptr)
            ++found;
        bench::require(found == 51, "the options");
    }
}

const bool registered = [] {
    bench::reg("declare_and_parse/ours", declareAndParse);
    bench::reg("parse/ours", parse);
    return true;
}();

} // namespace
