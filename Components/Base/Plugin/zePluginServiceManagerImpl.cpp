// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginServiceManagerImpl.h"

#include <algorithm>
#include <utility>

using zeString::IString;

namespace zePlugin {

// ServiceForType

ServiceForType::~ServiceForType() {
    removeAll();
}

Service* ServiceForType::findService(const IString& name) const {
    const auto found = byName_.find(view(name));
    return found == byName_.end() ? nullptr : found->second;
}

void ServiceForType::add(Service* service) {
    services.emplace_back(service);
    byName_.emplace(view(service->getName()), service);
    service->destroyedSignal.connect(signalClient_, this, &ServiceForType::serviceDestroyed);
}

void ServiceForType::remove(Service* service) {
    service->destroyedSignal.disconnectInstance(this);
    ze::Reference<Service> removed = takeOut(service);
    Service::destroyReference(removed);
}

/// Leaves an empty list before the first is released: its destructor may ask for services.
void ServiceForType::removeAll() {
    std::vector<ze::Reference<Service>> released;
    released.swap(services);
    byName_.clear();
    for (const auto& service : released)
        service->destroyedSignal.disconnectInstance(this);
    for (auto& service : released)
        Service::destroyReference(service);
}

/// Somebody destroyed a service while it is listed: remove() and removeAll() end the connection
/// first. Its reference must not destroy it again, whatever its count is.
void ServiceForType::serviceDestroyed(Service* service) {
    const ze::Reference<Service> dying = takeOut(service);
    dying->ref();
    dying->ref();
}

/// Takes a service out of list and index, and keeps the order of the rest.
ze::Reference<Service> ServiceForType::takeOut(Service* service) {
    const auto found = std::find(services.begin(), services.end(), service);
    ze::Reference<Service> taken = std::move(*found);
    services.erase(found);
    byName_.erase(view(service->getName()));
    const auto next = std::find_if(services.begin(), services.end(), [&](const auto& other) {
        return other->getName() == service->getName();
    });
    if (next != services.end())
        byName_.emplace(view((*next)->getName()), next->get());
    return taken;
}

// ServiceManagerImpl

/// The services go while the types still stand, for destructors that ask the manager.
ServiceManagerImpl::~ServiceManagerImpl() {
    for (std::size_t i = 0; i < types.size(); ++i)
        types[i]->removeAll();
}

int ServiceManagerImpl::getServiceType(const IString& name, bool create) {
    if (const auto found = byName_.find(view(name)); found != byName_.end())
        return found->second;
    if (!create)
        return -1;
    const int index = static_cast<int>(types.size());
    types.emplace_back(new ServiceForType(name));
    byName_.emplace(view(types.back()->typeName), index);
    return index;
}

} // namespace zePlugin
