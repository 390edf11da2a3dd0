// SPDX-License-Identifier: MIT
// A program that finds exporters in "plug-ins" beside it, and puts a text through each.

#include <clocale>
#include <cstdio>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/Plugin/zePluginServiceManager.h"

#include "Exporter.h"

using zePlugin::Service;
using zePlugin::ServiceManager;

int main(int argc, char** argv, char** envp) {
    std::setlocale(LC_ALL, "");
    zeOS::AppMain::getInstance().initialize(argc, argv, envp);
    zeOS::AppOutput::getInstance().status.open("-", false); // says which plug-ins cannot be loaded

    ServiceManager& manager = ServiceManager::getInstance();
    manager.registerServices(L"");
    const int exporters = manager.getServiceIndex(L"exporter");
    const int count = exporters == -1 ? 0 : static_cast<int>(manager.getNumServices(exporters));
    for (int i = 0; i < count; ++i) {
        auto* exporter = static_cast<Exporter*>(manager.getService(exporters, i));
        std::string text;
        exporter->convert("Plug-ins work.", text);
        std::printf("%s: %s\n", exporter->getName().asMultibyte(), text.c_str());
    }

    // Closes the plug-ins now, while their static objects and ours still stand.
    for (int i = count; i-- > 0;)
        manager.removeService(manager.getService(exporters, i));
    return 0;
}
