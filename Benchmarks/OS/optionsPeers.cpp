// SPDX-License-Identifier: MIT

// What others need for the work of options.cpp. The C library's function declares in place and
// converts nothing.

#include <getopt.h>

#include <iterator>

#include "Support/Workload.h"

#include "OS/optionsWorkload.h"
#include <CLI/CLI.hpp>
#include <boost/program_options.hpp>

namespace {

/// The program's name, the options and the files.
std::vector<std::string> line() {
    std::vector<std::string> result = bench::optionLine();
    result.insert(result.begin(), "program");
    result.insert(result.end(), std::begin(bench::fileNames), std::end(bench::fileNames));
    return result;
}

std::vector<std::string> texts = line();
const std::vector<char*> arguments = bench::pointers(texts);
const std::vector<bench::OptionName> names = bench::optionNames();

std::vector<option> declareForGetopt() {
    std::vector<option> options;
    for (const bench::OptionName& each : names)
        options.push_back({each.name.c_str(), each.kind ? required_argument : no_argument, nullptr,
                           256 + each.kind});
    options.push_back({});
    return options;
}

int parseByGetopt(const std::vector<option>& options) {
    std::vector<char*> line = arguments; // which it sorts
    optind = 0;
    int found = 0;
    while (getopt_long_only(int(line.size()), line.data(), "", options.data(), nullptr) >= 256)
        ++found;
    return found;
}

void getoptDeclareAndParse(State& s) {
    for (auto _ : s)
        bench::require(parseByGetopt(declareForGetopt()) == 50, "getopt");
}

void getoptParse(State& s) {
    const std::vector<option> options = declareForGetopt();
    for (auto _ : s)
        bench::require(parseByGetopt(options) == 50, "getopt");
}

void programOptions(State& s) {
    namespace po = boost::program_options;
    for (auto _ : s) {
        po::options_description description;
        for (const bench::OptionName& each : names) {
            const char* const name = each.name.c_str();
            if (each.kind == 0)
                description.add_options()(name, "help text");
            else if (each.kind == 1)
                description.add_options()(name, po::value<int>(), "help text");
            else if (each.kind == 2)
                description.add_options()(name, po::value<double>(), "help text");
            else if (each.kind == 3)
                description.add_options()(name, po::value<std::string>(), "help text");
            else
                description.add_options()(name, po::value<bool>(), "help text");
        }
        description.add_options()("files", po::value<std::vector<std::string>>(), "");
        po::positional_options_description positional;
        positional.add("files", -1);
        po::variables_map values;
        po::store(po::command_line_parser(int(arguments.size()), arguments.data())
                      .options(description)
                      .positional(positional)
                      .run(),
                  values);
        double sum = 0;
        for (const bench::OptionName& each : names)
            sum += each.kind == 1   ? values[each.name].as<int>()
                   : each.kind == 2 ? values[each.name].as<double>()
                   : each.kind == 4 ? double(values[each.name].as<bool>())
                                    : 0;
        bench::require(sum == bench::optionSum, "Boost");
    }
}

void cli11(State& s) {
    for (auto _ : s) {
        CLI::App app;
        std::vector<int> ints(names.size());
        std::vector<double> doubles(names.size());
        std::vector<std::string> texts(names.size());
        bool bools[50] = {};
        std::vector<std::string> files;
        for (size_t i = 0; i < names.size(); ++i) {
            const std::string name = "--" + names[i].name;
            if (names[i].kind == 0)
                app.add_flag(name, bools[i], "help text");
            else if (names[i].kind == 1)
                app.add_option(name, ints[i], "help text");
            else if (names[i].kind == 2)
                app.add_option(name, doubles[i], "help text");
            else if (names[i].kind == 3)
                app.add_option(name, texts[i], "help text");
            else
                app.add_option(name, bools[i], "help text");
        }
        app.add_option("files", files, "");
        app.parse(int(arguments.size()), arguments.data());
        double sum = 0;
        for (size_t i = 0; i < names.size(); ++i)
            sum += ints[i] + doubles[i] + (names[i].kind == 4 ? bools[i] : 0);
        bench::require(sum == bench::optionSum && files.size() == 10, "CLI11");
    }
}

const bool registered = [] {
    bench::reg("declare_and_parse/context_getopt_long", getoptDeclareAndParse);
    bench::reg("declare_and_parse/boost_program_options", programOptions);
    bench::reg("declare_and_parse/cli11", cli11);
    bench::reg("parse/getopt_long", getoptParse);
    return true;
}();

} // namespace
