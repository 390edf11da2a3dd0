// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginServiceManager.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using zePlugin::Service;
using zePlugin::ServiceManager;
using zeString::IString;

namespace {

ServiceManager& manager() {
    return ServiceManager::getInstance();
}

/// A service of the program, that notes its end.
struct Named : Service {
    Named(const IString& typeName, const IString& name, bool allowOverride)
        : Service(name, allowOverride), type(typeName) {}
    ~Named() override { journal().push_back(narrow(getName()) + " destroyed"); }
    IString getType() const override { return type; }
    IString type;
};

bool add(const wchar_t* type, const wchar_t* name, bool allowOverride) {
    return (new Named(type, name, allowOverride))->registerService();
}

Lines namesOf(const IString& type) {
    Lines names;
    for (int i = 0; i < static_cast<int>(manager().getNumServices(type)); ++i)
        names.push_back(
            narrow(manager().getService(manager().getServiceIndex(type), i)->getName()));
    return names;
}

/// A program "bin/app", whose output goes to files, with plug-ins beside it.
class ProgramFolder : public PluginFolder {
public:
    /// Runs `body` as that program in a child process up to the end of `exit`, and returns its exit
    /// code.
    int run(const std::function<void()>& body) const {
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
            body();
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

    void writeNames() const {
        std::ofstream out(path("services"));
        for (const std::string& name : namesOf(L"exporter"))
            out << name << '\n';
    }
};

} // namespace

TEST(ServiceManager, TellsAnUnknownTypeFromAnEmptyOne) {
    EXPECT_EQ(manager().getNumServices(L"unknown"), 0xFFFFFFFF);
    EXPECT_EQ(manager().getServiceIndex(L"unknown"), -1);
    EXPECT_EQ(manager().getService(L"unknown", L"a"), nullptr);
    const int types = manager().numServiceTypes();
    Named stranger(L"unknown", L"a", false); // without an owner: a reference would delete it
    manager().removeService(&stranger);      // makes the type
    EXPECT_EQ(manager().getServiceIndex(L"unknown"), types);
    EXPECT_EQ(manager().getServiceType(types), L"unknown");
    EXPECT_EQ(manager().getNumServices(L"unknown"), 0u);
    EXPECT_FALSE(manager().addService(nullptr));
    manager().removeService(nullptr);
}

TEST(ServiceManager, LetsTheOldServiceDecideWhetherItIsReplaced) {
    const TempFolder folder;
    journal().clear();
    zeOS::AppOutputStream& status = zeOS::AppOutput::getInstance().status;
    status.open(folder.path("status").c_str(), false);
    EXPECT_TRUE(add(L"override", L"soft", true));
    EXPECT_TRUE(add(L"override", L"hard", false));
    EXPECT_TRUE(manager().getService(L"override", L"soft")->registerService()); // over itself
    EXPECT_TRUE(add(L"override", L"soft", false));
    EXPECT_THAT(happened(), ElementsAre("soft destroyed"));
    EXPECT_THAT(namesOf(L"override"), ElementsAre("hard", "soft"));
    ze::Reference<Named> refused(new Named(L"override", L"soft", true));
    EXPECT_FALSE(refused->registerService()); // in silence: it is a message of level 1
    status.setLevel(1);
    EXPECT_FALSE(refused->registerService());
    EXPECT_TRUE(add(L"override", L"\u4E2D", false));
    refused = new Named(L"override", L"\u4E2D", false);
    EXPECT_FALSE(refused->registerService());
    // The first bytes of the name as it lies in memory.
    EXPECT_EQ(folder.read("status"),
              "Registration of a service failed.  The name is already used: s\n"
              "Registration of a service failed.  The name is already used: -N\n");
    status.close();
}

TEST(ServiceManager, ForgetsAServiceThatIsDestroyedWhileItIsListed) {
    journal().clear();
    EXPECT_TRUE(add(L"deleted", L"a", false));
    EXPECT_TRUE(add(L"deleted", L"b", false));
    delete manager().getService(L"deleted", L"a");
    manager().getService(L"deleted", L"b")->unref(); // the manager's own
    EXPECT_THAT(happened(), ElementsAre("a destroyed", "b destroyed"));
    EXPECT_EQ(manager().getNumServices(L"deleted"), 0u);
    EXPECT_EQ(manager().getService(L"deleted", L"a"), nullptr);
}

TEST(ServiceManager, FindsTheFirstOfANameThatADestructorAddedTwice) {
    struct Heir : Named {
        using Named::Named;
        ~Heir() override { add(L"heir", L"a", false); }
    };
    EXPECT_TRUE((new Heir(L"heir", L"a", true))->registerService());
    auto* second = new Named(L"heir", L"a", false);
    EXPECT_TRUE(second->registerService()); // behind the one that the first left
    EXPECT_THAT(namesOf(L"heir"), ElementsAre("a", "a"));
    EXPECT_NE(manager().getService(L"heir", L"a"), second);
    manager().removeService(second); // by name: the first
    EXPECT_EQ(manager().getService(L"heir", L"a"), second);
}

TEST(ServiceManager, DoesWhatAPlainListDoes) {
    std::vector<ze::Reference<Named>> twin;
    std::mt19937 random(1);
    const auto find = [&](const IString& name) {
        return std::find_if(twin.begin(), twin.end(),
                            [&](const auto& service) { return service->getName() == name; });
    };
    constexpr int operations = 20000;
    for (int i = 0; i < operations; ++i) {
        const IString name(std::to_string(random() % 40).c_str());
        const auto old = find(name);
        const ze::Reference<Named> service(new Named(L"twin", name, random() % 2 == 0));
        if (random() % 3 == 0) {
            manager().removeService(service.get());
            if (old != twin.end())
                twin.erase(old);
        } else {
            const bool fits = old == twin.end() || (*old)->getAllowOverride();
            if (fits && old != twin.end())
                twin.erase(old);
            if (fits)
                twin.push_back(service);
            ASSERT_EQ(manager().addService(service.get()), fits);
        }
        const int type = manager().getServiceIndex(L"twin");
        ASSERT_EQ(manager().getNumServices(type), twin.size());
        for (std::size_t k = 0; k < twin.size(); ++k)
            ASSERT_EQ(manager().getService(type, static_cast<int>(k)), twin[k].get());
        const IString asked(std::to_string(random() % 40).c_str());
        const auto found = find(asked);
        ASSERT_EQ(manager().getService(type, asked), found == twin.end() ? nullptr : found->get());
    }
    std::printf("operations tried: %d\n", operations);
    journal().clear();
}

// The search for plug-ins, and the end of the process: both happen once in a process.

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

    EXPECT_EQ(folder.run([&] {
        manager().registerServices(L"");
        folder.writeNames();
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
    EXPECT_EQ(folder.run([&] {
        manager().registerServices(L"sub");
        manager().registerServices(L"");
        folder.writeNames();
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
    EXPECT_EQ(folder.run([&] {
        manager().registerServices(L"");
        dynamic_cast<Exporter&>(*manager().getService(L"exporter", L"text")).run();
    }),
              0);
    Lines lines = folder.lines("journal");
    std::erase_if(lines, [](const std::string& line) { return line.find("text") == line.npos; });
    // The static objects of plug-ins go before the manager does, and with it its services.
    EXPECT_THAT(lines, ElementsAre("serviceDecl_text.so initialized", "text.so initialized",
                                   "text.so gone", "serviceDecl_text.so gone", "text destroyed",
                                   "text.so uninitialized", "serviceDecl_text.so uninitialized"));
}
