// SPDX-License-Identifier: MIT

/// @file
/// A named object of a named type, which any part of a program can look up: zePlugin::Service.
///
/// A program derives a class for each type of service (exporters, say), with the operations that a
/// user of such a service calls, and registers objects of it by name. They come from the program
/// itself, or from plug-ins: there the class of the object, and so its destructor, lies in the
/// plug-in's library.
///
/// **The last reference to a plug-in's service must go through destroyReference().** The service
/// holds its proxy, the proxy the library. If a service is released in the ordinary way and was the
/// last to hold its proxy, its destructor closes the library that it is running in, and the process
/// ends when it returns. destroyReference() holds the proxy meanwhile. It must not be called by the
/// plug-in's own code either, which would return into the closed library.
///
/// Threads: all plug-ins, proxies and services belong to one thread.
///
/// @code
/// #include "Base/Plugin/zePluginServiceManager.h"
/// struct Exporter : zePlugin::Service {
///     using Service::Service;
///     zeString::IString getType() const override { return L"exporter"; }
/// };
/// auto& manager = zePlugin::ServiceManager::getInstance();
/// ze::Reference<Exporter> text(new Exporter(L"text", false)); // the program's own
/// assert(text->registerService());
/// assert(manager.getService(L"exporter", L"text") == text.get());
/// manager.removeService(text.get());
/// zePlugin::Service::destroyReference(text);
/// assert(!text);
/// @endcode

#pragma once

#include "Base/Plugin/zePluginPluginProxy.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zePlugin {

/// Base of all services. Neither copied nor moved: share it by ze::Reference.
class ZEBASE_API Service : public ze::ReferenceCount {
public:
    /// A service of the program itself. `allowOverride`: another service of this type and name may
    /// take its place.
    Service(const zeString::IString& name, bool allowOverride);
    /// A service of a plug-in, whose place no other can take. It holds the proxy; null makes it a
    /// service of the program.
    Service(const zeString::IString& name, PluginProxy* proxy);
    Service(const Service&) = delete;            ///< Share it by ze::Reference.
    Service& operator=(const Service&) = delete; ///< Share it by ze::Reference.

    /// Sends destroyedSignal, and releases the proxy.
    ~Service() override;

    /// Adds this service to the manager: ServiceManager::addService().
    virtual bool registerService();

    /// The name of its type, always the same for one object.
    virtual zeString::IString getType() const = 0;

    /// The name, up to its first terminator.
    const zeString::IString& getName() const { return name_; }
    /// Whether another service of this type and name may take its place.
    bool getAllowOverride() const { return allowOverride_; }
    /// Whether it comes from a plug-in.
    bool isPlugin() const { return static_cast<bool>(proxy_); }
    /// The proxy of the plug-in that it comes from, or null.
    PluginProxy* getPluginProxy() const { return proxy_.get(); }

    /// Releases a reference to a service, and sets it null, as all that hold services must: if this
    /// was the last, the service is destroyed first and its library closed afterwards. `T` is
    /// Service or a class derived from it; null is ignored.
    template<class T>
    static void destroyReference(ze::Reference<T>& service) {
        if (!service)
            return;
        const ze::Reference<PluginProxy> proxy(service->getPluginProxy());
        service = ze::Reference<T>();
    }

    /// Sent at the start of the destructor. The derived object is gone then: the name, the proxy
    /// and the flags can be asked for, but getType(), and so ServiceManager::removeService(), ends
    /// the process. **The count is 0**: a callback that makes a ze::Reference to the service
    /// destroys it twice.
    zeRTB::SignalArg<Service*> destroyedSignal;

private:
    zeString::IString name_;
    ze::Reference<PluginProxy> proxy_;
    bool allowOverride_;
};

} // namespace zePlugin
