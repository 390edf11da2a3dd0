// SPDX-License-Identifier: MIT
// A drawing plug-in that writes each call to standard error, and when it is closed.

#include <cstdio>

#include "Base/DebugDraw/zeDebugDraw.h"

namespace {

using zeLinear::Point;
using zeString::CString;

void write(const char* what, const Point& a, const Point& b = {}, const char* text = "") {
    std::fprintf(stderr, "%s %g %g %s\n", what, a.x, b.x, text);
}

struct Writer : zeDebugDraw::BaseIFace {
    ~Writer() override { std::fputs("destroyed\n", stderr); }

    void drawPoint(const Point& p) override { write("point", p); }
    void drawAddPoint(const Point& p) override { write("addPoint", p); }
    void drawLine(const Point& a, const Point& b) override { write("line", a, b); }
    void drawAddLine(const Point& a, const Point& b) override { write("addLine", a, b); }
    void drawAnnotation(const Point& at, const CString& text) override {
        write("text", at, {}, text.asChar());
    }
    void drawAddAnnotation(const Point& at, const CString& text) override {
        write("addText", at, {}, text.asChar());
    }
    void highlit() override { std::fputs("highlit\n", stderr); }
    void clear() override { std::fputs("clear\n", stderr); }
    void show() override { std::fputs("show\n", stderr); }
    void show(const CString& text) override { write("show", {}, {}, text.asChar()); }
} writer;

} // namespace

extern "C" ZEBASE_API void uninitializePlugin() {
    std::fputs("closed\n", stderr);
}

extern "C" ZEBASE_API zeDebugDraw::BaseIFace* getDebugDrawIFace() {
    std::fputs("asked\n", stderr);
    return &writer;
}
