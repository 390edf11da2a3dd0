// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPlugin.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <numeric>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Utility/zeUtilError.h"

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
    std::filesystem::create_directory(folder.path("folder.so"));
    std::filesystem::create_symlink("nowhere", folder.path("dangling.so"));
    const struct {
        std::string path, text;
    } cases[] = {
        {folder.path("missing.so"), ""},
        {folder.path("dangling.so"), ""},
        {"", ""},
        {folder.write("empty.so", ""), folder.path("empty.so") + ": file too short"},
        {folder.write("text.so", std::string(64, 'x')),
         folder.path("text.so") + ": invalid ELF header"},
        {folder.path("folder.so"),
         folder.path("folder.so") + ": cannot read file data: Is a directory"},
        {folder.path("fifo.so"), refused(folder.path("fifo.so"))},
        {"/dev/null", refused("/dev/null")},
        {folder.add("plain", "gut.so"), "loaded"},
    };
    for (const auto& [path, text] : cases)
        EXPECT_EQ(failure(path), text) << path;
}

TEST(Plugin, IsNotLookedForInTheCurrentDirectoryWithoutASlash) {
    const PluginFolder folder;
    folder.add("plain", "zePluginHere.so");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(failure("./zePluginHere.so"), "loaded");
    EXPECT_EQ(failure("zePluginHere.so"),
              "zePluginHere.so: cannot open shared object file: No such file or directory");
    std::filesystem::current_path(before);
}

TEST(Plugin, RefusesALibraryThatWasCutOffAnywhere) {
    const PluginFolder folder;
    folder.add("plain", "whole.so");
    const std::string whole = folder.read("whole.so");
    int refusals = 0, loads = 0;
    for (std::size_t size = 0; size < whole.size(); size += whole.size() / 150) {
        const std::string path =
            folder.write("cut" + std::to_string(size) + ".so", whole.substr(0, size));
        const std::string text = failure(path);
        (text == "loaded" ? loads : refusals)++;
        EXPECT_TRUE(text == "loaded" || text == refused(path) ||
                    text == path + ": file too short" || text == path + ": cannot read file data")
            << text;
    }
    std::printf("cut libraries: %d refused, %d without a loss that matters\n", refusals, loads);
    EXPECT_GT(refusals, 20);
}

TEST(Plugin, KeepsTheTextOfAFailedLookupAfterASuccess) {
    const PluginFolder folder;
    const std::string path = folder.add("bare", "bare.so");
    Plugin plugin(path.c_str());
    EXPECT_EQ(plugin.getSymbol("value"), nullptr);
    EXPECT_EQ(plugin.getError(), L"") << "not loaded";
    EXPECT_TRUE(plugin.load());
    EXPECT_EQ(narrow(plugin.getError()), path + ": undefined symbol: initializePlugin");
    EXPECT_EQ(*static_cast<int*>(plugin.getSymbol("value")), 7);
    EXPECT_EQ(plugin.getError(), L"");
    EXPECT_EQ(plugin.getSymbol("nothing"), nullptr);
    EXPECT_EQ(narrow(plugin.getError()), path + ": undefined symbol: nothing");
}

TEST(Plugin, RunsItsFunctionsAroundItsLife) {
    const PluginFolder folder;
    const std::string path = folder.add("plain", "a.so");
    PluginLoader loader;
    Held plugin = loader.load(path.c_str());
    EXPECT_THAT(happened(), ElementsAre("a.so mapped", "a.so initialized"));
    symbol<void(Plugin*)>(*plugin,
                          "listen")(plugin.get()); // its function object goes before its code
    plugin = nullptr;
    EXPECT_THAT(happened(), ElementsAre("a.so is unloaded", "a.so uninitialized", "a.so gone"));

    plugin = loader.load(path.c_str());
    EXPECT_TRUE(plugin->load()); // opened twice, closed once
    plugin = nullptr;
    EXPECT_THAT(happened(), ElementsAre("a.so mapped", "a.so initialized", "a.so initialized",
                                        "a.so uninitialized"));
    EXPECT_TRUE(isMapped(path));

    const std::string kept = folder.add("plain", "b.so");
    plugin = loader.load(kept.c_str());
    plugin->finallyUnload(false);
    plugin = nullptr;
    EXPECT_THAT(happened(), ElementsAre("b.so mapped", "b.so initialized"));
    EXPECT_TRUE(isMapped(kept));
}

TEST(Plugin, NamesItselfInTheLocalesEncoding) {
    const zeString::IString path(L"/gr\u00FCn/\u00FC.v2.so"); // the tests run in the "C" locale
    Plugin plugin(path);
    EXPECT_EQ(plugin.getName(), L"?.v2");
    EXPECT_EQ(plugin.getFilename(), L"/gr?n/?.v2.so");
}

TEST(Plugin, IsLoadedAndUnloadedInEveryOrder) {
    const PluginFolder folder;
    constexpr std::size_t count = 4;
    Lines paths;
    for (const char* name : {"a.so", "b.so", "c.so", "d.so"})
        paths.push_back(folder.add("plain", name));
    int orders = 0;
    std::vector<std::size_t> loads(count), unloads(count);
    std::iota(loads.begin(), loads.end(), 0);
    do {
        std::iota(unloads.begin(), unloads.end(), 0);
        do {
            Held plugins[count];
            for (const std::size_t i : loads)
                plugins[i] = PluginLoader().load(paths[i].c_str());
            for (const std::size_t i : unloads) {
                ASSERT_EQ(symbol<const char*()>(*plugins[i], "text")(),
                          std::filesystem::path(paths[i]).filename().string());
                plugins[i] = nullptr;
                for (std::size_t other = 0; other < count; ++other)
                    ASSERT_EQ(isMapped(paths[other]), static_cast<bool>(plugins[other]));
            }
            ++orders;
        } while (std::next_permutation(unloads.begin(), unloads.end()));
    } while (std::next_permutation(loads.begin(), loads.end()));
    std::printf("orders tried: %d\n", orders);
    EXPECT_EQ(orders, 24 * 24);
}

TEST(Plugin, ThrowsAndIsCastToAcrossTheBoundary) {
    const PluginFolder folder;
    const Held plugin = PluginLoader().load(folder.add("plain", "a.so").c_str());
    const auto fail = symbol<void(int)>(*plugin, "fail");
    EXPECT_THROW(fail(0), zeUtil::Error);
    EXPECT_THROW(fail(1), std::logic_error); // by its base
    EXPECT_THROW(fail(2), ExportError);
    EXPECT_THROW(fail(3), ShapeError); // by its name: the two libraries share no type information
    const std::unique_ptr<Shape> shape(symbol<Shape*()>(*plugin, "makeShape")());
    const auto* circle = dynamic_cast<Circle*>(shape.get());
    ASSERT_TRUE(circle);
    EXPECT_EQ(circle->radius, 5);
}
