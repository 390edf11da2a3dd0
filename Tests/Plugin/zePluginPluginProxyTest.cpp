// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPluginProxy.h"

#include <algorithm>
#include <cstdio>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Plugin/zePluginServiceManager.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
using zePlugin::Plugin;
using zePlugin::PluginLoader;
using zePlugin::Service;
using zePlugin::ServiceManager;
using Held = ze::Reference<zePlugin::PluginProxy>;

namespace {

Held loadProxy(const std::string& path) {
    return PluginLoader().loadProxy(zeString::IString(path.c_str(), zeString::EncodingUTF8));
}

Exporter* find(const wchar_t* name) {
    return dynamic_cast<Exporter*>(ServiceManager::getInstance().getService(L"exporter", name));
}

void remove(const wchar_t* name) {
    ServiceManager::getInstance().removeService(find(name));
}

} // namespace

TEST(PluginProxy, SaysOnceWhyTheRealPluginCannotBeLoaded) {
    const PluginFolder folder;
    const std::string bare = folder.add("serviceDecl_bare.so", BARE);
    const struct {
        std::string path, realName, text, lookup;
    } cases[] = {
        {folder.add("serviceDecl_none.so"), "none.so",
         "The proxy plugin does not exist: " + folder.path("none.so"), ""},
        {folder.add("serviceDecl_empty.so"), "empty.so",
         folder.write("empty.so", "") + ": file too short", ""},
        {bare, "", folder.path() + ": cannot read file data: Is a directory",
         bare + ": undefined symbol: getPluginProxyName"},
    };
    for (const auto& [path, realName, text, lookup] : cases) {
        const Held proxy = loadProxy(path);
        EXPECT_EQ(narrow(proxy->getProxyFor()), realName);
        EXPECT_FALSE(proxy->getMainPlugin());
        EXPECT_EQ(narrow(proxy->getError()), text);
        EXPECT_FALSE(proxy->getMainPlugin()); // not tried again, and the text is gone
        EXPECT_EQ(narrow(proxy->getError()), lookup);
    }
}

TEST(PluginProxy, FindsTheRealPluginBesideItWhateverTheLocale) {
    const PluginFolder folder;
    folder.add("gr\xC3\xBCn/text.so");
    const Held proxy = loadProxy(folder.add("gr\xC3\xBCn/serviceDecl_text.so"));
    EXPECT_TRUE(proxy->getMainPlugin()) << narrow(proxy->getError());
}

TEST(PluginProxy, ListsItsServicesAsLongAsTheyLive) {
    const PluginFolder folder;
    const Held proxy = loadProxy(folder.add("serviceDecl_one+two+three.so"));
    EXPECT_TRUE(proxy->installServices());
    EXPECT_TRUE(proxy->installServices()); // runs nothing
    ASSERT_EQ(proxy->getNumServices(), 3);
    proxy->destroyedService(nullptr); // not in the list
    remove(L"one");
    EXPECT_EQ(proxy->getNumServices(), 2);
    EXPECT_EQ(proxy->findService(find(L"three")), 1);
    EXPECT_EQ(proxy->findService(nullptr), -1);
    remove(L"two");
    remove(L"three");
}

TEST(PluginProxy, IsClosedByALibraryThatIsBeingClosed) {
    const PluginFolder folder;
    const std::string path = folder.add("serviceDecl_kept.so");
    ze::Reference<Plugin> keeper = PluginLoader().load(folder.add("keeper.so").c_str());
    loadProxy(path)->installServices();
    symbol<void(Exporter*)>(*keeper, "keep")(find(L"kept")); // in a static object
    remove(L"kept");
    EXPECT_TRUE(isMapped(path));
    happened();
    keeper = nullptr;
    EXPECT_FALSE(isMapped(path));
    EXPECT_THAT(happened(), ElementsAre("keeper.so uninitialized", "kept destroyed",
                                        "serviceDecl_kept.so uninitialized", "keeper.so gone",
                                        "serviceDecl_kept.so gone"));
}

TEST(PluginProxy, OutlivesItsServicesInEveryOrder) {
    const PluginFolder folder;
    const std::string proxyPath = folder.add("serviceDecl_a+b.so"), realPath = folder.add("a+b.so"),
                      plainPath = folder.add("plain.so");
    int order[] = {0, 1, 2, 3, 4, 5}, orders = 0;
    do {
        ze::Reference<Plugin> plain = PluginLoader().load(plainPath.c_str());
        Held proxy = loadProxy(proxyPath);
        proxy->installServices();
        ze::Reference<Exporter> a = find(L"a");
        EXPECT_EQ(a->run(), "a+b.so"); // opens the real one
        ze::Reference<Plugin> real = proxy->getMainPlugin();
        happened();
        for (const int holder : order) {
            switch (holder) {
            case 0:
                remove(L"a");
                break;
            case 1:
                remove(L"b");
                break;
            case 2:
                Service::destroyReference(a);
                break;
            case 3:
                proxy = nullptr;
                break;
            case 4:
                real = nullptr;
                break;
            case 5:
                plain = nullptr;
                break;
            }
            const bool held = proxy || a || find(L"a") || find(L"b");
            ASSERT_EQ(isMapped(proxyPath), held);
            ASSERT_EQ(isMapped(realPath), held || real);
            ASSERT_EQ(isMapped(plainPath), static_cast<bool>(plain));
            if (a) {
                ASSERT_EQ(a->run(), "a+b.so");
            }
        }
        const Lines lines = happened();
        const auto turn = [&](const char* line) {
            return std::find(lines.begin(), lines.end(), line) - lines.begin();
        };
        ASSERT_EQ(lines.size(), 8u);
        ASSERT_LT(std::max(turn("a destroyed"), turn("b destroyed")),
                  turn("serviceDecl_a+b.so uninitialized"));
        if (order[5] != 4 && order[4] != 4) { // held by the proxy alone, the real one goes first
            ASSERT_LT(turn("a+b.so gone"), turn("serviceDecl_a+b.so uninitialized"));
        }
        ++orders;
    } while (std::next_permutation(std::begin(order), std::end(order)));
    std::printf("orders tried: %d\n", orders);
    EXPECT_EQ(orders, 720);
}
