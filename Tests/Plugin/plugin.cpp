// SPDX-License-Identifier: MIT
// A plug-in for all tests, which copy it under many names: "serviceDecl_a+b.so" is the proxy of
// "a+b.so", and offers the exporters "a" and "b"; any other is a real one. It notes what happens.

#include <dlfcn.h>

#include <cstring>
#include <sstream>

#include "Base/Plugin/zePluginServiceManager.h"

#include "Plugin/exporter.h"

namespace {

const char* ownName() {
    static const char here = 0;
    Dl_info info{};
    dladdr(&here, &info);
    return std::strrchr(info.dli_fname, '/') + 1;
}

void note(const char* what) {
    journal().push_back(ownName() + std::string(what));
}

struct Static {
    ~Static() {
        zePlugin::Service::destroyReference(kept);
        note(" gone");
    }
    ze::Reference<Exporter> kept;
} object;

class Declared : public Exporter {
public:
    using Exporter::Exporter;
    ~Declared() override {
        const auto& manager = zePlugin::ServiceManager::getInstance(); // at exit, too
        const bool listed = manager.getService(L"exporter", getName()) == this;
        journal().push_back(getName().asUTF8() + std::string(listed ? " listed" : " destroyed"));
    }
    std::string run() override {
        void* text = getPluginProxy()->getMainPlugin()->getSymbol("text");
        return reinterpret_cast<const char* (*)()>(text)();
    }
};

} // namespace

extern "C" {

ZEBASE_API void initializePlugin() {
    note(" initialized");
}

ZEBASE_API void uninitializePlugin() {
    note(" uninitialized");
}

ZEBASE_API const char* getPluginProxyName() {
    return std::strchr(ownName(), '_') + 1;
}

ZEBASE_API void installPluginServices(zePlugin::PluginProxy* proxy) {
    const char* realName = std::strchr(ownName(), '_') + 1;
    std::istringstream names(std::string(realName, std::strcspn(realName, ".")));
    for (std::string name; std::getline(names, name, '+');) {
        const ze::Reference<Exporter> service(new Declared(name.c_str(), proxy));
        service->registerService(); // a refused one ends here
    }
}

ZEBASE_API const char* text() {
    return ownName();
}

ZEBASE_API void keep(Exporter* service) {
    object.kept = service;
}

/// Leaves a function of this library in a signal of the program's.
ZEBASE_API void listen(zePlugin::Plugin* plugin) {
    plugin->unloadSignal.connectOwned([](zePlugin::Plugin*) { note(" is unloaded"); });
}

ZEBASE_API void fail() {
    throw Refusal();
}

} // extern "C"
