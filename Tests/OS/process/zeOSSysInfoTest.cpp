// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSSysInfo.h"

#include <unistd.h>

#include <string>

#include <gtest/gtest.h>

#include "OS/process/Probe.h"

namespace {

class SysInfoTest : public Probe {
protected:
    SysInfoTest() { makeFolder("proc"); }

    /// The answers with `content` in the file of /proc.
    std::string answer(const std::string& file, const std::string& content, const Texts& questions,
                       Texts environment = {}) const {
        folder.write("proc/" + file, content);
        environment.push_back("PROBE_ROOT=" + folder.path());
        return ask("tool", questions, environment);
    }
};

const std::string eight = [] {
    std::string text;
    for (int i = 0; i < 8; ++i)
        text += "processor\t: " + std::to_string(i) +
                "\nprocessors\t: no\nflags\t\t: " + std::string(1000, 'f') + "\n\n";
    return text;
}();

} // namespace

TEST_F(SysInfoTest, CountsProcessors) {
    struct {
        std::string content;
        Texts environment;
        const char* cpus;
        const char* physical;
    } const cases[] = {
        {eight, {}, "8", "8"},
        {"", {}, "1", "1"},
        {"Processor\t: 0\nprocessor : 1\n", {}, "1", "1"},
        {"processor\t: 0", {}, "1", "1"},
        {"processor\t: 0\nprocessor\t", {}, "2", "2"},
        {std::string(127, 'x') + "processor\t\n" + eight, {}, "9", "9"}, // lines of 127 bytes
        {eight, {"ZE_NUM_CPUS=1"}, "1", "1"},
        {eight, {"ZE_NUM_CPUS= 7 of them"}, "7", "7"},
        {eight, {"ZE_NUM_CPUS=0"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS="}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=-1"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=8"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=1000"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=4294967297"}, "8", "8"},
        {eight, {"ZE_NUM_CPUS=many"}, "8", "8"},
        {eight, {"ZE_NUM_PHYS_CPUS=4"}, "8", "4"},
        {eight, {"ZE_NUM_PHYS_CPUS=4", "ZE_NUM_CPUS=6"}, "6", "4"},
        {eight, {"ZE_NUM_PHYS_CPUS=7", "ZE_NUM_CPUS=6"}, "6", "6"},
        {eight, {"PROBE_FAILS=fopen"}, "1", "1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(answer("cpuinfo", c.content, {"physical", "cpus"}, c.environment),
                  std::string("physical: ") + c.physical + "\ncpus: " + c.cpus + "\n")
            << c.content.substr(0, 50) << (c.environment.empty() ? "" : c.environment[0]);
}

TEST_F(SysInfoTest, AddsUpSwapSpace) {
    const std::string header = "Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n";
    struct {
        std::string content;
        const char* total;
        const char* avail;
    } const cases[] = {
        {"", "0", "0"},
        {header, "0", "0"},
        {header + "/dev/sda2 partition 1000\t100\t-2\n", "1000", "900"},
        {header + "/dev/sda2 partition 1000\t100\t-2\n/a\\040b file\t5 5 -3\n", "1005", "900"},
        {header + "/swap file 4294967296 1\t-2", "4294967296", "4294967295"},
        {header + "/swap file 10 x 1\n/swap file 10 1 1\n", "0", "0"}, // ends where it fails
        {header + "/swap file", "0", "0"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(answer("swaps", c.content, {"swap"}),
                  std::string("swap: ") + c.total + " " + c.avail + "\n")
            << c.content;
    EXPECT_EQ(answer("swaps", cases[2].content, {"swap"}, {"PROBE_FAILS=fopen"}), "swap: 0 0\n");
}

TEST_F(SysInfoTest, KnowsTheMachineAsTheSystemDoes) {
    const auto pageSize = sysconf(_SC_PAGESIZE);
    char host[1025] = {};
    ASSERT_EQ(gethostname(host, 1024), 0);
    EXPECT_EQ(ask("tool", {"memory", "host"}),
              "memory: " + std::to_string(sysconf(_SC_PHYS_PAGES) * pageSize / 1024) +
                  "\nhost: " + host + "\n");
    const std::string available = ask("tool", {"free"});
    EXPECT_GT(std::stol(available.substr(6)), 0);
    EXPECT_LE(std::stol(available.substr(6)), sysconf(_SC_PHYS_PAGES) * pageSize / 1024);
    EXPECT_EQ(zeOS::SysInfo::getPageSize(), static_cast<unsigned long>(pageSize));
    EXPECT_EQ(zeOS::sysInfo().getProcessID(), getpid());
}

TEST_F(SysInfoTest, SaysWhatItCannotFindOut) {
    EXPECT_EQ(ask("tool", {"memory", "free"}, {"PROBE_FAILS=sysconf"}), "memory: 0\nfree: 0\n");
    EXPECT_EQ(ask("tool", {"host", "host"}, {"PROBE_FAILS=gethostname"}),
              "host: unknown\nhost: unknown\n");
    EXPECT_EQ(ask("tool", {"host"}, {"PROBE_FAILS=gethostname-late"}),
              "host: " + std::string(1024, 'x') + "\n"); // cut, and without a terminator
}

TEST_F(SysInfoTest, TakesTheUserFromTheEnvironment) {
    struct {
        Texts environment;
        const char* before;
        const char* after; ///< USER has become "other"
    } const cases[] = {
        {{}, "(null)", "other"},
        {{"USER=u"}, "u", "u"},
        {{"USER=u", "USERNAME=n"}, "n", "n"},
        {{"USER=u", "USERNAME="}, "", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ask("tool", {"user", "rename", "user"}, c.environment),
                  std::string("user: ") + c.before + "\nrename: 0\nuser: " + c.after + "\n");
}
