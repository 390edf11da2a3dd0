// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPlugin.h"

#include <elf.h>
#include <sys/stat.h>

#include <array>
#include <functional>

#include "Support/OrdinaryUser.h"

#include "Plugin/pluginFolder.h"

using testing::EndsWith;
using zePlugin::Plugin;
using zePlugin::PluginLoader;
using Held = ze::Reference<Plugin>;
using HeldProxy = ze::Reference<zePlugin::PluginProxy>;

namespace {

/// Why a load failed; "loaded" if it did not.
std::string failure(const std::string& path) {
    PluginLoader loader;
    return loader.load(path.c_str()) ? "loaded" : narrow(loader.getError());
}

HeldProxy loadProxy(const std::string& path) {
    return PluginLoader().loadProxy(zeString::IString(path.c_str(), zeString::EncodingUTF8));
}

/// The function of this name and type in a plug-in.
template<class Function>
Function* symbol(const Held& plugin, const char* name) {
    return reinterpret_cast<Function*>(plugin->getSymbol(name));
}

Exporter* find(const wchar_t* name) {
    return dynamic_cast<Exporter*>(manager().getService(L"exporter", name));
}

void remove(const wchar_t* name) {
    manager().removeService(find(name));
}

} // namespace

TEST(Plugin, SaysWhyAFileIsNoPlugin) {
    const PluginFolder folder;
    const TempFolder open; // to all, unlike, perhaps, the other
    chmod(open.path().c_str(), 0755);
    mkfifo(folder.path("fifo.so").c_str(), 0600); // would wait for a writer
    const std::string secret = open.write("secret.so", ""),
                      refused = "Plugin: could not load plugin: ";
    const std::pair<std::string, std::string> cases[] = {
        {folder.path("none.so"), ""},
        {"", ""},
        {folder.write("empty.so", ""), folder.path("empty.so") + ": file too short"},
        {folder.write("text.so", std::string(64, 'x')),
         folder.path("text.so") + ": invalid ELF header"},
        {folder.path(), folder.path() + ": cannot read file data: Is a directory"},
        {folder.path("fifo.so"), refused + folder.path("fifo.so") + "\n"},
        {"/dev/null", refused + "/dev/null\n"},
    };
    for (const auto& [path, text] : cases)
        EXPECT_EQ(failure(path), text) << path;
    const std::string denied = secret + ": cannot open shared object file: Permission denied";
    chmod(secret.c_str(), 0);
    EXPECT_EQ(asOrdinaryUser([&] { return failure(secret) == denied; }), 1);
}

TEST(Plugin, IsRefusedIfItWasCutOffAnywhere) {
    const PluginFolder folder;
    folder.add("whole.so");
    folder.add("bare.so", BARE);
    const std::string whole = folder.read("whole.so");
    int refusals = 0;
    for (std::size_t size = 0; size < whole.size(); size += whole.size() / 150)
        refusals += failure(folder.write("cut" + std::to_string(size) + ".so",
                                         whole.substr(0, size))) != "loaded";
    EXPECT_GT(refusals, 20); // of the rest, nothing that matters was lost
    // A segment without content may lie behind the end.
    std::string bare = folder.read("bare.so");
    void* const headers = &bare[sizeof(Elf64_Ehdr)];
    auto* segment = static_cast<Elf64_Phdr*>(headers);
    while (segment->p_type != PT_GNU_EH_FRAME) // not needed, and behind those to be mapped
        ++segment;
    *segment = {PT_LOAD, PF_R | PF_W, 1 << 24, 1 << 24, 0, 0, 16, 4096};
    EXPECT_EQ(failure(folder.write("empty.so", bare)), "loaded");
}

TEST(Plugin, KeepsTheTextOfAFailedLookupAfterASuccess) {
    const PluginFolder folder;
    const std::string path = folder.add("bare.so", BARE);
    Plugin plugin(path.c_str());
    EXPECT_TRUE(!plugin.getSymbol("text") && plugin.getError().isEmpty()) << "not loaded";
    EXPECT_TRUE(plugin.load());
    EXPECT_EQ(narrow(plugin.getError()), path + ": undefined symbol: initializePlugin");
}

TEST(Plugin, RunsItsFunctionsAroundItsLifeAndThrows) {
    const PluginFolder folder;
    const std::string path = folder.add("a.so"), kept = folder.add("b.so");
    PluginLoader loader;
    Held plugin = loader.load(path.c_str());
    EXPECT_THROW(symbol<void()>(plugin, "fail")(), Refusal); // the libraries share its name alone
    EXPECT_THROW(symbol<void()>(plugin, "fail")(), zeUtil::Error);
    symbol<void(Plugin*)>(plugin, "listen")(plugin.get()); // its function goes before its code
    plugin = nullptr;
    EXPECT_THAT(happened(), ElementsAre("a.so initialized", "a.so is unloaded",
                                        "a.so uninitialized", "a.so gone"));
    plugin = loader.load(path.c_str());
    EXPECT_TRUE(plugin->load()); // opened twice, closed once
    plugin = loader.load(kept.c_str());
    plugin->finallyUnload(false);
    plugin = nullptr;
    EXPECT_THAT(happened(), ElementsAre("a.so initialized", "a.so initialized", "b.so initialized",
                                        "a.so uninitialized"));
    EXPECT_TRUE(isMapped(path) && isMapped(kept));
}

