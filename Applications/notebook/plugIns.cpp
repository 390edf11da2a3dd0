// SPDX-License-Identifier: MIT

#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <map>

#include "Base/DebugDraw/zeDebugDraw.h"
#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Plugin/zePluginPluginLoader.h"
#include "Base/Plugin/zePluginService.h"
#include "Base/Plugin/zePluginServiceManager.h"
#include "Base/Undo/zeUndoGroup.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "notebook/command.h"
#include "notebook/plug-ins/exporter.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;
using zeLinear::Point;

/// The services, with the declarations found by the first call.
zePlugin::ServiceManager& services() {
    zePlugin::ServiceManager& manager = zePlugin::ServiceManager::getInstance();
    manager.registerServices(L"notebook");
    return manager;
}

/// The library has no words for a file that is missing, nor for one that failed before.
[[noreturn]] void refuse(const std::string& what, const zeString::IString& error) {
    const std::string reason = app::oneLine(app::narrow(error));
    throw Failure(message("notebook.no_plug_in", "{1}: the plug-in cannot be used: {2}",
                          {what, reason.empty() ? app::systemMessage(ENOENT) : reason}));
}

/// The function of an exporter, whose plug-in this opens.
Export* openExporter(const std::string& format) {
    zePlugin::Service* const service = services().getService(exporterType, app::wide(format));
    zePlugin::PluginProxy* const proxy = service != nullptr ? service->getPluginProxy() : nullptr;
    if (proxy == nullptr)
        throw Failure(message("notebook.no_format", "there is no format '{1}'", {format}));
    const app::Step step("open", message("notebook.opening", "opening the plug-in {1}",
                                         {app::narrow(proxy->getProxyFor())}));
    const ze::Reference<zePlugin::Plugin> plugin = proxy->getMainPlugin();
    void* const symbol = plugin ? plugin->getSymbol(exportSymbol) : nullptr;
    if (symbol == nullptr)
        refuse(format, plugin ? plugin->getError() : proxy->getError());
    return reinterpret_cast<Export*>(symbol);
}

/// The file of the plug-in for SVG; empty if there is none.
zeString::IString drawingPlugin() {
    std::vector<zeString::IString> directories;
    zeOS::AppMain::getInstance().getPluginDirectories(directories);
    for (const zeString::IString& directory : directories) {
        const zeOS::Filename file(directory, zeString::IString(L"notebook/drawSvg.so"));
        zeOS::FileStatus status;
        if (zeOS::File::query(file, status); status.exists())
            return file.path();
    }
    return {};
}

/// zeDebugDraw ends the process if its plug-in is of no use: that is found out before. The plug-in
/// stays open as long as it is drawn with.
ze::Reference<zePlugin::Plugin> openDrawing() {
    constexpr const char* variable = "ZE_DEBUGDRAW_PLUGIN";
    const char* const given = std::getenv(variable);
    const zeString::IString file = given != nullptr ? zeString::IString(given) : drawingPlugin();
    zePlugin::PluginLoader loader;
    ze::Reference<zePlugin::Plugin> plugin = loader.load(file);
    if (!plugin || plugin->getSymbol(L"getDebugDrawIFace") == nullptr)
        refuse(given != nullptr ? variable : "drawSvg.so",
               plugin ? plugin->getError() : loader.getError());
    setenv(variable, app::narrow(file).c_str(), 0);
    return plugin;
}

/// Each line as long as it is; of many lines, some. Returns where the longest ends.
double drawText(const Lines& lines) {
    const std::size_t every = lines.size() / 400 + 1;
    const std::string title =
        message("notebook.drawn_lines", "{1} lines", {std::to_string(lines.size())});
    zeDebugDraw::drawAnnotation(Point(0, 2, 0), title.c_str());
    std::size_t longest = 0;
    for (std::size_t i = 0; i < lines.size(); i += every) {
        const double y = -2.0 * static_cast<double>(i / every);
        const std::size_t end = std::min<std::size_t>(lines[i].size(), 100);
        longest = std::max(longest, end);
        const std::size_t indent = std::min(lines[i].find_first_not_of(" \t"), end);
        zeDebugDraw::drawAddLine(Point(static_cast<double>(indent), y, 0),
                                 Point(static_cast<double>(end), y, 0));
    }
    return static_cast<double>(longest);
}

/// Each group as long as its memory has digits. What would be undone next stands out.
void drawHistory(const std::vector<const zeUndo::Group*>& groups, double left) {
    const auto undone = std::find_if(groups.begin(), groups.end(),
                                     [](const auto* group) { return group->lastWasUndoIt(); });
    auto next = undone;
    while (next != groups.begin() && (*--next)->isGroupDynamic()) {
    }
    double y = 2;
    const auto draw = [&](const std::string& title, auto first, auto end) {
        zeDebugDraw::drawAnnotation(Point(left, y, 0), title.c_str());
        for (; first != end; ++first) {
            const double right = left + 4 * std::log10(1.0 + (*first)->getNumBytesUsed());
            y -= 2;
            zeDebugDraw::drawAddLine(Point(left, y, 0), Point(right, y, 0));
            if ((*first)->isGroupDynamic())
                zeDebugDraw::drawAddLine(Point(left, y + 2, 0), Point(left, y, 0));
            zeDebugDraw::drawAddAnnotation(Point(right + 1, y, 0), (*first)->getName());
        }
        y -= 4;
    };
    draw(message("notebook.drawn_done", "done"), groups.begin(), next);
    draw(message("notebook.drawn_next", "undone next"), next, undone);
    zeDebugDraw::highlit();
    draw(message("notebook.drawn_undone", "undone"), undone, groups.end());
}

} // namespace

std::vector<std::string> exportFormats() {
    std::vector<std::string> formats;
    const zePlugin::ServiceManager& manager = services();
    if (const int type = manager.getServiceIndex(exporterType); type >= 0)
        for (unsigned int i = 0; i < manager.getNumServices(type); ++i)
            formats.push_back(
                app::narrow(manager.getService(type, static_cast<int>(i))->getName()));
    std::sort(formats.begin(), formats.end());
    return formats;
}

std::string exported(const std::string& format, const std::string& title, const Lines& lines) {
    static std::map<std::string, Export*> opened;
    Export*& exporter = opened[format];
    if (exporter == nullptr)
        exporter = openExporter(format);
    std::string text;
    exporter(title, lines, text);
    return text;
}

void drawInto(const std::string& name, const Lines& lines,
              const std::vector<const zeUndo::Group*>& groups) {
    const ze::Reference<zePlugin::Plugin> plugin = openDrawing();
    zeDebugDraw::clear();
    drawHistory(groups, 10 + drawText(lines));
    zeDebugDraw::show(name.c_str());
}

} // namespace notebook
