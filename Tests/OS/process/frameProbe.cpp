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
#include "Base/OS/zeOSFileFactory.h"
#include "Base/OS/zeOSSysInfo.h"

using zeOS::AppMain;
using zeOS::sysInfo;
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

std::string text(const IString& text) {
    return text.asUTF8();
}

std::string text(const char* text) {
    return text ? text : "(null)";
}

std::string text(long number) {
    return std::to_string(number);
}

std::string text(const std::vector<IString>& texts) {
    std::string result;
    for (const IString& one : texts)
        result += (result.empty() ? "" : "|") + text(one);
    return result;
}

std::string arguments() {
    std::vector<IString> given{L"before"};
    app().getArgs(given);
    return text(given);
}

const bool wasPreMain = app().preMain() && arguments().empty();

std::string buildRoot() {
    IString root;
    const bool known = app().getBuildRootDirectory(root);
    return known == !root.isEmpty() ? text(root) : "contradiction";
}

std::string plugins() {
    std::vector<IString> directories{L"kept"};
    app().getPluginDirectories(directories);
    app().getPluginDirectories(directories); // adds nothing twice
    return text(directories);
}

std::string swapSpace() {
    unsigned long total = 1;
    unsigned long avail = 1;
    sysInfo().getSwapInfo(&total, &avail);
    sysInfo().getSwapInfo(nullptr, nullptr);
    const bool agrees =
        total == sysInfo().totalVirtualMemory() && avail == sysInfo().availVirtualMemory();
    return agrees ? std::to_string(total) + " " + std::to_string(avail) : "contradiction";
}

/// Asks everything in several threads at once.
const char* race() {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            plugins();
            app().searchPathFor("sh");
            buildRoot();
            if (app().getAppName().isEmpty() || sysInfo().numPhysicalCPUs() < 1 ||
                !sysInfo().hostname() || sysInfo().totalPhysicalMemory() == 0 ||
                app().getElapsed() < 0)
                std::puts("wrong answer");
            sysInfo().username();
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

const char* transport() {
    static AskingTransports transports;
    zeOS::FileFactory::getFileFactory()->registerTransport(&transports);
    alarm(60); // a lock that is held would block for ever
    return "registered";
}

const std::map<std::string, std::function<std::string()>> questions = {
    {"args", arguments},
    {"name", [] { return text(app().getAppName()); }},
    {"location", [] { return text(app().getAppLocation()); }},
    {"base", [] { return text(app().getBaseLocation()); }},
    {"runtime", [] { return text(app().getRuntimeDirectory("ignored")); }},
    {"root", buildRoot},
    {"plugins", plugins},
    {"sh", [] { return text(app().searchPathFor("sh")); }},
    {"add", [] { return text(app().addDirectoryToPath("added")); }},
    {"remove", [] { return text(app().removeDirectoryFromPath("added")); }},
    {"chdir", [] { return text(chdir("elsewhere")); }},
    {"preMain", [] { return text(wasPreMain) + text(app().preMain()); }},
    {"cpus", [] { return text(sysInfo().numCPUs()); }},
    {"physical", [] { return text(sysInfo().numPhysicalCPUs()); }},
    {"swap", swapSpace},
    {"host", [] { return text(sysInfo().hostname()); }},
    {"user", [] { return text(sysInfo().username()); }},
    {"rename", [] { return text(setenv("USER", "other", 1)); }},
    {"race", race},
    {"transport", transport},
};

} // namespace

extern "C" {

FILE* fopen(const char* path, const char* mode) {
    const char* const root = std::getenv("PROBE_ROOT");
    const bool moved = root && std::strncmp(path, "/proc/", 6) == 0;
    return genuine(&fopen, "fopen")(((moved ? root : "") + std::string(path)).c_str(), mode);
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
