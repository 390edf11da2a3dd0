// SPDX-License-Identifier: MIT

// The declaration of one exporter. It is compiled for each format, with FORMAT for its name and
// EXPORTER for the file of its plug-in.

#include "Base/Plugin/zePluginPluginProxy.h"
#include "Base/Plugin/zePluginService.h"
#include "Base/zeBaseExport.h"

#include "notebook/plug-ins/exporter.h"

namespace {

class Declaration : public zePlugin::Service {
public:
    using zePlugin::Service::Service;

    zeString::IString getType() const override { return notebook::exporterType; }
};

} // namespace

extern "C" ZEBASE_API const char* getPluginProxyName() {
    return EXPORTER;
}

extern "C" ZEBASE_API void installPluginServices(zePlugin::PluginProxy* proxy) {
    // The reference ends a service that is refused, because there is one of this name already.
    const ze::Reference<zePlugin::Service> service(new Declaration(FORMAT, proxy));
    service->registerService();
}
