// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginService.h"

#include "Base/Plugin/zePluginServiceManager.h"

namespace zePlugin {

Service::Service(const zeString::IString& name, bool allowOverride)
    : name_(name), allowOverride_(allowOverride) {}

Service::Service(const zeString::IString& name, PluginProxy* proxy)
    : name_(name), proxy_(proxy), allowOverride_(false) {}

Service::~Service() {
    destroyedSignal.send(this);
}

bool Service::registerService() {
    return ServiceManager::getInstance().addService(this);
}

} // namespace zePlugin
