// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPlugin.h"

#include <sys/stat.h>

#include <cstdio>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Utility/zeUtilError.h"
#include "Support/OrdinaryUser.h"

#include "Plugin/pluginFolder.h"

using testing::ElementsAre;
using zePlugin::Plugin;
using zePlugin::PluginLoader;
using Held = ze::Reference<Plugin>;

namespace {

/// Why a load failed; "loaded" if it did not.
std::string failure(const std::string& path) {
    PluginLoader loader;
    return loader.load(path.c_str()) ? "loaded" : narrow(loader.getError());
}

std::string refused(const std::string& path) {
    return "Plugin: could not load plugin: " + path + "\n";
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
        EXPECT_TRUE(text == "loaded" || text == refused(path) ||
                    text == path + ": file too short" || text == path + ": cannot read file data")
            << text;
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
