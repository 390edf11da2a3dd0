// SPDX-License-Identifier: MIT
// A plug-in with code of every kind that can be left behind: it notes when each runs.

#include <stdexcept>

#include "Base/Utility/zeUtilError.h"

#include "Plugin/plugins/exporter.h"
#include "Plugin/plugins/ownName.h"

namespace {

struct Static {
    Static() : name(ownName()) { journal().push_back(name + " mapped"); }
    ~Static() { journal().push_back(name + " gone"); }
    std::string name;
} object;

} // namespace

extern "C" {

ZEBASE_API void initializePlugin() {
    journal().push_back(object.name + " initialized");
}

ZEBASE_API void uninitializePlugin() {
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
