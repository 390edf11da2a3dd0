// SPDX-License-Identifier: MIT

// A picture of the text and its history.

#include <algorithm>
#include <cmath>
#include <utility>

#include "Base/DebugDraw/zeDebugDraw.h"
#include "Base/Undo/zeUndoGroup.h"

#include "notebook/plugIns.h"

namespace notebook {

namespace {

using zeLinear::Point;

/// The first thousand lines, each as long as it is, up to a hundred.
void drawText(const Lines& lines) {
    zeDebugDraw::drawAnnotation(Point(0, 2, 0), "text");
    for (std::size_t i = 0; i < std::min<std::size_t>(lines.size(), 1000); ++i) {
        const double y = -2.0 * static_cast<double>(i);
        const auto end = static_cast<double>(std::min<std::size_t>(lines[i].size(), 100));
        zeDebugDraw::drawAddLine(Point(0, y, 0), Point(end, y, 0));
    }
}

/// Each group as long as its memory has digits, beside its name. What is done stands out.
void drawHistory(const std::vector<const zeUndo::Group*>& groups) {
    constexpr double left = 110;
    double y = 2;
    zeDebugDraw::drawAnnotation(Point(left, y, 0), "history");
    zeDebugDraw::highlit();
    bool wasUndone = false;
    for (const zeUndo::Group* group : groups) {
        y -= 2;
        if (!std::exchange(wasUndone, group->lastWasUndoIt()) && group->lastWasUndoIt())
            zeDebugDraw::drawAnnotation(Point(left - 7, y, 0), "undone");
        const double right = left + 4 * std::log10(1.0 + group->getNumBytesUsed());
        zeDebugDraw::drawAddLine(Point(left, y, 0), Point(right, y, 0));
        zeDebugDraw::drawAddAnnotation(Point(right + 1, y, 0), group->getName());
    }
}

} // namespace

void drawInto(const std::string& name, const Lines& lines,
              const std::vector<const zeUndo::Group*>& groups) {
    const ze::Reference<zePlugin::Plugin> plugin = openDrawing();
    zeDebugDraw::clear();
    drawText(lines);
    drawHistory(groups);
    zeDebugDraw::show(name.c_str());
}

} // namespace notebook
