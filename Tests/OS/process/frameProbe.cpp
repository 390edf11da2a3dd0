// SPDX-License-Identifier: MIT

// Answers questions about itself and the machine, a line for each argument, so that tests can ask
// in a process of its own, with arguments, environment and files that suit them:
// PROBE_ROOT   where files of /proc lie instead
// PROBE_FAILS  names of system calls that fail

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/OS/zeOSDebugChannel.h"
#include "Base/OS/zeOSFileFactory.h"
#include "Base/OS/zeOSSysInfo.h"

using zeOS::AppMain;
using zeString::IString;

namespace {

AppMain& app() {
    return AppMain::getInstance();
}

bool fails(const char* call) {
    const char* const calls = std::getenv("PROBE_FAILS");
    return calls && std::strstr(calls, call);
}

/// The function of the C library behind ours.
template<class Function>
Function* genuine(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string utf8(const IString& text) {
    return text.asUTF8();
}

std::string joined(const std::vector<IString>& texts) {
    std::string result;
    for (const IString& text : texts)
        result += (result.empty() ? "" : "|") + utf8(text);
    return result;
}

std::string arguments() {
    std::vector<IString> given{L"before"};
    app().getArgs(given);
    return joined(given);
}

const bool wasPreMain = app().preMain() && arguments().empty();

std::string buildRoot() {
    IString root;
    const bool known = app().getBuildRootDirectory(root);
    return known == !root.isEmpty() ? utf8(root) : "contradiction";
}

std::string plugins() {
    std::vector<IString> directories{L"kept"};
    app().getPluginDirectories(directories);
    app().getPluginDirectories(directories); // adds nothing twice
    return joined(directories);
}

std::string swapSpace() {
    unsigned long total = 1;
    unsigned long avail = 1;
    zeOS::sysInfo().getSwapInfo(&total, &avail);
    zeOS::sysInfo().getSwapInfo(nullptr, nullptr);
    const bool agrees = total == zeOS::sysInfo().totalVirtualMemory() &&
                        avail == zeOS::sysInfo().availVirtualMemory();
    return agrees ? std::to_string(total) + " " + std::to_string(avail) : "contradiction";
}

std::string user() {
    const char* const name = zeOS::sysInfo().username();
    return name ? name : "(null)";
}

/// A stream of its own in each thread; the switch of all channels is anybody's.
void printMuch() {
    zeOS::AppOutputStream stream(false);
    stream.open("/dev/null", false);
    stream.setIndentLevel(2);
    const zeOS::DebugChannel channel;
    for (int i = 0; i < 1000; ++i) {
        stream("line %d\n", i);
        zeOS::DebugChannel::enableEveryChannel(i % 2 == 0);
        channel.enabled();
    }
}

/// Asks everything in several threads at once.
std::string race() {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            const zeOS::SysInfo& info = zeOS::sysInfo();
            std::vector<IString> directories;
            app().getPluginDirectories(directories);
            app().searchPathFor("sh");
            IString root;
            app().getBuildRootDirectory(root);
            if (app().getAppName().isEmpty() || info.numPhysicalCPUs() < 1 || !info.hostname() ||
                info.totalPhysicalMemory() == 0 || app().getElapsed() < 0)
                std::puts("wrong answer");
            info.username();
            printMuch();
        });
    for (std::thread& thread : threads)
        thread.join();
    return "done";
}

/// Storage of an application whose other thread needs to know where the library lies.
class AskingTransports : public zeOS::FileTransportFactory {
    zeOS::FileTransport* create(const IString&) override {
        std::thread([] { app().getBaseLocation(); }).join();
        return nullptr;
    }
};

std::string transport() {
    static AskingTransports transports;
    zeOS::FileFactory::getFileFactory()->registerTransport(&transports);
    alarm(60); // a lock that is held would block for ever
    return "registered";
}

const std::map<std::string, std::function<std::string()>> questions = {
    {"args", arguments},
    {"name", [] { return utf8(app().getAppName()); }},
    {"location", [] { return utf8(app().getAppLocation()); }},
    {"base", [] { return utf8(app().getBaseLocation()); }},
    {"runtime", [] { return utf8(app().getRuntimeDirectory("ignored")); }},
    {"root", buildRoot},
    {"plugins", plugins},
    {"sh", [] { return utf8(app().searchPathFor("sh")); }},
    {"add", [] { return std::to_string(app().addDirectoryToPath("added")); }},
    {"remove", [] { return std::to_string(app().removeDirectoryFromPath("added")); }},
    {"chdir", [] { return std::to_string(chdir("elsewhere")); }},
    {"preMain", [] { return std::to_string(wasPreMain) + std::to_string(app().preMain()); }},
    {"cpus", [] { return std::to_string(zeOS::sysInfo().numCPUs()); }},
    {"physical", [] { return std::to_string(zeOS::sysInfo().numPhysicalCPUs()); }},
    {"swap", swapSpace},
    {"memory", [] { return std::to_string(zeOS::sysInfo().totalPhysicalMemory()); }},
    {"free", [] { return std::to_string(zeOS::sysInfo().availPhysicalMemory()); }},
    {"host", [] { return std::string(zeOS::sysInfo().hostname()); }},
    {"user", user},
    {"rename", [] { return std::to_string(setenv("USER", "other", 1)); }},
    {"race", race},
    {"transport", transport},
};

} // namespace

extern "C" {

FILE* fopen(const char* path, const char* mode) {
    const char* const root = std::getenv("PROBE_ROOT");
    const bool isSystemFile = std::strncmp(path, "/proc/", 6) == 0;
    if (isSystemFile && fails("fopen"))
        return nullptr;
    const std::string name = (root && isSystemFile ? root : "") + std::string(path);
    return genuine(&fopen, "fopen")(name.c_str(), mode);
}

int gethostname(char* name, size_t size) noexcept {
    if (!fails("gethostname"))
        return genuine(&gethostname, "gethostname")(name, size);
    std::memset(name, 'x', size); // as it is after a name that was too long
    return fails("gethostname-late") ? 0 : -1;
}

int dladdr(const void* address, Dl_info* info) noexcept {
    return fails("dladdr") ? 0 : genuine(&dladdr, "dladdr")(address, info);
}

} // extern "C"

int main(int argc, char** argv, char** envp) {
    if (argc > 1 && std::strcmp(argv[1], "wide") == 0) {
        static const wchar_t* const wide[] = {L"w\u00EFde/tool", L"\u20AC", nullptr};
        app().initialize(2, wide, static_cast<wchar_t const* const*>(nullptr));
    } else {
        app().initialize(argc, argv, envp);
    }
    for (int i = 1; i < argc; ++i)
        if (const auto found = questions.find(argv[i]); found != questions.end())
            std::printf("%s: %s\n", argv[i], found->second().c_str());
    return 0;
}
