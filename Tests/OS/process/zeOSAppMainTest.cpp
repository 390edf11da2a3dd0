// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSAppMain.h"

#include <gtest/gtest.h>

#include "OS/process/Probe.h"

namespace {

class AppMainTest : public Probe {
protected:
    /// The library as a program finds it in `place`, which is in the folder.
    std::string libraryIn(const std::string& place) const {
        makeFolder(place);
        std::filesystem::create_symlink(ZEBASE_LIBRARY,
                                        folder.path(place + "/" + ZEBASE_LIBRARY_NAME));
        return "LD_LIBRARY_PATH=" + folder.path(place);
    }
};

} // namespace

TEST_F(AppMainTest, KnowsItsArgumentsOnceItIsInitialized) {
    EXPECT_EQ(ask("tool", {"preMain", "args", "a b", ""}),
              "preMain: 10\nargs: tool|preMain|args|a b|\n");
    EXPECT_EQ(ask("tool", {"args", "\xC3\xBC"}), "args: tool|args|??\n"); // the "C" locale
    EXPECT_EQ(ask("tool", {"wide", "args", "name"}), "args: w\xC3\xAF"
                                                     "de/tool|\xE2\x82\xAC\n"
                                                     "name: tool\n");
}

TEST_F(AppMainTest, FindsItselfByTheNameItWasStartedBy) {
    for (const char* place : {"bin", "sub/dir", "other", "elsewhere"})
        makeFolder(place);
    for (const char* file : {"here", "sub/dir/tool", "bin/tool", "bin/late"})
        folder.write(file, "");
    const std::string here = folder.path();
    const std::string path = "PATH=/nonexistent::" + folder.path("other") + ":bin:" + here;
    struct {
        std::string name;
        const char* appName;
        std::string location;
    } const cases[] = {
        {"./here", "here", "."},
        {"sub//dir/tool", "tool", "sub/dir"},
        {here + "/bin/tool", "tool", here + "/bin"},
        {here + "/no/tool", "tool", ""}, // an absolute name is not searched for
        {"tool", "tool", "bin"},
        {"no/such/tool", "tool", "bin"}, // searched for by its base name
        {"./late", "late", "bin"},
        {"here", "here", here},
        {"unknown", "unknown", ""},
        {"", "", ""},
        {"/", "", ""},
    };
    for (const auto& c : cases) {
        const std::string answer =
            "location: " + c.location + "\nname: " + c.appName + "\nlocation: " + c.location + "\n";
        EXPECT_EQ(ask(c.name, {"location", "name", "location"}, {path}), answer) << c.name;
    }
    EXPECT_EQ(ask("tool", {"location"}), "location: \n"); // without PATH
    // It stays what it was, also where it is relative.
    EXPECT_EQ(ask("./here", {"location", "chdir", "location"}),
              "location: .\nchdir: 0\nlocation: .\n");
    EXPECT_EQ(ask("./here", {"chdir", "location"}), "chdir: 0\nlocation: \n");
}

TEST_F(AppMainTest, FindsTheLibraryAndWhatLiesAroundIt) {
    const std::string library = libraryIn("root/run/lib");
    const std::string root = folder.path("root");
    EXPECT_EQ(ask("tool", {"base", "runtime", "root", "base"}, {library}),
              "base: " + root + "/run/lib\nruntime: " + root + "/run\nroot: " + root +
                  "\nbase: " + root + "/run/lib\n");
    EXPECT_EQ(ask("tool", {"base", "runtime", "root"}, {library, "PROBE_FAILS=dladdr"}),
              "base: \nruntime: \nroot: \n");
}

TEST_F(AppMainTest, FindsDirectoriesOfPluginsThatExist) {
    const std::string library = libraryIn("root/run/lib");
    folder.write("tool", "");
    const auto found = [&](const std::vector<std::string>& environment) {
        return ask("./tool", {"plugins"}, environment);
    };
    EXPECT_EQ(found({library}), "plugins: kept\n");
    makeFolder("root/run/bin");
    folder.write("root/run/bin/plug-ins", "a file");
    EXPECT_EQ(found({library}), "plugins: kept\n");
    std::filesystem::remove(folder.path("root/run/bin/plug-ins"));
    for (const char* place : {"root/run/lib", ".", "root/run/bin", "root/run", "root/bin"})
        makeFolder(std::string(place) + "/plug-ins");
    const std::string root = folder.path("root");
    EXPECT_EQ(found({library}), "plugins: kept|" + root + "/run/lib/plug-ins|./plug-ins|" + root +
                                    "/run/bin/plug-ins|" + root + "/run/plug-ins|" + root +
                                    "/bin/plug-ins\n");
    // Without the library's place, relative names remain; bin/plug-ins is not there.
    EXPECT_EQ(found({library, "PROBE_FAILS=dladdr"}), "plugins: kept|plug-ins|./plug-ins\n");
}

TEST_F(AppMainTest, SearchesThePathItStartedWith) {
    makeFolder("added");
    folder.write("added/sh", "");
    EXPECT_EQ(ask("tool", {"sh", "add", "sh", "remove", "remove", "sh"}),
              "sh: \nadd: 1\nsh: added\nremove: 1\nremove: 0\nsh: \n");
    EXPECT_EQ(ask("tool", {"add", "sh"}, {"PATH=/nowhere:/bin"}), "add: 1\nsh: /bin\n");
}

TEST_F(AppMainTest, AnswersSeveralThreadsAtOnce) {
    EXPECT_EQ(ask("tool", {"race"}, {"PATH=/bin", "USER=somebody"}), "race: done\n");
}

TEST_F(AppMainTest, HoldsNoLockWhileItLooksForFiles) {
    makeFolder("added");
    folder.write("tool", "");
    EXPECT_EQ(ask("./tool", {"transport", "sh", "location", "plugins", "add"}, {"PATH=/bin"}),
              "transport: registered\nsh: /bin\nlocation: .\nplugins: kept\nadd: 1\n");
}
