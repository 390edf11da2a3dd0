// SPDX-License-Identifier: MIT
// A drawing plug-in that writes each call to standard error, and when it is closed.

#include <cstdio>

#include "Base/DebugDraw/zeDebugDraw.h"

namespace {

using zeLinear::Point;
using zeString::CString;

void write(const char* what, const Point& a = {}, const Point& b = {}, const CString& text = {}) {
    std::fprintf(stderr, "%s %g %g %s\n", what, a.x, b.x, text.asChar());
}

struct Writer : zeDebugDraw::BaseIFace {
    ~Writer() override { write("destroyed"); }

    void drawPoint(const Point& p) override { write("point", p); }
    void drawAddPoint(const Point& p) override { write("addPoint", p); }
    void drawLine(const Point& a, const Point& b) override { write("line", a, b); }
    void drawAddLine(const Point& a, const Point& b) override { write("addLine", a, b); }
    void drawAnnotation(const Point& p, const CString& t) override { write("text", p, {}, t); }
    void drawAddAnnotation(const Point& p, const CString& t) override { write("add", p, {}, t); }
    void highlit() override { write("highlit"); }
    void clear() override { write("clear"); }
    void show() override { write("show"); }
    void show(const CString& text) override { write("show", {}, {}, text); }
} writer;

} // namespace

extern "C" ZEBASE_API void uninitializePlugin() {
    write("closed");
}

extern "C" ZEBASE_API zeDebugDraw::BaseIFace* getDebugDrawIFace() {
    write("asked");
    return &writer;
}
