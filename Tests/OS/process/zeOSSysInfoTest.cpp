// SPDX-License-Identifier: MIT

#include <string>

#include <gtest/gtest.h>

#include "OS/process/Probe.h"

namespace {

class SysInfoTest : public Probe {
protected:
    SysInfoTest() { makeFolder("proc"); }

    /// The probe answers so with `content` in the file of /proc.
    void ask(const std::string& file, const std::string& content, const Texts& questions,
             const std::string& expected, Texts environment = {}) const {
        folder.write("proc/" + file, content);
        environment.push_back("PROBE_ROOT=" + folder.path());
        Probe::ask(content.substr(0, 50), questions, expected, environment);
    }
};

} // namespace

TEST_F(SysInfoTest, CountsProcessors) {
    std::string eight;
    for (int i = 0; i < 8; ++i)
        eight += "processor\t: " + std::to_string(i) +
                 "\nprocessors\t: no\nflags\t\t: " + std::string(1000, 'f') + "\n\n";
    struct {
        std::string content;
        Texts environment;
        const char* cpus;
        const char* physical;
    } const cases[] = {
        {"", {}, "1", "1"},
        {"Processor\t: 0\nprocessor : 1\n", {}, "1", "1"},
        {"processor\t: 0\nprocessor\t", {}, "2", "2"},
        {std::string(127, 'x') + "processor\t\n" + eight, {}, "9", "9"}, // lines of 127 bytes
        {eight, {"ZE_NUM_CPUS= 7 of them"}, "7", "7"},
        {eight, {"ZE_NUM_CPUS=0"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=-1"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=9"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=4294967297"}, "8", "8"},
        {eight, {"ZE_NUM_PHYS_CPUS=4", "ZE_NUM_CPUS=6"}, "6", "4"},
        {eight, {"ZE_NUM_PHYS_CPUS=7", "ZE_NUM_CPUS=6"}, "6", "6"},
    };
    for (const auto& c : cases)
        ask("cpuinfo", c.content, {"physical", "cpus"},
            std::string("physical: ") + c.physical + "\ncpus: " + c.cpus + "\n", c.environment);
}

TEST_F(SysInfoTest, AddsUpSwapSpace) {
    const std::string header = "Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n";
    const std::string cases[][2] = {
        {"", "0 0"},
        {header, "0 0"},
        {header + "/dev/sda2 partition 1000\t100\t-2\n/a\\040b file\t5 5 -3\n", "1005 900"},
        {header + "/swap file 4294967296 1\t-2", "4294967296 4294967295"},
        {header + "/swap file 10 x 1\n/swap file 10 1 1\n", "0 0"}, // ends where it fails
        {header + "/swap file", "0 0"},
    };
    for (const auto& [content, space] : cases)
        ask("swaps", content, {"swap"}, "swap: " + space + "\n");
}

TEST_F(SysInfoTest, SaysWhatItCannotFindOut) {
    Probe::ask("tool", {"cpus", "swap"}, "cpus: 1\nswap: 0 0\n", {"PROBE_ROOT=/nonexistent"});
    Probe::ask("tool", {"host", "host"}, "host: unknown\nhost: unknown\n",
               {"PROBE_FAILS=gethostname"});
    // Cut, and without a terminator.
    Probe::ask("tool", {"host"}, "host: " + std::string(1024, 'x') + "\n",
               {"PROBE_FAILS=gethostname-late"});
}

TEST_F(SysInfoTest, TakesTheUserFromTheEnvironment) {
    const auto answers = [&](const Texts& environment, const char* before, const char* after) {
        Probe::ask("tool", {"user", "rename", "user"},
                   std::string("user: ") + before + "\nrename: 0\nuser: " + after + "\n",
                   environment);
    };
    answers({}, "(null)", "other"); // USER has become "other"
    answers({"USER=u"}, "u", "u");
    answers({"USER=u", "USERNAME=n"}, "n", "n");
    answers({"USER=u", "USERNAME="}, "", "");
}
