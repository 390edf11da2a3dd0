// SPDX-License-Identifier: MIT
// A plug-in with code of every kind that can be left behind: it notes when each runs.

#include <stdexcept>

#include "Base/Plugin/zePluginServiceManager.h"
#include "Base/Utility/zeUtilError.h"

#include "Plugin/plugins/exporter.h"
#include "Plugin/plugins/ownName.h"

namespace {

struct Static {
    Static() : name(ownName()) { journal().push_back(name + " mapped"); }
    ~Static() {
        zePlugin::Service::destroyReference(keptToTheEnd);
        journal().push_back(name + " gone");
    }
    std::string name;
    ze::Reference<Exporter> keptToTheEnd;
} object;

Exporter* kept = nullptr; // counted, and no object that would be gone before the rest at exit

/// Of this library, without a proxy that would hold it.
struct Own : Exporter {
    using Exporter::Exporter;
    ~Own() override { journal().push_back("own destroyed"); }
    std::string run() override { return "own"; }
};

} // namespace

extern "C" {

ZEBASE_API void initializePlugin() {
    journal().push_back(object.name + " initialized");
}

/// Keeps a service until the library is closed, or until the midst of that, and offers one.
ZEBASE_API void keep(Exporter* service, bool toTheEnd) {
    if (toTheEnd) {
        object.keptToTheEnd = service;
    } else {
        kept = service;
        kept->ref();
    }
    (new Own(L"own", false))->registerService();
}

ZEBASE_API void uninitializePlugin() {
    ze::Reference<Exporter> last(kept);
    if (last)
        last->unref(); // what keep() counted
    zePlugin::Service::destroyReference(last);
    auto& manager = zePlugin::ServiceManager::getInstance();
    manager.removeService(dynamic_cast<Own*>(manager.getService(L"exporter", L"own")));
    journal().push_back(ownName() + " uninitialized"); // at exit without the object
}

ZEBASE_API const char* text() {
    return object.name.c_str();
}

ZEBASE_API Shape* makeShape() {
    return new Circle;
}

/// Leaves a function of this library in a signal of the program's.
ZEBASE_API void listen(zePlugin::Plugin* plugin) {
    plugin->unloadSignal.connectOwned(
        [note = object.name + " is unloaded"](zePlugin::Plugin*) { journal().push_back(note); });
}

ZEBASE_API void fail(int kind) {
    switch (kind) {
    case 0:
        throw zeUtil::Error(7, "from a plug-in");
    case 1:
        throw std::out_of_range("from a plug-in");
    case 2:
        throw ExportError("from a plug-in");
    default:
        throw ShapeError{kind};
    }
}

} // extern "C"
