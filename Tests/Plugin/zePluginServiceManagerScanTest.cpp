// SPDX-License-Identifier: MIT
// The search for plug-ins, and the end of the process. Both happen once in a process: in a child.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/Plugin/zePluginServiceManager.h"
#include "Support/OrdinaryUser.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using zePlugin::Service;
using zePlugin::ServiceManager;

namespace {

Lines linesOf(const std::string& file) {
    Lines lines;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// Makes the process one of the program "bin/app" in the folder, with its output in files there.
void become(const TempFolder& folder) {
    static const std::string program = folder.path("bin/app");
    static const char* const arguments[] = {program.c_str(), nullptr};
    zeOS::AppMain::getInstance().initialize(1, arguments, arguments + 1);
    zeOS::AppOutput& output = zeOS::AppOutput::getInstance();
    output.status.open(folder.path("status").c_str(), false);
    output.log.open(folder.path("log").c_str(), false);
    output.setLevel(1);
}

/// Runs `body` in a child process up to the end of `exit`, and returns its exit code.
int inProgram(const TempFolder& folder, const std::function<void()>& body) {
    folder.write("bin/app", "");
    const pid_t child = fork();
    if (child == 0) {
        setenv("ZEBASE_TEST_JOURNAL", folder.path("journal").c_str(), 1);
        become(folder);
        body();
        std::exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// What the scan found, and that it can be used.
void writeServices(const TempFolder& folder) {
    const ServiceManager& manager = ServiceManager::getInstance();
    std::ofstream out(folder.path("services"));
    for (int type = 0; type < manager.numServiceTypes(); ++type)
        for (int i = 0; i < static_cast<int>(manager.getNumServices(type)); ++i) {
            const Service* service = manager.getService(type, i);
            out << narrow(manager.getServiceType(type)) << ' ' << narrow(service->getName()) << ' '
                << service->isPlugin() << service->getAllowOverride() << '\n';
        }
}

} // namespace

TEST(ServiceManagerScan, FindsDeclarationsByNameAndReportsWhatCannotBeLoaded) {
    const PluginFolder folder;
    const std::string plugins = "bin/plug-ins/";
    for (const char* name : {"serviceDecl_good.so", "serviceDecl_x.v2", "serviceDecl_nosuffix",
                             "below/serviceDecl_deep.so", "serviceDecl_dir.so/serviceDecl_in.so",
                             // passed over:
                             "serviceDecl_.so", "serviceDecl_", "servicedecl_a.so", "decl_b.so",
                             "serviceDecl_c.pdb", "serviceDecl_d.so.debug", "serviceDecl_e.dSYM"})
        folder.add("declaration", plugins + name);
    const std::string cut = folder.path(folder.add("declaration", plugins + "serviceDecl_cut.so"));
    std::filesystem::resize_file(cut, 5000);
    folder.write(plugins + "serviceDecl_text.so", std::string(64, 'x'));
    folder.write(plugins + "serviceDecl_\xC3\xBC.so", "");
    mkfifo(folder.path(plugins + "serviceDecl_fifo.so").c_str(), 0600);
    const std::string none = folder.add("declaration", plugins + "serviceDecl_+.so");
    const std::string bare = folder.add("bare", plugins + "serviceDecl_bare.so");

    EXPECT_EQ(inProgram(folder,
                        [&] {
                            ServiceManager& manager = ServiceManager::getInstance();
                            manager.registerServices(L"");
                            writeServices(folder);
                            if (isMapped(none) || isMapped(bare))
                                std::exit(2); // without services, they are closed again
                        }),
              0);
    EXPECT_THAT(linesOf(folder.path("services")),
                UnorderedElementsAre("exporter good 10", "exporter x 10", "exporter nosuffix 10",
                                     "exporter deep 10", "exporter in 10"));
    const std::string where = folder.path(plugins + "serviceDecl_");
    const std::string failed = "Proxy failed to load: " + where;
    // The reasons' first characters: of a path, of "Plugin: could not load", and of an empty text.
    EXPECT_THAT(linesOf(folder.path("status")),
                UnorderedElementsAre(failed + "text.so", "/", failed + "cut.so", "P",
                                     failed + "fifo.so", "P", failed + "?.so", ""));
    EXPECT_THAT(linesOf(folder.path("log")),
                UnorderedElementsAre("No services in: " + none, "No services in: " + bare));
}

TEST(ServiceManagerScan, HappensOnceAndInTheSubdirectoriesAlone) {
    const PluginFolder folder;
    folder.add("declaration", "bin/plug-ins/serviceDecl_top.so");
    folder.add("declaration", "bin/plug-ins/sub/serviceDecl_below.so");
    EXPECT_EQ(inProgram(folder,
                        [&] {
                            ServiceManager::getInstance().registerServices(L"sub");
                            ServiceManager::getInstance().registerServices(L"");
                            writeServices(folder);
                        }),
              0);
    EXPECT_THAT(linesOf(folder.path("services")), ElementsAre("exporter below 10"));
    EXPECT_EQ(inProgram(folder, [] { ServiceManager::getInstance().registerServices(L"none"); }),
              0);
    EXPECT_THAT(linesOf(folder.path("status")), IsEmpty());
}

TEST(ServiceManagerScan, KeepsTheFirstOfTwoPluginsWithOneService) {
    const PluginFolder folder;
    folder.add("declaration", "bin/plug-ins/serviceDecl_text+html.so");
    folder.add("declaration", "bin/plug-ins/serviceDecl_text+tex.so");
    EXPECT_EQ(inProgram(folder,
                        [&] {
                            ServiceManager::getInstance().registerServices(L"");
                            writeServices(folder);
                        }),
              0);
    EXPECT_THAT(linesOf(folder.path("services")),
                UnorderedElementsAre("exporter text 10", "exporter html 10", "exporter tex 10"));
    EXPECT_THAT(linesOf(folder.path("status")),
                ElementsAre("Registration of a service failed.  The name is already used: t"));
    EXPECT_EQ(linesOf(folder.path("journal")).front(), "text destroyed") << "the refused one";
}

TEST(ServiceManagerScan, ReportsWhatTheUserMayNotRead) {
    const TempFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    std::filesystem::create_directories(folder.path("bin/plug-ins"));
    folder.write("bin/app", "");
    const std::string secret = folder.write("bin/plug-ins/serviceDecl_secret.so", "");
    std::filesystem::permissions(secret, std::filesystem::perms::none);
    EXPECT_EQ(asOrdinaryUser([&] {
                  become(folder);
                  ServiceManager::getInstance().registerServices(L"");
                  return 0;
              }),
              0);
    EXPECT_THAT(linesOf(folder.path("status")),
                ElementsAre("Proxy failed to load: " + secret, "/"));
}

TEST(ServiceManagerScan, LeavesServicesToTheEndOfTheProcess) {
    const PluginFolder folder;
    folder.add("declaration", "bin/plug-ins/serviceDecl_text.so");
    folder.add("plain", "bin/plug-ins/text.so");
    EXPECT_EQ(inProgram(folder,
                        [&] {
                            ServiceManager& manager = ServiceManager::getInstance();
                            manager.registerServices(L"");
                            Service* text = manager.getService(L"exporter", L"text");
                            if (dynamic_cast<Exporter&>(*text).run() != "text.so")
                                std::exit(2);
                        }),
              0);
    Lines lines = linesOf(folder.path("journal"));
    std::erase_if(lines, [](const std::string& line) { return line.find("text") == line.npos; });
    // The static objects of plug-ins go before the manager does, and with it its services.
    EXPECT_THAT(lines, ElementsAre("text.so mapped", "text.so initialized", "text.so gone",
                                   "serviceDecl_text.so gone", "text destroyed",
                                   "text.so uninitialized", "serviceDecl_text.so uninitialized"));
}
