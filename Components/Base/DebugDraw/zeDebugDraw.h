// SPDX-License-Identifier: MIT

/// @file
/// Draws points, lines and texts while a program is debugged, in whatever way a plug-in does it.
///
/// The library draws nothing itself. The environment variable `ZE_DEBUGDRAW_PLUGIN` names the file
/// of a plug-in, which the first call loads; each function below forwards to the operation of the
/// same name of the plug-in's zeDebugDraw::BaseIFace. What is drawn, and what the difference
/// between the `draw` and the `drawAdd` forms is, the plug-in decides.
///
/// **What the plug-in exports**, with C linkage and default visibility:
///
/// `extern "C" zeDebugDraw::BaseIFace* getDebugDrawIFace()`
///
/// It is called once and keeps the object, which must live as long as the library is loaded: until
/// the static objects of the program are destroyed. Then the plug-in is closed; do not draw from
/// destructors of static objects.
///
/// **For developers only.** If the variable is unset, the plug-in cannot be loaded, or lacks the
/// function, or gives null, the process ends by `abort()`. The variable chooses code that runs in
/// the process: do not draw in a program that has rights which its caller lacks.
///
/// Threads: one thread at a time for all functions.
///
/// @code
/// struct Viewer : zeDebugDraw::BaseIFace { // in the plug-in
///     int points = 0;
///     void drawPoint(const zeLinear::Point&) override { points = 1; }
///     void drawAddPoint(const zeLinear::Point&) override { ++points; }
///     void drawLine(const zeLinear::Point&, const zeLinear::Point&) override {}
///     void drawAddLine(const zeLinear::Point&, const zeLinear::Point&) override {}
///     void drawAnnotation(const zeLinear::Point&, const zeString::CString&) override {}
///     void drawAddAnnotation(const zeLinear::Point&, const zeString::CString&) override {}
///     void highlit() override {}
///     void clear() override { points = 0; }
///     void show() override {}
///     void show(const zeString::CString&) override {}
/// };
/// Viewer viewer; // extern "C" zeDebugDraw::BaseIFace* getDebugDrawIFace() { return &viewer; }
/// viewer.drawAddPoint(zeLinear::Point(1, 2, 3));
/// assert(viewer.points == 1);
/// @endcode

#pragma once

#include "Base/Linear/zeLinearPoint.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/zeBaseExport.h"

namespace zeDebugDraw {

/// What a drawing plug-in implements.
class ZEBASE_API BaseIFace {
public:
    /// The library never destroys the object.
    virtual ~BaseIFace();

    /// @{
    /// Called by the function of the same name.
    virtual void drawPoint(const zeLinear::Point& point) = 0;
    virtual void drawAddPoint(const zeLinear::Point& point) = 0;
    virtual void drawLine(const zeLinear::Point& from, const zeLinear::Point& to) = 0;
    virtual void drawAddLine(const zeLinear::Point& from, const zeLinear::Point& to) = 0;
    virtual void drawAnnotation(const zeLinear::Point& at, const zeString::CString& text) = 0;
    virtual void drawAddAnnotation(const zeLinear::Point& at, const zeString::CString& text) = 0;
    virtual void highlit() = 0;
    virtual void clear() = 0;
    virtual void show() = 0;
    virtual void show(const zeString::CString& text) = 0;
    /// @}
};

/// @{
/// Forwards to the plug-in, which the first call loads.
ZEBASE_API void drawPoint(const zeLinear::Point& point);
ZEBASE_API void drawAddPoint(const zeLinear::Point& point);
ZEBASE_API void drawLine(const zeLinear::Point& from, const zeLinear::Point& to);
ZEBASE_API void drawAddLine(const zeLinear::Point& from, const zeLinear::Point& to);
ZEBASE_API void drawAnnotation(const zeLinear::Point& at, const zeString::CString& text);
ZEBASE_API void drawAddAnnotation(const zeLinear::Point& at, const zeString::CString& text);
ZEBASE_API void highlit();
ZEBASE_API void clear();
ZEBASE_API void show();
ZEBASE_API void show(const zeString::CString& text);
/// @}

} // namespace zeDebugDraw
