// SPDX-License-Identifier: MIT

// lookup: a service is found by type and name, among so many of its type. scan: the declarations of
// a folder are found and loaded, and the service of each is registered; by the clock of the wall,
// for one declaration.

#include "Base/OS/zeOSAppMain.h"
#include "Base/Plugin/zePluginService.h"
#include "Base/Plugin/zePluginServiceManager.h"

#include "Plugin/pluginsWorkload.h"

namespace {

using zePlugin::ServiceManager;
using zeString::IString;

struct Named : zePlugin::Service {
    Named(const IString& typeName, const IString& name) : Service(name, false), type(typeName) {}
    IString getType() const override { return type; }
    IString type;
};

void lookup(State& s, size_t count) {
    ServiceManager& manager = ServiceManager::getInstance();
    const IString type(std::to_string(count).c_str());
    std::vector<IString> names;
    for (const std::string& name : bench::serviceNames(count)) {
        names.emplace_back(name.c_str());
        if (!manager.getService(type, names.back()))
            (new Named(type, names.back()))->registerService();
    }
    bench::shuffle(names, 7);
    size_t found = 0;
    for (auto _ : s)
        for (const IString& name : names)
            found += manager.getService(type, name) != nullptr;
    bench::require(found == count * size_t(s.iterations()), "each service");
    bench::items(s, count);
}

bool scan() {
    static const std::string app = bench::program() + "/app";
    static const char* const arguments[] = {app.c_str(), nullptr};
    zeOS::AppMain::getInstance().initialize(1, arguments, arguments + 1);
    ServiceManager& manager = ServiceManager::getInstance();
    manager.registerServices(L"");
    return manager.getNumServices(L"declared") == bench::declarationCount;
}

const bool registered = [] {
    for (const size_t count : {10, 100, 1000, 10000})
        bench::reg("lookup/ours/" + std::to_string(count), [=](State& s) { lookup(s, count); });
    bench::regScan("ours", scan);
    return true;
}();

} // namespace
