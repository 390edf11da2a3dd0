// SPDX-License-Identifier: MIT

#include "Base/DebugDraw/zeDebugDraw.h"

#include <cstdlib>

#include "Base/Plugin/zePluginPluginLoader.h"

using zeLinear::Point;
using zeString::CString;

namespace zeDebugDraw {
namespace {

/// Without a plug-in the process ends, here and at once. To go on with a null pointer would leave
/// it to the compiler what happens.
template<class Pointer>
Pointer orAbort(Pointer pointer) {
    if (!pointer)
        std::abort();
    return pointer;
}

ze::Reference<zePlugin::Plugin> loadPlugin() {
    const char* path = orAbort(std::getenv("ZE_DEBUGDRAW_PLUGIN"));
    return orAbort(zePlugin::PluginLoader().load(path));
}

/// The plug-in is released at exit. It is loaded before that is arranged, so that its static
/// objects still stand when it is closed.
BaseIFace* loadIFace(const char* symbol) {
    static const ze::Reference<zePlugin::Plugin> plugin = loadPlugin();
    void* function = orAbort(plugin->getSymbol(symbol));
    return orAbort(reinterpret_cast<BaseIFace* (*)()>(function)());
}

BaseIFace& iface() {
    static BaseIFace* loaded = nullptr;
    if (!loaded)
        loaded = loadIFace("getDebugDrawIFace");
    return *loaded;
}

} // namespace

BaseIFace::~BaseIFace() = default;

void drawPoint(const Point& point) {
    iface().drawPoint(point);
}

void drawAddPoint(const Point& point) {
    iface().drawAddPoint(point);
}

void drawLine(const Point& from, const Point& to) {
    iface().drawLine(from, to);
}

void drawAddLine(const Point& from, const Point& to) {
    iface().drawAddLine(from, to);
}

void drawAnnotation(const Point& at, const CString& text) {
    iface().drawAnnotation(at, text);
}

void drawAddAnnotation(const Point& at, const CString& text) {
    iface().drawAddAnnotation(at, text);
}

void highlit() {
    iface().highlit();
}

void clear() {
    iface().clear();
}

void show() {
    iface().show();
}

void show(const CString& text) {
    iface().show(text);
}

} // namespace zeDebugDraw
