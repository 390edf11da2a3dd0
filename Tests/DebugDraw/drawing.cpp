// SPDX-License-Identifier: MIT
// A drawing plug-in that writes each call to standard error, and when it is closed.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Base/DebugDraw/zeDebugDraw.h"

namespace {

using zeLinear::Point;
using zeString::CString;

struct Writer : zeDebugDraw::BaseIFace {
    ~Writer() override { std::fprintf(stderr, "destroyed\n"); }

    void drawPoint(const Point& p) override { write("drawPoint", p); }
    void drawAddPoint(const Point& p) override { write("drawAddPoint", p); }
    void drawLine(const Point& a, const Point& b) override {
        write("drawLine", a), write(" to", b);
    }
    void drawAddLine(const Point& a, const Point& b) override {
        write("drawAddLine", a), write(" to", b);
    }
    void drawAnnotation(const Point& at, const CString& text) override { write(text.asChar(), at); }
    void drawAddAnnotation(const Point& at, const CString& text) override {
        write(("added " + std::string(text.asChar())).c_str(), at);
    }
    void highlit() override { std::fprintf(stderr, "highlit\n"); }
    void clear() override { std::fprintf(stderr, "clear\n"); }
    void show() override { std::fprintf(stderr, "show\n"); }
    void show(const CString& text) override { std::fprintf(stderr, "show %s\n", text.asChar()); }

    static void write(const char* what, const Point& p) {
        std::fprintf(stderr, "%s %g %g %g\n", what, p.x, p.y, p.z);
    }
} writer;

} // namespace

extern "C" {

ZEBASE_API void uninitializePlugin() {
    std::fprintf(stderr, "closed\n");
}

ZEBASE_API zeDebugDraw::BaseIFace* getDebugDrawIFace() {
    std::fprintf(stderr, "asked\n");
    return std::getenv("NO_DRAWING") ? nullptr : &writer;
}

} // extern "C"
