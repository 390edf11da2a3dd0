// SPDX-License-Identifier: MIT

/// @file
/// The plug-ins: they lie in "notebook" below the directories of
/// zeOS::AppMain::getPluginDirectories(), and are opened when they are needed. One that is missing
/// or damaged ends in a Failure.

#pragma once

#include <string>
#include <vector>

#include "Base/Plugin/zePluginPlugin.h"

#include "notebook/text.h"

namespace zeUndo {
class Group;
}

namespace notebook {

/// The text in a format, by the plug-in whose declaration promises it.
std::string exported(const std::string& format, const std::string& title, const Lines& lines);

/// Draws lines and groups into the new file `name`, by the plug-in that "ZE_DEBUGDRAW_PLUGIN"
/// names, or else the one for SVG.
void drawInto(const std::string& name, const Lines& lines,
              const std::vector<const zeUndo::Group*>& groups);

/// Makes zeDebugDraw ready to draw by that plug-in, which stays open as long as the caller holds
/// it.
ze::Reference<zePlugin::Plugin> openDrawing();

} // namespace notebook
