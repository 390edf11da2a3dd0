// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSAppMain.h"

#include <dlfcn.h>

#include <algorithm>
#include <cassert>
#include <mutex>

#include "Base/OS/zeOSEnvironment.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"

using zeString::IString;

namespace zeOS {
namespace {

/// Guards the filling of AppMain's caches and of its search path. Never held during a file query,
/// which may run code of the application.
std::mutex mutex;
using Lock = std::lock_guard<std::mutex>;

const IString& emptyText() {
    static const IString& text = *new IString; // as long as AppMain
    return text;
}

/// The text in `cache`, which is looked for while it is empty. What this returns never changes, so
/// that nobody needs a lock to read it.
template<class Find>
const IString& cached(IString& cache, Find find) {
    {
        const Lock lock(mutex);
        if (!cache.isEmpty())
            return cache;
    }
    const IString found = find();
    if (found.isEmpty())
        return emptyText();
    const Lock lock(mutex);
    if (cache.isEmpty())
        cache = found;
    return cache;
}

/// Not AppMain::location(): in a program that takes the address of an exported function, that
/// address can lie in the program.
void placeInLibrary() {}

IString findBaseLocation() {
    Dl_info info;
    if (::dladdr(reinterpret_cast<void*>(&placeInLibrary), &info) == 0)
        return IString();
    return Filename(IString(info.dli_fname)).dirname();
}

bool exists(const Filename& name) {
    FileStatus status;
    File::query(name, status);
    return status.exists();
}

void addIfDirectory(const IString& name, std::vector<IString>& directories) {
    FileStatus status;
    File::query(name, status);
    if (status.exists() && status.isDirectory() &&
        std::find(directories.begin(), directories.end(), name) == directories.end())
        directories.push_back(name);
}

} // namespace

/// Never destroyed: traces print the time also from destructors that run after everything else.
AppMain& AppMain::getInstance() {
    static AppMain& instance = *new AppMain;
    return instance;
}

AppMain::AppMain() {
    timer_.start();
}

void AppMain::initialize(int argc, char const* const* argv, char const* const* envp) {
    argc_ = argc;
    argv_ = argv;
    envp_ = envp;
}

void AppMain::initialize(int argc, wchar_t const* const* argv, wchar_t const* const* envp) {
    argc_ = argc;
    wargv_ = argv;
    wenvp_ = envp;
}

double AppMain::getElapsed() const {
    return timer_.check();
}

void AppMain::getArgs(std::vector<IString>& arguments) {
    arguments.clear();
    for (int i = 0; i < argc_; ++i)
        if (argv_)
            arguments.emplace_back(argv_[i]);
        else if (wargv_)
            arguments.emplace_back(wargv_[i]);
}

const IString& AppMain::getAppName() {
    return cached(appName_, [&] { return Filename(programName()).basename(); });
}

const IString& AppMain::getAppLocation() {
    return cached(appLocation_, [&] { return findAppLocation(); });
}

const IString& AppMain::getBaseLocation() {
    return cached(baseLocation_, findBaseLocation);
}

const IString& AppMain::getRuntimeDirectory(const char*) {
    return cached(runtimeDirectory_, [&] { return Filename(getBaseLocation()).dirname(); });
}

bool AppMain::getBuildRootDirectory(IString& out) {
    const IString root = Filename(getRuntimeDirectory(nullptr)).dirname();
    const Lock lock(mutex);
    if (!buildRootKnown_)
        buildRootDirectory_ = root;
    out = buildRootDirectory_;
    return !out.isEmpty();
}

void AppMain::getPluginDirectories(std::vector<IString>& directories) {
    const IString& base = getBaseLocation();
    const IString& app = getAppLocation();
    const IString& runtime = getRuntimeDirectory(nullptr);
    const IString parent = Filename(runtime).dirname();
    addIfDirectory(Filename::join(base, L"plug-ins"), directories);
    if (app != base)
        addIfDirectory(Filename::join(app, L"plug-ins"), directories);
    addIfDirectory(Filename::join(runtime, L"bin", L"plug-ins"), directories);
    addIfDirectory(Filename::join(runtime, L"plug-ins"), directories);
    addIfDirectory(Filename::join(parent, L"bin", L"plug-ins"), directories);
}

void AppMain::initializePath() {
    {
        const Lock lock(mutex);
        if (searchPath_.initialized())
            return;
    }
    IString path;
    GetEnv(L"PATH", path);
    SearchPath found;
    found.initialize(path);
    const Lock lock(mutex);
    if (!searchPath_.initialized())
        searchPath_ = found;
}

IString AppMain::searchPathFor(const IString& name) {
    initializePath();
    return searchPath_.findDirectory(name);
}

bool AppMain::addDirectoryToPath(const IString& dir) {
    initializePath();
    return searchPath_.addDirectoryToPath(dir);
}

bool AppMain::removeDirectoryFromPath(const IString& dir) {
    initializePath();
    return searchPath_.removeDirectoryFromPath(dir);
}

void AppMain::location() {}

IString AppMain::programName() const {
    assert(argv_ || wargv_); // initialize() comes first
    return argv_ ? IString(argv_[0]) : IString(wargv_[0]);
}

IString AppMain::findAppLocation() {
    const IString& name = getAppName();
    if (name.isEmpty())
        return IString();
    const Filename program(programName());
    if (program.isAbsolute())
        return exists(program) ? program.dirname() : IString();
    if (!program.dirname().isEmpty() && exists(program))
        return program.dirname();
    return searchPathFor(name);
}

} // namespace zeOS
