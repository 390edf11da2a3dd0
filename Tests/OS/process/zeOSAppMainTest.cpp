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
    ask("tool", {"preMain", "args", "a b", ""}, "preMain: 10\nargs: tool|preMain|args|a b|\n");
    ask("tool", {"args", "\xC3\xBC"}, "args: tool|args|??\n"); // the "C" locale
    ask("tool", {"wide", "args", "name"},
        "args: w\xC3\xAF"
        "de/tool|\xE2\x82\xAC\nname: tool\n");
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
        const std::string location = "location: " + c.location + "\n";
        ask(c.name, {"location", "name", "location"},
            location + "name: " + c.appName + "\n" + location, {path});
    }
    ask("tool", {"location"}, "location: \n"); // without PATH
    // It stays what it was, also where it is relative.
    ask("./here", {"location", "chdir", "location"}, "location: .\nchdir: 0\nlocation: .\n");
    ask("./here", {"chdir", "location"}, "chdir: 0\nlocation: \n");
}

TEST_F(AppMainTest, FindsTheLibraryAndWhatLiesAroundIt) {
    const std::string library = libraryIn("root/run/lib");
    const std::string root = folder.path("root");
    const std::string base = "base: " + root + "/run/lib\n";
    ask("tool", {"base", "runtime", "root", "base"},
        base + "runtime: " + root + "/run\nroot: " + root + "\n" + base, {library});
    ask("tool", {"base", "runtime", "root"}, "base: \nruntime: \nroot: \n",
        {library, "PROBE_FAILS=dladdr"});
}

TEST_F(AppMainTest, FindsDirectoriesOfPluginsThatExist) {
    const std::string library = libraryIn("root/run/lib");
    folder.write("tool", "");
    makeFolder("root/run/bin");
    folder.write("root/run/bin/plug-ins", "a file");
    ask("./tool", {"plugins"}, "plugins: kept\n", {library});
    std::filesystem::remove(folder.path("root/run/bin/plug-ins"));
    std::string expected = "plugins: kept";
    for (const char* place : {"root/run/lib", ".", "root/run/bin", "root/run", "root/bin"}) {
        const std::string name = std::string(place) + "/plug-ins";
        makeFolder(name);
        expected += "|" + (*place == '.' ? name : folder.path(name));
    }
    ask("./tool", {"plugins"}, expected + "\n", {library});
    // Without the library's place, relative names remain; bin/plug-ins is not there.
    ask("./tool", {"plugins"}, "plugins: kept|plug-ins|./plug-ins\n",
        {library, "PROBE_FAILS=dladdr"});
}

TEST_F(AppMainTest, SearchesThePathItStartedWith) {
    makeFolder("added");
    folder.write("added/sh", "");
    ask("tool", {"sh", "add", "sh", "remove", "remove", "sh"},
        "sh: \nadd: 1\nsh: added\nremove: 1\nremove: 0\nsh: \n");
    ask("tool", {"add", "sh"}, "add: 1\nsh: /bin\n", {"PATH=/nowhere:/bin"});
}

TEST_F(AppMainTest, AnswersSeveralThreadsAtOnce) {
    ask("tool", {"race"}, "race: done\n", {"PATH=/bin", "USER=somebody"});
}

TEST_F(AppMainTest, HoldsNoLockWhileItLooksForFiles) {
    makeFolder("added");
    folder.write("tool", "");
    ask("./tool", {"transport", "sh", "location", "plugins", "add"},
        "transport: registered\nsh: /bin\nlocation: .\nplugins: kept\nadd: 1\n", {"PATH=/bin"});
}
