// SPDX-License-Identifier: MIT

/// @file
/// What lies behind zePlugin::ServiceManager: the types, and the services of each.

#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "Base/Plugin/zePluginService.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zePlugin {

/// The characters of a text, which stays the owner.
inline std::wstring_view view(const zeString::IString& text) {
    return {text.asWChar(), text.length()};
}

/// The services of one type, in the order of registration.
///
/// Names are looked up in an index beside the list. A service that is destroyed during add() or
/// remove() may register another one of the same name, so that the list can hold a name twice: the
/// index then has the first.
class ServiceForType : public ze::ReferenceCount {
public:
    explicit ServiceForType(const zeString::IString& name) : typeName(name) {}
    ~ServiceForType() override;

    /// The service of this name, or null.
    Service* findService(const zeString::IString& name) const;
    void add(Service* service);
    /// Removes a service of the list.
    void remove(Service* service);
    /// Removes all, first to last.
    void removeAll();

    const zeString::IString typeName;
    std::vector<ze::Reference<Service>> services;

private:
    void serviceDestroyed(Service* service);
    ze::Reference<Service> takeOut(Service* service);

    std::unordered_map<std::wstring_view, Service*> byName_; ///< Keys lie in the services.
    zeRTB::SignalClient signalClient_;
};

/// The types, in the order of first use. They only become more.
class ServiceManagerImpl : public ze::ImplBase {
public:
    ~ServiceManagerImpl() override;

    /// The index of a type. One that is new is made, or gives -1 without `create`.
    int getServiceType(const zeString::IString& name, bool create);

    ServiceForType& type(int index) const { return *types[static_cast<std::size_t>(index)]; }

    std::vector<ze::Reference<ServiceForType>> types;

private:
    std::unordered_map<std::wstring_view, int> byName_; ///< Keys lie in the types.
};

} // namespace zePlugin
