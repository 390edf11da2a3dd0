// SPDX-License-Identifier: MIT

/// @file
/// A small library that stands in for a large one until that is needed: zePlugin::PluginProxy.
///
/// The proxy's library names the real one, which lies in the same directory, and installs services
/// (zePluginService.h) that say what the real one can do. The real one is opened when a service
/// first asks for it, by getMainPlugin().
///
/// **Ownership.** The services hold the proxy, and the proxy holds the real plug-in. When the last
/// service goes, the real library is closed and then the proxy's. A proxy does not own its
/// services: the service manager does, and whoever else holds a reference.
///
/// Threads: all plug-ins, proxies and services belong to one thread.
///
/// @code
/// zePlugin::PluginProxy proxy("/no/such/serviceDecl_export.so");
/// proxy.setProxyFor("export.so");
/// assert(!proxy.getMainPlugin());
/// assert(proxy.getError() == L"The proxy plugin does not exist: /no/such/export.so");
/// @endcode

#pragma once

#include <vector>

#include "Base/Plugin/zePluginPlugin.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zePlugin {

class Service;

/// The proxy's library. Neither copied nor moved: share it by ze::Reference.
class ZEBASE_API PluginProxy : public Plugin {
public:
    /// A proxy by the path of its file. Touches nothing on disk.
    explicit PluginProxy(const zeString::IString& filename);
    /// Stops listening to the services, releases the real plug-in, and closes the proxy's library.
    ~PluginProxy() override;

    /// The error of loading the real plug-in if there is one, else Plugin::getError().
    zeString::IString getError() const override;

    /// @name The real plug-in
    /// @{

    /// Sets the file name of the real plug-in, in the directory of the proxy's file. loadProxy()
    /// sets what `getPluginProxyName` gives.
    void setProxyFor(const zeString::IString& name);
    /// The file name of the real plug-in; empty if none was set.
    zeString::IString getProxyFor() const;

    /// Loads the real plug-in, and returns whether it is loaded. The first call alone tries;
    /// getError() says why it failed. With an empty name it tries to load the directory.
    bool loadMainPlugin();
    /// The real plug-in, which the first call loads; null if that failed. getError() then gives the
    /// reason **after that first call only**: a second one clears it.
    ze::Reference<Plugin> getMainPlugin();
    /// @}

    /// @name Services
    /// @{

    /// Calls the library's `installPluginServices` with this proxy, the first time. Returns whether
    /// there are services.
    bool installServices();

    /// The number of services.
    int getNumServices() const;
    /// The service at `index`, which must be one from 0 to getNumServices() - 1.
    Service* getService(int index) const;
    /// The position of this object in the list, or -1.
    int findService(const Service* service) const;

    /// Adds a service to the list, until it is destroyed. ServiceManager::addService() calls this.
    /// Takes no reference.
    void addService(Service* service);
    /// Removes a service from the list, if it is there. Called when a service is destroyed.
    void destroyedService(Service* service);
    /// @}

private:
    bool mainLoadAttempted_ = false;
    bool servicesInstalled_ = false;
    zeString::IString proxyFor_;
    zeString::IString proxyError_;
    ze::Reference<Plugin> mainPlugin_; ///< Null until loaded.
    std::vector<Service*> services_;   ///< Not owned.
    zeRTB::SignalClient signalClient_; ///< Last: destroyed first.
};

} // namespace zePlugin
