// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPluginProxy.h"

#include <algorithm>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Plugin/zePluginPluginLoader.h"
#include "Base/Plugin/zePluginService.h"

using zeString::IString;

namespace zePlugin {

PluginProxy::PluginProxy(const IString& filename) : Plugin(filename) {}

PluginProxy::~PluginProxy() = default;

IString PluginProxy::getError() const {
    return proxyError_.isEmpty() ? Plugin::getError() : proxyError_;
}

void PluginProxy::setProxyFor(const IString& name) {
    proxyFor_ = name;
}

IString PluginProxy::getProxyFor() const {
    return proxyFor_;
}

bool PluginProxy::loadMainPlugin() {
    proxyError_ = IString();
    if (mainLoadAttempted_)
        return static_cast<bool>(mainPlugin_);
    mainLoadAttempted_ = true;
    const IString path = zeOS::Filename::join(directory(), proxyFor_);
    zeOS::FileStatus status;
    zeOS::File::query(path, status);
    if (!status.exists()) {
        proxyError_.format("The proxy plugin does not exist: %s", path.asMultibyte());
        return false;
    }
    PluginLoader loader;
    mainPlugin_ = loader.load(path);
    if (!mainPlugin_)
        proxyError_ = loader.getError();
    return static_cast<bool>(mainPlugin_);
}

ze::Reference<Plugin> PluginProxy::getMainPlugin() {
    proxyError_ = IString(); // also after a failure, as callers know it
    if (!mainLoadAttempted_)
        loadMainPlugin();
    return mainPlugin_;
}

bool PluginProxy::installServices() {
    if (!servicesInstalled_) {
        servicesInstalled_ = true;
        void* install = getSymbol("installPluginServices");
        if (install)
            reinterpret_cast<void (*)(PluginProxy*)>(install)(this);
    }
    return !services_.empty();
}

int PluginProxy::getNumServices() const {
    return static_cast<int>(services_.size());
}

Service* PluginProxy::getService(int index) const {
    return services_[static_cast<std::size_t>(index)];
}

int PluginProxy::findService(const Service* service) const {
    const auto found = std::find(services_.begin(), services_.end(), service);
    return found == services_.end() ? -1 : static_cast<int>(found - services_.begin());
}

void PluginProxy::addService(Service* service) {
    services_.push_back(service);
    service->destroyedSignal.connect(signalClient_, this, &PluginProxy::destroyedService);
}

void PluginProxy::destroyedService(Service* service) {
    const auto found = std::find(services_.begin(), services_.end(), service);
    if (found != services_.end())
        services_.erase(found);
}

} // namespace zePlugin