TEST(PluginProxy, SaysOnceWhyTheRealPluginCannotBeLoaded) {
    const PluginFolder folder;
    const std::string bare = folder.add("serviceDecl_bare.so", BARE);
    const std::array<std::string, 3> cases[] = {
        {folder.add("serviceDecl_none.so"),
         "The proxy plugin does not exist: " + folder.path("none.so"), ""},
        {folder.add("serviceDecl_empty.so"), folder.write("empty.so", "") + ": file too short", ""},
        {bare, folder.path() + ": cannot read file data: Is a directory", // the name is empty
         bare + ": undefined symbol: getPluginProxyName"},
    };
    for (const auto& [path, text, lookup] : cases) {
        const HeldProxy proxy = loadProxy(path);
        EXPECT_FALSE(proxy->getMainPlugin());
        EXPECT_EQ(narrow(proxy->getError()), text);
        EXPECT_FALSE(proxy->getMainPlugin()); // not tried again, and the text is gone
        EXPECT_EQ(narrow(proxy->getError()), lookup);
    }
}

TEST(PluginProxy, FindsTheRealPluginBesideItWhateverTheLocale) { // here "C"
    const PluginFolder folder;
    folder.add("gr\xC3\xBCn/text.v2.so");
    const HeldProxy proxy = loadProxy(folder.add("gr\xC3\xBCn/serviceDecl_text.v2.so"));
    ASSERT_TRUE(proxy->getMainPlugin()) << narrow(proxy->getError());
    EXPECT_EQ(proxy->getMainPlugin()->getName(), L"text.v2");
    EXPECT_EQ(narrow(proxy->getMainPlugin()->getFilename()), folder.path("gr?n/text.v2.so"));
}

TEST(PluginProxy, IsClosedByALibraryThatIsBeingClosed) {
    const PluginFolder folder;
    Held keeper = PluginLoader().load(folder.add("keeper.so").c_str());
    loadProxy(folder.add("serviceDecl_kept.so"))->installServices();
    symbol<void(Exporter*)>(keeper, "keep")(find(L"kept")); // in a static object
    remove(L"kept");
    happened();
    keeper = nullptr;
    EXPECT_THAT(happened(), ElementsAre("keeper.so uninitialized", "kept destroyed",
                                        "serviceDecl_kept.so uninitialized", "keeper.so gone",
                                        "serviceDecl_kept.so gone"));
}

TEST(PluginProxy, ListsItsServicesAndOutlivesThemInEveryOrder) {
    const PluginFolder folder;
    const std::string proxyPath = folder.add("serviceDecl_a+b.so"), realPath = folder.add("a+b.so");
    HeldProxy proxy;
    Held real;
    ze::Reference<Exporter> a;
    const std::function<void()> releases[] = {[&] { remove(L"a"); }, [&] { remove(L"b"); },
                                              [&] { zePlugin::Service::destroyReference(a); },
                                              [&] { proxy = nullptr; }, [&] { real = nullptr; }};
    int order[] = {0, 1, 2, 3, 4}, orders = 0;
    do {
        proxy = loadProxy(proxyPath);
        EXPECT_TRUE(proxy->installServices() && proxy->installServices()); // installs once
        proxy->destroyedService(nullptr);                                  // not in the list
        a = find(L"a");
        EXPECT_EQ(a->run(), "a+b.so"); // opens the real one
        real = proxy->getMainPlugin();
        happened();
        for (const int next : order) {
            releases[next]();
            const bool aLives = a || find(L"a"), bLives = find(L"b"),
                       held = proxy || aLives || bLives;
            ASSERT_EQ(isMapped(proxyPath), held);
            ASSERT_EQ(isMapped(realPath), held || real);
            ASSERT_TRUE(!a || a->run() == "a+b.so");
            if (proxy) {
                ASSERT_EQ(proxy->getNumServices(), aLives + bLives);
                ASSERT_EQ(proxy->findService(find(L"b")), bLives ? aLives : -1);
            }
        }
        Lines lines = happened();
        ASSERT_EQ(lines.size(), 6u);
        if (order[4] == 4) // else the proxy alone holds the real one, which goes before it
            std::rotate(&lines[2], &lines[4], lines.data() + 6);
        ASSERT_THAT(lines,
                    ElementsAre(EndsWith("destroyed"), EndsWith("destroyed"),
                                "a+b.so uninitialized", "a+b.so gone",
                                "serviceDecl_a+b.so uninitialized", "serviceDecl_a+b.so gone"));
        ++orders;
    } while (std::next_permutation(std::begin(order), std::end(order)));
    std::printf("orders tried: %d\n", orders);
}
