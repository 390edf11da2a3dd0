// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPluginProxy.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Plugin/zePluginServiceManager.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
using zePlugin::Plugin;
using zePlugin::PluginLoader;
using zePlugin::PluginProxy;
using zePlugin::Service;
using zePlugin::ServiceManager;
using Held = ze::Reference<PluginProxy>;

namespace {

Held loadProxy(const std::string& path) {
    return PluginLoader().loadProxy(zeString::IString(path.c_str(), zeString::EncodingUTF8));
}

Service* find(const wchar_t* name) {
    return ServiceManager::getInstance().getService(L"exporter", name);
}

} // namespace

TEST(PluginProxy, SaysOnceWhyTheRealPluginCannotBeLoaded) {
    const PluginFolder folder;
    const std::string missing = folder.add("declaration", "serviceDecl_missing.so");
    const std::string damaged = folder.add("declaration", "serviceDecl_damaged.so");
    const std::string nameless = folder.add("bare", "serviceDecl_nameless.so");
    folder.write("damaged.so", "");
    const struct {
        std::string path, realName, text, lookup;
    } cases[] = {
        {missing, "missing.so", "The proxy plugin does not exist: " + folder.path("missing.so"),
         ""},
        {damaged, "damaged.so", folder.path("damaged.so") + ": file too short", ""},
        {nameless, "", folder.path() + ": cannot read file data: Is a directory",
         nameless + ": undefined symbol: getPluginProxyName"},
    };
    for (const auto& [path, realName, text, lookup] : cases) {
        const Held proxy = loadProxy(path);
        ASSERT_TRUE(proxy) << path;
        EXPECT_EQ(narrow(proxy->getProxyFor()), realName);
        EXPECT_FALSE(proxy->getMainPlugin());
        EXPECT_EQ(narrow(proxy->getError()), text);
        EXPECT_FALSE(proxy->getMainPlugin()); // not tried again, and the text is gone
        EXPECT_EQ(narrow(proxy->getError()), lookup);
    }
}

TEST(PluginProxy, FindsTheRealPluginBesideItWhateverTheLocale) {
    const PluginFolder folder;
    folder.add("plain", "gr\xC3\xBCn/text.so");
    const Held proxy = loadProxy(folder.add("declaration", "gr\xC3\xBCn/serviceDecl_text.so"));
    ASSERT_TRUE(proxy);
    EXPECT_TRUE(proxy->getMainPlugin()) << narrow(proxy->getError());
    EXPECT_TRUE(proxy->loadMainPlugin());
}

TEST(PluginProxy, ListsItsServicesAsLongAsTheyLive) {
    const PluginFolder folder;
    const Held proxy = loadProxy(folder.add("declaration", "serviceDecl_one+two+three.so"));
    EXPECT_TRUE(proxy->installServices());
    EXPECT_TRUE(proxy->installServices()); // runs nothing
    ASSERT_EQ(proxy->getNumServices(), 3);
    Service* const three = proxy->getService(2);
    EXPECT_EQ(three->getName(), L"three");
    proxy->destroyedService(nullptr); // not in the list
    ServiceManager::getInstance().removeService(find(L"one"));
    EXPECT_EQ(proxy->getNumServices(), 2);
    EXPECT_EQ(proxy->findService(three), 1);
    EXPECT_EQ(proxy->findService(nullptr), -1);

    const Held empty = loadProxy(folder.add("declaration", "serviceDecl_+.so"));
    EXPECT_FALSE(empty->installServices());
    for (const wchar_t* name : {L"two", L"three"})
        ServiceManager::getInstance().removeService(find(name));
}

namespace {

/// All that can hold a proxy's library, its real one and its services: the manager and the program.
struct Holders {
    explicit Holders(const PluginFolder& folder)
        : proxyPath(folder.path("serviceDecl_a+b.so")),
          realPath(folder.path("a+b.so")),
          plainPath(folder.path("plain.so")),
          plain(PluginLoader().load(plainPath.c_str())),
          proxy(loadProxy(proxyPath)) {
        proxy->installServices();
        a = dynamic_cast<Exporter*>(find(L"a"));
        a->run(); // opens the real one
        real = proxy->getMainPlugin();
    }

    /// What must be there, whatever went in whatever order.
    void check() {
        const bool hasServices = a || find(L"a") || find(L"b");
        ASSERT_EQ(isMapped(proxyPath), proxy || hasServices);
        ASSERT_EQ(isMapped(realPath), proxy || real || hasServices);
        ASSERT_EQ(isMapped(plainPath), static_cast<bool>(plain));
        if (a) {
            ASSERT_EQ(a->run(), "a+b.so");
        }
    }

    void release(int which) {
        switch (which) {
        case 0:
            return ServiceManager::getInstance().removeService(find(L"a"));
        case 1:
            return ServiceManager::getInstance().removeService(find(L"b"));
        case 2:
            return Service::destroyReference(a);
        case 3:
            proxy = nullptr;
            return;
        case 4:
            real = nullptr;
            return;
        default:
            plain = nullptr;
        }
    }

    const std::string proxyPath, realPath, plainPath;
    ze::Reference<Plugin> plain, real;
    Held proxy;
    ze::Reference<Exporter> a;
};

} // namespace

TEST(PluginProxy, OutlivesItsServicesInEveryOrder) {
    const PluginFolder folder;
    folder.add("declaration", "serviceDecl_a+b.so");
    folder.add("plain", "a+b.so");
    folder.add("plain", "plain.so");
    std::vector<int> order(6);
    std::iota(order.begin(), order.end(), 0);
    int orders = 0;
    do {
        Holders holders(folder);
        for (const int which : order) {
            holders.release(which);
            ASSERT_NO_FATAL_FAILURE(holders.check());
        }
        const Lines lines = happened();
        const auto at = [&](const char* line) {
            return std::find(lines.begin(), lines.end(), line) - lines.begin();
        };
        ASSERT_LT(at("a destroyed"), at("serviceDecl_a+b.so uninitialized"));
        ASSERT_LT(at("b destroyed"), at("serviceDecl_a+b.so uninitialized"));
        ASSERT_LT(at("serviceDecl_a+b.so uninitialized"), at("serviceDecl_a+b.so gone"));
        const auto turn = [&](int which) { return std::find(order.begin(), order.end(), which); };
        if (turn(4) < std::max({turn(0), turn(1), turn(2), turn(3)})) { // the proxy's alone at last
            ASSERT_LT(at("a+b.so gone"), at("serviceDecl_a+b.so uninitialized"));
        }
        ++orders;
    } while (std::next_permutation(order.begin(), order.end()));
    std::printf("orders tried: %d\n", orders);
    EXPECT_EQ(orders, 720);
}
