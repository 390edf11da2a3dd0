// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginServiceManager.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <random>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"

#include "Plugin/pluginFolder.h"

using testing::UnorderedElementsAre;
using zeString::IString;

namespace {

/// A service of the program.
struct Named : zePlugin::Service {
    Named(const IString& typeName, const IString& name, bool allowOverride)
        : Service(name, allowOverride), type(typeName) {}
    IString getType() const override { return type; }
    IString type;
};

bool add(const wchar_t* type, const wchar_t* name, bool allowOverride) {
    return (new Named(type, name, allowOverride))->registerService();
}

Lines linesOf(const std::string& path) {
    Lines lines;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// When all that happens at exit has happened.
[[gnu::destructor]] void writeJournal() {
    if (const char* path = std::getenv("ZEBASE_TEST_JOURNAL"))
        for (std::ofstream file(path); const std::string& line : journal())
            file << line << '\n';
}

} // namespace

Lines& journal() {
    static auto& lines = *new Lines; // for plug-ins that are closed at exit
    return lines;
}

TEST(ServiceManager, TellsAnUnknownTypeFromAnEmptyOne) {
    EXPECT_EQ(manager().getNumServices(L"unknown"), 0xFFFFFFFF);
    EXPECT_EQ(manager().getService(L"unknown", L"a"), nullptr);
    Named stranger(L"unknown", L"a", false); // without an owner: a reference would delete it
    manager().removeService(&stranger);      // makes the type
    const int type = manager().getServiceIndex(L"unknown");
    EXPECT_EQ(type, manager().numServiceTypes() - 1);
    EXPECT_EQ(manager().getServiceType(type), L"unknown");
    EXPECT_EQ(manager().getNumServices(L"unknown"), 0u);
    EXPECT_FALSE(manager().addService(nullptr));
    manager().removeService(nullptr);
}

TEST(ServiceManager, ForgetsAServiceThatIsDestroyedWhileItIsListed) {
    struct Heir : Named {
        using Named::Named;
        ~Heir() override { add(L"heir", L"a", false); }
    };
    (new Heir(L"heir", L"a", true))->registerService();
    add(L"heir", L"a", false); // behind the one that the heir left
    const int type = manager().getServiceIndex(L"heir");
    ASSERT_EQ(manager().getNumServices(type), 2u);
    zePlugin::Service* first = manager().getService(type, 0);
    delete manager().getService(type, 1);
    ASSERT_EQ(manager().getNumServices(type), 1u);
    EXPECT_EQ(manager().getService(type, L"a"), first);
    first->unref(); // the manager's own
    EXPECT_EQ(manager().getNumServices(type), 0u);
    EXPECT_EQ(manager().getService(type, L"a"), nullptr);
}

TEST(ServiceManager, DoesWhatAPlainListDoes) {
    std::vector<ze::Reference<Named>> twin;
    const auto find = [&](const IString& name) {
        return std::find_if(twin.begin(), twin.end(),
                            [&](const auto& service) { return service->getName() == name; });
    };
    std::mt19937 random(1);
    const auto anyName = [&] { return IString(std::to_string(random() % 40).c_str()); };
    constexpr int operations = 20000;
    for (int i = 0; i < operations; ++i) {
        const ze::Reference<Named> service(new Named(L"twin", anyName(), random() % 2 == 0));
        const auto old = find(service->getName());
        const bool removes = random() % 3 == 0;
        const bool fits = old == twin.end() || (*old)->getAllowOverride();
        if (old != twin.end() && (removes || fits))
            twin.erase(old);
        if (removes)
            manager().removeService(service.get());
        else
            EXPECT_EQ(manager().addService(service.get()), fits);
        if (fits && !removes)
            twin.push_back(service);
        const int type = manager().getServiceIndex(L"twin");
        ASSERT_EQ(manager().getNumServices(type), twin.size());
        for (std::size_t k = 0; k < twin.size(); ++k)
            ASSERT_EQ(manager().getService(type, static_cast<int>(k)), twin[k].get());
        const IString asked = anyName();
        const auto found = find(asked);
        ASSERT_EQ(manager().getService(type, asked), found == twin.end() ? nullptr : found->get());
    }
    std::printf("operations tried: %d\n", operations);
}

/// Both happen once in a process: a child is a program "bin/app" with plug-ins beside it.
TEST(ServiceManager, FindsPluginsByNameAndHoldsThemUntilTheEndOfTheProcess) {
    const PluginFolder folder;
    const std::string plugins = "bin/plug-ins/sub/";
    for (const char* name :
         {"serviceDecl_x.v2", "serviceDecl_nosuffix", "serviceDecl_one+same.so",
          "serviceDecl_two+same.so", "serviceDecl_dir.so/serviceDecl_in.so", "serviceDecl_exit.so",
          "exit.so",
          // passed over:
          "../serviceDecl_above.so", "serviceDecl_.so", "serviceDecl_", "servicedecl_a.so",
          "decl_b.so", "serviceDecl_c.pdb", "serviceDecl_d.so.debug", "serviceDecl_e.dSYM"})
        folder.add(plugins + name);
    const std::string program = folder.write("bin/app", "");
    const std::string none = folder.add(plugins + "serviceDecl_.none.so");
    const std::string bare = folder.add(plugins + "serviceDecl_bare.so", BARE);
    std::filesystem::resize_file(folder.add(plugins + "serviceDecl_cut.so"), 5000);
    folder.write(plugins + "serviceDecl_\xC3\xBC.so", ""); // not to be found in the "C" locale
    folder.write(plugins + "serviceDecl_text.so", std::string(64, 'x'));
    mkfifo(folder.path(plugins + "serviceDecl_fifo.so").c_str(), 0600);

    const pid_t child = fork();
    if (child == 0) {
        setenv("ZEBASE_TEST_JOURNAL", folder.path("journal").c_str(), 1);
        static const char* const arguments[] = {program.c_str(), nullptr};
        zeOS::AppMain::getInstance().initialize(1, arguments, arguments + 1);
        zeOS::AppOutput& output = zeOS::AppOutput::getInstance();
        output.status.open(folder.path("status").c_str(), false);
        output.log.open(folder.path("log").c_str(), false);
        output.setLevel(1);
        manager().registerServices(L"sub");
        manager().registerServices(L""); // does nothing
        for (const wchar_t* name : {L"x", L"nosuffix", L"one", L"two", L"same", L"in", L"exit"})
            EXPECT_TRUE(manager().getService(L"exporter", name)) << narrow(name);
        EXPECT_EQ(manager().getNumServices(L"exporter"), 7u);
        EXPECT_FALSE(isMapped(none) || isMapped(bare)); // without services, they are closed again
        dynamic_cast<Exporter*>(manager().getService(L"exporter", L"exit"))->run();
        add(L"taken", L"a", true);
        EXPECT_TRUE(manager().getService(L"taken", L"a")->registerService()); // over itself
        add(L"taken", L"\u4E2D", false);
        const ze::Reference<Named> second(new Named(L"taken", L"\u4E2D", true));
        EXPECT_FALSE(second->registerService());
        output.setLevel(0); // in silence: it is a message of level 1
        EXPECT_FALSE(second->registerService());
        std::exit(testing::Test::HasFailure());
    }
    int result = -1;
    waitpid(child, &result, 0);
    EXPECT_EQ(result, 0);
    const std::string failed = "Proxy failed to load: " + folder.path(plugins + "serviceDecl_");
    const std::string taken = "Registration of a service failed.  The name is already used: ";
    // The reasons' first characters: of a path, of "Plugin: could not load", and of an empty text.
    EXPECT_THAT(linesOf(folder.path("status")),
                UnorderedElementsAre(failed + "text.so", "/", failed + "cut.so", "P",
                                     failed + "fifo.so", "P", failed + "?.so", "", taken + "s",
                                     taken + "-N")); // of U+4E2D, two bytes
    EXPECT_THAT(linesOf(folder.path("log")),
                UnorderedElementsAre("No services in: " + none, "No services in: " + bare));
    Lines lines = linesOf(folder.path("journal"));
    std::erase_if(lines, [](const std::string& line) { return line.find("exit") == line.npos; });
    // The static objects of plug-ins go before the manager does, and with it its services.
    EXPECT_THAT(lines, ElementsAre("serviceDecl_exit.so initialized", "exit.so initialized",
                                   "exit.so gone", "serviceDecl_exit.so gone", "exit destroyed",
                                   "exit.so uninitialized", "serviceDecl_exit.so uninitialized"));
}
