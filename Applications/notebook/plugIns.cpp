// SPDX-License-Identifier: MIT

#include "notebook/plugIns.h"

#include <stdlib.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <numeric>
#include <set>
#include <vector>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Plugin/zePluginPluginLoader.h"
#include "Base/Plugin/zePluginService.h"
#include "Base/Plugin/zePluginServiceManager.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "notebook/plug-ins/exporter.h"

namespace notebook {

namespace {

using app::Failure;
using app::message;

/// The library has no words for a file that is missing, nor for one that failed before.
[[noreturn]] void refuse(const std::string& what, const zeString::IString& error) {
    const std::string reason = app::oneLine(app::narrow(error));
    throw Failure(message("notebook.no_plug_in", "{1}: the plug-in cannot be used: {2}",
                          {what, reason.empty() ? app::systemMessage(ENOENT) : reason}));
}

/// What the declarations promise, for a message.
std::string formats(const zePlugin::ServiceManager& services) {
    std::set<std::string> names;
    const int type = services.getServiceIndex(exporterType);
    for (unsigned int i = 0; type >= 0 && i < services.getNumServices(type); ++i)
        names.insert(" " + app::narrow(services.getService(type, static_cast<int>(i))->getName()));
    return std::accumulate(names.begin(), names.end(), std::string());
}

/// The function of an exporter, whose plug-in this opens.
Export* openExporter(const std::string& format) {
    zePlugin::ServiceManager& services = zePlugin::ServiceManager::getInstance();
    services.registerServices(L"notebook"); // opens the declarations, the first time
    zePlugin::Service* const service = services.getService(exporterType, app::wide(format));
    zePlugin::PluginProxy* const proxy = service != nullptr ? service->getPluginProxy() : nullptr;
    if (proxy == nullptr)
        throw Failure(message("notebook.no_format", "there is no format '{1}' among:{2}",
                              {format, formats(services)}));
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

} // namespace

std::string exported(const std::string& format, const std::string& title, const Lines& lines) {
    static std::map<std::string, Export*> opened;
    Export*& exporter = opened[format];
    if (exporter == nullptr)
        exporter = openExporter(format);
    std::string text;
    exporter(title, lines, text);
    return text;
}

/// zeDebugDraw ends the process if its plug-in is of no use: that is found out before.
ze::Reference<zePlugin::Plugin> openDrawing() {
    constexpr const char* variable = "ZE_DEBUGDRAW_PLUGIN";
    const char* const given = std::getenv(variable);
    const zeString::IString file = given != nullptr ? zeString::IString(given) : drawingPlugin();
    const app::Step step(
        "open", message("notebook.opening", "opening the plug-in {1}", {app::narrow(file)}));
    zePlugin::PluginLoader loader;
    ze::Reference<zePlugin::Plugin> plugin = loader.load(file);
    if (!plugin || plugin->getSymbol(L"getDebugDrawIFace") == nullptr)
        refuse(given != nullptr ? variable : "drawSvg.so",
               plugin ? plugin->getError() : loader.getError());
    setenv(variable, app::narrow(file).c_str(), 0);
    return plugin;
}

} // namespace notebook
