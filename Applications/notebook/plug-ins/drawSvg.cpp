// SPDX-License-Identifier: MIT

// A drawing plug-in that writes SVG: x to the right, y upwards, z ignored.
//
// What is drawn without "add" begins a figure, in the next colour, and what is added joins the last
// one. highlit() makes the last figure stand out, clear() forgets all, and show() writes what there
// is into the file of the name given, or "debugdraw.svg".

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "Base/DebugDraw/zeDebugDraw.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Base/zeBaseExport.h"

#include "notebook/plug-ins/markup.h"

namespace {

using zeLinear::Point;
using zeString::CString;

std::string numberText(double number) {
    char text[32];
    return {text,
            std::to_chars(text, text + sizeof text, number, std::chars_format::general, 6).ptr};
}

std::string attribute(const char* name, double number) {
    return std::string(" ") + name + "=\"" + numberText(number) + "\"";
}

/// Writes a regular file, which is no link, or says why not.
void writeFile(const char* name, const std::string& bytes) {
    zeUtil::Descriptor file(
        open(name, O_WRONLY | O_CREAT | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC, 0666));
    struct stat status = {};
    const bool isMade =
        fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) && ftruncate(file.get(), 0) == 0;
    ssize_t done = isMade ? 0 : -1;
    for (std::size_t at = 0; done >= 0 && at < bytes.size(); at += static_cast<std::size_t>(done))
        done = zeUtil::retried(
            [&] { return write(file.get(), bytes.data() + at, bytes.size() - at); });
    if (done >= 0 && file.close() == 0)
        return;
    std::fprintf(stderr, "%s: the drawing cannot be written\n", app::visible(name).c_str());
    if (isMade)
        unlink(name); // a part of a drawing is none
}

class SvgDrawing : public zeDebugDraw::BaseIFace {
public:
    void drawPoint(const Point& point) override {
        begin();
        drawAddPoint(point);
    }
    void drawAddPoint(const Point& point) override {
        add("<circle r=\"0.3\"" + place("cx", "cy", point) + "/>\n", point);
    }
    void drawLine(const Point& from, const Point& to) override {
        begin();
        drawAddLine(from, to);
    }
    void drawAddLine(const Point& from, const Point& to) override {
        add("<line" + place("x1", "y1", from) + place("x2", "y2", to) + "/>\n", from, to);
    }
    void drawAnnotation(const Point& at, const CString& text) override {
        begin();
        drawAddAnnotation(at, text);
    }
    void drawAddAnnotation(const Point& at, const CString& text) override {
        const Point end(at.x + text.length(), at.y + 1, 0); // about as wide and high as the text is
        add("<text stroke=\"none\"" + place("x", "y", at) + ">" + notebook::escaped(text.asChar()) +
                "</text>\n",
            at, end);
    }
    void highlit() override {
        if (!figures_.empty())
            figures_.back().isHighlit = true;
    }
    void clear() override { *this = SvgDrawing(); }
    void show() override { show("debugdraw.svg"); }
    void show(const CString& name) override { writeFile(name.asChar(), svg()); }

private:
    struct Figure {
        std::string items;
        bool isHighlit = false;
    };

    static std::string place(const char* x, const char* y, const Point& point) {
        return attribute(x, point.x) + attribute(y, 0 - point.y);
    }

    void begin() { figures_.emplace_back(); }

    /// What has no place is left out.
    void add(const std::string& item, const Point& from, const Point& to) {
        for (const Point& point : {from, to})
            if (!std::isfinite(point.x) || !std::isfinite(point.y))
                return;
        if (figures_.empty())
            begin();
        figures_.back().items += item;
        for (const Point& point : {from, to}) {
            low_ = Point(std::min(low_.x, point.x), std::min(low_.y, point.y), 0);
            high_ = Point(std::max(high_.x, point.x), std::max(high_.y, point.y), 0);
        }
    }
    void add(const std::string& item, const Point& at) { add(item, at, at); }

    std::string svg() const {
        const Point size(high_.x - low_.x + 4, high_.y - low_.y + 4, 0); // with a margin
        std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" +
                           numberText(low_.x - 2) + " " + numberText(-high_.y - 2) + " " +
                           numberText(size.x) + " " + numberText(size.y) +
                           "\" stroke-width=\"0.4\" font-family=\"monospace\" font-size=\"1.6\">\n";
        int hue = 210; // far apart for neighbours
        for (const Figure& figure : figures_) {
            const std::string colour = "\"hsl(" + std::to_string(hue) + ",60%,45%)\"";
            text += "<g stroke=" + colour + " fill=" + colour +
                    (figure.isHighlit ? " stroke-width=\"0.8\">\n" : ">\n") + figure.items +
                    "</g>\n";
            hue = (hue + 137) % 360;
        }
        return text + "</svg>\n";
    }

    std::vector<Figure> figures_;
    Point low_;
    Point high_;
};

} // namespace

/// The drawing is one for all callers, and goes when the plug-in does.
extern "C" ZEBASE_API zeDebugDraw::BaseIFace* getDebugDrawIFace() {
    static SvgDrawing drawing;
    return &drawing;
}
