// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPlugin.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Plugin/zePluginServiceManager.h"
#include "Base/Utility/zeUtilError.h"
#include "Support/OrdinaryUser.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
using zePlugin::Plugin;
using zePlugin::PluginLoader;
using zePlugin::Service;
using zePlugin::ServiceManager;
using Held = ze::Reference<Plugin>;
using HeldProxy = ze::Reference<zePlugin::PluginProxy>;

namespace {

/// Why a load failed; "loaded" if it did not.
std::string failure(const std::string& path) {
    PluginLoader loader;
    return loader.load(path.c_str()) ? "loaded" : narrow(loader.getError());
}

std::string refused(const std::string& path) {
    return "Plugin: could not load plugin: " + path + "\n";
}

HeldProxy loadProxy(const std::string& path) {
    return PluginLoader().loadProxy(zeString::IString(path.c_str(), zeString::EncodingUTF8));
}

Exporter* find(const wchar_t* name) {
    return dynamic_cast<Exporter*>(ServiceManager::getInstance().getService(L"exporter", name));
}

void remove(const wchar_t* name) {
    ServiceManager::getInstance().removeService(find(name));
}

} // namespace

TEST(Plugin, SaysWhyAFileIsNoPlugin) {
    const PluginFolder folder;
    mkfifo(folder.path("fifo.so").c_str(), 0600); // would wait for a writer
    const struct {
        std::string path, text;
    } cases[] = {
        {folder.path("missing.so"), ""},
        {"", ""},
        {folder.write("empty.so", ""), folder.path("empty.so") + ": file too short"},
        {folder.write("text.so", std::string(64, 'x')),
         folder.path("text.so") + ": invalid ELF header"},
        {folder.path(), folder.path() + ": cannot read file data: Is a directory"},
        {folder.path("fifo.so"), refused(folder.path("fifo.so"))},
        {"/dev/null", refused("/dev/null")},
        {folder.add("good.so"), "loaded"},
    };
    for (const auto& [path, text] : cases)
        EXPECT_EQ(failure(path), text) << path;

    const TempFolder open;
    std::filesystem::permissions(open.path(), std::filesystem::perms::all);
    const std::string path = open.write("secret.so", "");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    const std::string denied = path + ": cannot open shared object file: Permission denied";
    EXPECT_EQ(asOrdinaryUser([&] { return failure(path) == denied; }), 1);
}

TEST(Plugin, IsRefusedIfItWasCutOffAnywhere) {
    const PluginFolder folder;
    const std::string whole = folder.read(std::filesystem::path(folder.add("whole.so")).filename());
    int refusals = 0, loads = 0;
    for (std::size_t size = 0; size < whole.size(); size += whole.size() / 150) {
        const std::string path =
            folder.write("cut" + std::to_string(size) + ".so", whole.substr(0, size));
        const std::string text = failure(path);
        ++(text == "loaded" ? loads : refusals);
        EXPECT_FALSE(text.empty());
    }
    std::printf("cut libraries: %d refused, %d without a loss that matters\n", refusals, loads);
    EXPECT_GT(refusals, 20);
}

TEST(Plugin, KeepsTheTextOfAFailedLookupAfterASuccess) {
    const PluginFolder folder;
    const std::string path = folder.add("bare.so", BARE);
    Plugin plugin(path.c_str());
    EXPECT_EQ(plugin.getSymbol("nothing"), nullptr);
    EXPECT_EQ(plugin.getError(), L"") << "not loaded";
    EXPECT_TRUE(plugin.load());
    EXPECT_EQ(narrow(plugin.getError()), path + ": undefined symbol: initializePlugin");
    EXPECT_EQ(plugin.getSymbol("nothing"), nullptr);
    EXPECT_EQ(narrow(plugin.getError()), path + ": undefined symbol: nothing");
}

TEST(Plugin, RunsItsFunctionsAroundItsLife) {
    const PluginFolder folder;
    const std::string path = folder.add("a.so"), kept = folder.add("b.so");
    PluginLoader loader;
    Held plugin = loader.load(path.c_str());
    symbol<void(Plugin*)>(*plugin, "listen")(plugin.get()); // its function goes before its code
    plugin = nullptr;
    EXPECT_THAT(happened(), ElementsAre("a.so initialized", "a.so is unloaded",
                                        "a.so uninitialized", "a.so gone"));
    plugin = loader.load(path.c_str());
    EXPECT_TRUE(plugin->load()); // opened twice, closed once
    plugin = nullptr;
    EXPECT_THAT(happened(),
                ElementsAre("a.so initialized", "a.so initialized", "a.so uninitialized"));
    EXPECT_TRUE(isMapped(path));
    plugin = loader.load(kept.c_str());
    plugin->finallyUnload(false);
    plugin = nullptr;
    EXPECT_THAT(happened(), ElementsAre("b.so initialized"));
    EXPECT_TRUE(isMapped(kept));
}

TEST(Plugin, NamesItselfInTheLocalesEncoding) {
    const Plugin plugin(L"/gr\u00FCn/\u00FC.v2.so"); // the tests run in the "C" locale
    EXPECT_EQ(plugin.getName(), L"?.v2");
    EXPECT_EQ(plugin.getFilename(), L"/gr?n/?.v2.so");
}

TEST(Plugin, ThrowsAndIsCastToAcrossTheBoundary) {
    const PluginFolder folder;
    const Held plugin = PluginLoader().load(folder.add("a.so").c_str());
    const auto fail = symbol<void(bool)>(*plugin, "fail");
    EXPECT_THROW(fail(false), zeUtil::Error);
    EXPECT_THROW(fail(true), ShapeError); // the two libraries share its name alone
    const std::unique_ptr<Shape> shape(symbol<Shape*()>(*plugin, "makeShape")());
    EXPECT_TRUE(dynamic_cast<Circle*>(shape.get()));
}

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
        const HeldProxy proxy = loadProxy(path);
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
    const HeldProxy proxy = loadProxy(folder.add("gr\xC3\xBCn/serviceDecl_text.so"));
    EXPECT_TRUE(proxy->getMainPlugin()) << narrow(proxy->getError());
}

TEST(PluginProxy, ListsItsServicesAsLongAsTheyLive) {
    const PluginFolder folder;
    const HeldProxy proxy = loadProxy(folder.add("serviceDecl_one+two+three.so"));
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
    Held keeper = PluginLoader().load(folder.add("keeper.so").c_str());
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
        Held plain = PluginLoader().load(plainPath.c_str());
        HeldProxy proxy = loadProxy(proxyPath);
        proxy->installServices();
        ze::Reference<Exporter> a = find(L"a");
        EXPECT_EQ(a->run(), "a+b.so"); // opens the real one
        Held real = proxy->getMainPlugin();
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
