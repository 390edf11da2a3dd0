// SPDX-License-Identifier: MIT
// A plug-in for all tests, which copy it under many names: "serviceDecl_a+b.so" is the proxy of
// "a+b.so", and offers the exporters "a" and "b"; any other is a real one. It notes what happens.

#include <dlfcn.h>

#include <filesystem>
#include <sstream>

#include "Base/Plugin/zePluginServiceManager.h"
#include "Base/Utility/zeUtilError.h"

#include "Plugin/exporter.h"

namespace {

std::string ownName() {
    static const char here = 0;
    Dl_info info{};
    dladdr(&here, &info);
    return std::filesystem::path(info.dli_fname).filename().string();
}

struct Static {
    ~Static() {
        zePlugin::Service::destroyReference(kept);
        journal().push_back(name + " gone");
    }
    std::string name = ownName();
    std::string realName = name.substr(name.find('_') + 1);
    ze::Reference<Exporter> kept;
} object;

class Declared : public Exporter {
public:
    using Exporter::Exporter;
    ~Declared() override {
        const auto& manager = zePlugin::ServiceManager::getInstance(); // at exit, too
        const bool listed = manager.getService(L"exporter", getName()) == this;
        journal().push_back(getName().asUTF8() +
                            std::string(listed ? " is still listed" : " destroyed"));
    }
    std::string run() override {
        void* text = getPluginProxy()->getMainPlugin()->getSymbol("text");
        return reinterpret_cast<const char* (*)()>(text)();
    }
};

} // namespace

extern "C" {

ZEBASE_API void initializePlugin() {
    journal().push_back(object.name + " initialized");
}

ZEBASE_API void uninitializePlugin() {
    journal().push_back(ownName() + " uninitialized"); // at exit without the object
}

ZEBASE_API const char* getPluginProxyName() {
    return object.realName.c_str();
}

ZEBASE_API void installPluginServices(zePlugin::PluginProxy* proxy) {
    std::istringstream names(object.realName.substr(0, object.realName.find('.')));
    for (std::string name; std::getline(names, name, '+');)
        if (!name.empty()) {
            const ze::Reference<Exporter> service(new Declared(name.c_str(), proxy));
            service->registerService(); // a refused one ends here
        }
}

ZEBASE_API const char* text() {
    return object.name.c_str();
}

ZEBASE_API void keep(Exporter* service) {
    object.kept = service;
}

/// Leaves a function of this library in a signal of the program's.
ZEBASE_API void listen(zePlugin::Plugin* plugin) {
    plugin->unloadSignal.connectOwned(
        [note = object.name + " is unloaded"](zePlugin::Plugin*) { journal().push_back(note); });
}

ZEBASE_API Shape* makeShape() {
    return new Circle;
}

ZEBASE_API void fail(bool withShape) {
    if (withShape)
        throw ShapeError();
    throw zeUtil::Error(7, "from a plug-in");
}

} // extern "C"
