// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginServiceManager.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/OS/zeOSAppOutput.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
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

Lines namesOf(const IString& type) {
    Lines names;
    for (int i = 0; i < static_cast<int>(manager().getNumServices(type)); ++i)
        names.push_back(
            narrow(manager().getService(manager().getServiceIndex(type), i)->getName()));
    return names;
}

/// Removes what a test leaves behind; types remain.
void clear(const IString& type) {
    while (manager().getNumServices(type) + 1 > 1)
        manager().removeService(manager().getService(manager().getServiceIndex(type), 0));
}

} // namespace

TEST(ServiceManager, TellsAnUnknownTypeFromAnEmptyOne) {
    EXPECT_EQ(manager().getNumServices(L"unknown"), 0xFFFFFFFF);
    EXPECT_EQ(manager().getServiceIndex(L"unknown"), -1);
    EXPECT_EQ(manager().getService(L"unknown", L"a"), nullptr);
    const int types = manager().numServiceTypes();
    const ze::Reference<Named> stranger(new Named(L"unknown", L"a", false));
    manager().removeService(stranger.get()); // makes the type
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
    const IString type(L"override");
    EXPECT_TRUE((new Named(type, L"soft", true))->registerService());
    EXPECT_TRUE((new Named(type, L"hard", false))->registerService());
    EXPECT_TRUE((new Named(type, L"soft", false))->registerService()); // at the end now
    EXPECT_THAT(happened(), ElementsAre("soft destroyed"));
    EXPECT_THAT(namesOf(type), ElementsAre("hard", "soft"));
    const ze::Reference<Named> refused(new Named(type, L"soft", true));
    EXPECT_FALSE(refused->registerService()); // in silence: it is a message of level 1
    status.setLevel(1);
    EXPECT_FALSE(refused->registerService());
    const ze::Reference<Named> wide(new Named(type, L"\u4E2D", false));
    EXPECT_TRUE(wide->registerService());
    EXPECT_FALSE(wide->registerService());
    // The first bytes of the name as it lies in memory.
    EXPECT_EQ(folder.read("status"),
              "Registration of a service failed.  The name is already used: s\n"
              "Registration of a service failed.  The name is already used: -N\n");
    status.close();
    clear(type);
}

TEST(ServiceManager, LetsAServiceReplaceItself) {
    journal().clear();
    const IString type(L"itself");
    auto* service = new Named(type, L"only", true);
    EXPECT_TRUE(service->registerService());
    EXPECT_TRUE(service->registerService()); // the manager is its only owner
    EXPECT_THAT(namesOf(type), ElementsAre("only"));
    EXPECT_EQ(service->refs(), 1);
    clear(type);
    EXPECT_THAT(happened(), ElementsAre("only destroyed"));
}

TEST(ServiceManager, RemovesByNameAndTakesNoReference) {
    journal().clear();
    const IString type(L"byName");
    EXPECT_TRUE((new Named(type, L"a", false))->registerService());
    Named onStack(type, L"a", false); // without an owner: a reference to it would delete it
    manager().removeService(&onStack);
    EXPECT_THAT(happened(), ElementsAre("a destroyed"));
    EXPECT_EQ(manager().getNumServices(type), 0u);
}

TEST(ServiceManager, ForgetsAServiceThatIsDestroyedWhileItIsListed) {
    journal().clear();
    const IString type(L"deleted");
    auto* deleted = new Named(type, L"a", false);
    auto* released = new Named(type, L"b", false);
    EXPECT_TRUE(deleted->registerService() && released->registerService());
    delete deleted;
    released->unref(); // the manager's
    EXPECT_THAT(happened(), ElementsAre("a destroyed", "b destroyed"));
    EXPECT_EQ(manager().getNumServices(type), 0u);
    EXPECT_EQ(manager().getService(type, L"a"), nullptr);
}

TEST(ServiceManager, FindsTheFirstOfANameThatADestructorAddedTwice) {
    struct Heir : Named {
        using Named::Named;
        ~Heir() override { (new Named(type, getName(), false))->registerService(); }
    };
    const IString type(L"heir");
    EXPECT_TRUE((new Heir(type, L"a", true))->registerService());
    auto* second = new Named(type, L"a", false);
    EXPECT_TRUE(second->registerService()); // behind the one that the first left
    EXPECT_THAT(namesOf(type), ElementsAre("a", "a"));
    Service* first = manager().getService(type, L"a");
    EXPECT_NE(first, second);
    manager().removeService(second); // by name: the first
    EXPECT_EQ(manager().getService(type, L"a"), second);
    clear(type);
}

TEST(ServiceManager, DoesWhatAPlainListDoes) {
    struct Entry {
        std::string name;
        const Service* service;
        bool allowOverride;
    };
    std::vector<Entry> twin[3];
    const IString types[] = {L"twin0", L"twin1", L"twin2"};
    std::mt19937 random(1);
    const auto named = [](const std::string& name) {
        return [&name](const Entry& entry) { return entry.name == name; };
    };
    constexpr int operations = 20000;
    for (int i = 0; i < operations; ++i) {
        const std::size_t t = random() % 3;
        auto& list = twin[t];
        const std::string name = std::to_string(random() % 40);
        const auto old = std::find_if(list.begin(), list.end(), named(name));
        ze::Reference<Named> service(new Named(types[t], name.c_str(), random() % 2 == 0));
        if (random() % 3 == 0) {
            manager().removeService(service.get());
            if (old != list.end())
                list.erase(old);
        } else {
            const bool fits = old == list.end() || old->allowOverride;
            ASSERT_EQ(manager().addService(service.get()), fits);
            if (fits && old != list.end())
                list.erase(old);
            if (fits)
                list.push_back({name, service.get(), service->getAllowOverride()});
        }
        ASSERT_EQ(manager().getNumServices(types[t]) + 1,
                  list.size() + (manager().getServiceIndex(types[t]) != -1));
        const std::string asked = std::to_string(random() % 40);
        const auto found = std::find_if(list.begin(), list.end(), named(asked));
        ASSERT_EQ(manager().getService(types[t], asked.c_str()),
                  found == list.end() ? nullptr : found->service);
        for (std::size_t k = 0; k < list.size(); ++k)
            ASSERT_EQ(
                manager().getService(manager().getServiceIndex(types[t]), static_cast<int>(k)),
                list[k].service);
    }
    std::printf("operations tried: %d\n", operations);
    for (const IString& type : types)
        clear(type);
    journal().clear();
}
