// SPDX-License-Identifier: MIT
// The search for plug-ins, and the end of the process. Both happen once in a process: in a child.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/Plugin/zePluginServiceManager.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using zePlugin::ServiceManager;

namespace {

/// A program "bin/app", whose output goes to files, with plug-ins beside it.
class ProgramFolder : public PluginFolder {
public:
    /// Runs `body` in a child process up to the end of `exit`, and returns its exit code.
    int run(const std::function<void(ServiceManager&)>& body) const {
        const pid_t child = fork();
        if (child == 0) {
            setenv("ZEBASE_TEST_JOURNAL", path("journal").c_str(), 1);
            static const std::string program = write("bin/app", "");
            static const char* const arguments[] = {program.c_str(), nullptr};
            zeOS::AppMain::getInstance().initialize(1, arguments, arguments + 1);
            zeOS::AppOutput& output = zeOS::AppOutput::getInstance();
            output.status.open(path("status").c_str(), false);
            output.log.open(path("log").c_str(), false);
            output.setLevel(1);
            body(ServiceManager::getInstance());
            std::exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// What a run left in a file.
    Lines lines(const std::string& file) const {
        Lines lines;
        std::ifstream in(path(file));
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }

    void writeNames(const ServiceManager& manager) const {
        std::ofstream out(path("services"));
        const int type = manager.getServiceIndex(L"exporter");
        for (int i = 0; i < static_cast<int>(manager.getNumServices(type)); ++i)
            out << narrow(manager.getService(type, i)->getName()) << '\n';
    }
};

} // namespace

TEST(ServiceManagerScan, FindsDeclarationsByNameAndReportsWhatCannotBeLoaded) {
    const ProgramFolder folder;
    const std::string plugins = "bin/plug-ins/";
    for (const char* name : {"serviceDecl_good.so", "serviceDecl_x.v2", "serviceDecl_nosuffix",
                             "below/serviceDecl_deep.so", "serviceDecl_dir.so/serviceDecl_in.so",
                             // passed over:
                             "serviceDecl_.so", "serviceDecl_", "servicedecl_a.so", "decl_b.so",
                             "serviceDecl_c.pdb", "serviceDecl_d.so.debug", "serviceDecl_e.dSYM"})
        folder.add(plugins + name);
    std::filesystem::resize_file(folder.add(plugins + "serviceDecl_cut.so"), 5000);
    folder.write(plugins + "serviceDecl_text.so", std::string(64, 'x'));
    folder.write(plugins + "serviceDecl_\xC3\xBC.so", "");
    mkfifo(folder.path(plugins + "serviceDecl_fifo.so").c_str(), 0600);
    const std::string none = folder.add(plugins + "serviceDecl_+.so");
    const std::string bare = folder.add(plugins + "serviceDecl_bare.so", BARE);

    EXPECT_EQ(folder.run([&](ServiceManager& manager) {
        manager.registerServices(L"");
        folder.writeNames(manager);
        if (isMapped(none) || isMapped(bare))
            std::exit(2); // without services, they are closed again
    }),
              0);
    EXPECT_THAT(folder.lines("services"),
                UnorderedElementsAre("good", "x", "nosuffix", "deep", "in"));
    const std::string failed = "Proxy failed to load: " + folder.path(plugins + "serviceDecl_");
    // The reasons' first characters: of a path, of "Plugin: could not load", and of an empty text.
    EXPECT_THAT(folder.lines("status"),
                UnorderedElementsAre(failed + "text.so", "/", failed + "cut.so", "P",
                                     failed + "fifo.so", "P", failed + "?.so", ""));
    EXPECT_THAT(folder.lines("log"),
                UnorderedElementsAre("No services in: " + none, "No services in: " + bare));
}

TEST(ServiceManagerScan, HappensOnceAndKeepsTheFirstOfTwoPluginsWithOneService) {
    const ProgramFolder folder;
    folder.add("bin/plug-ins/serviceDecl_top.so");
    folder.add("bin/plug-ins/sub/serviceDecl_text+html.so");
    folder.add("bin/plug-ins/sub/serviceDecl_text+tex.so");
    EXPECT_EQ(folder.run([&](ServiceManager& manager) {
        manager.registerServices(L"sub");
        manager.registerServices(L"");
        folder.writeNames(manager);
    }),
              0);
    EXPECT_THAT(folder.lines("services"), UnorderedElementsAre("text", "html", "tex"));
    EXPECT_THAT(folder.lines("status"),
                ElementsAre("Registration of a service failed.  The name is already used: t"));
}

TEST(ServiceManagerScan, LeavesServicesToTheEndOfTheProcess) {
    const ProgramFolder folder;
    folder.add("bin/plug-ins/serviceDecl_text.so");
    folder.add("bin/plug-ins/text.so");
    EXPECT_EQ(folder.run([&](ServiceManager& manager) {
        manager.registerServices(L"");
        dynamic_cast<Exporter&>(*manager.getService(L"exporter", L"text")).run();
    }),
              0);
    Lines lines = folder.lines("journal");
    std::erase_if(lines, [](const std::string& line) { return line.find("text") == line.npos; });
    // The static objects of plug-ins go before the manager does, and with it its services.
    EXPECT_THAT(lines, ElementsAre("serviceDecl_text.so initialized", "text.so initialized",
                                   "text.so gone", "serviceDecl_text.so gone", "text destroyed",
                                   "text.so uninitialized", "serviceDecl_text.so uninitialized"));
}
