// SPDX-License-Identifier: MIT

/// @file
/// The command line: run(), and the parts that it is made of.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "notebook/text.h"

namespace zeUndo {
class Group;
}

namespace notebook {

/// Does what the arguments (without the program's name) ask for, with commands from standard input,
/// and returns the exit code: 0 for success, 1 if a command of a script failed, 2 for wrong use.
/// Results go to app::results(), messages to app::messages(): they must be open.
int run(const std::vector<std::string>& arguments);

/// Runs the commands, and before them "open FILE" if there is a file. A script ends at its first
/// failure, unless it keeps going. False if a command of a script failed.
bool runCommands(const std::optional<std::string>& file, bool keepsGoing);

/// @name Plug-ins
/// They lie in "notebook" below the directories of zeOS::AppMain::getPluginDirectories(). One that
/// is missing or damaged ends in a Failure.
/// @{

/// The formats that the declarations promise.
std::vector<std::string> exportFormats();

/// The text in a format, by its plug-in, which is opened now if this is the first time.
std::string exported(const std::string& format, const std::string& title, const Lines& lines);

/// Draws lines and groups into the new file `name`, by the plug-in that "ZE_DEBUGDRAW_PLUGIN"
/// names, or else the one for SVG.
void drawInto(const std::string& name, const Lines& lines,
              const std::vector<const zeUndo::Group*>& groups);
/// @}

} // namespace notebook
