// SPDX-License-Identifier: MIT

/// @file
/// The table of all services of the process, by type and name: zePlugin::ServiceManager.
///
/// A program registers services of its own with Service::registerService(), finds those of plug-ins
/// with registerServices(), and looks services up by type and name. Both are compared exactly.
///
/// **Ownership.** The table holds a reference to each service, until it is removed, replaced, or
/// the process ends. What the queries give is not owned: make a ze::Reference of what you keep, and
/// release it with Service::destroyReference().
///
/// **At exit** the table is destroyed with the static objects of the program, and releases its
/// services, type by type and first to last. Static objects of plug-ins that were loaded since the
/// table was first used are gone by then: a service's destructor must not use them. A program that
/// wants its plug-ins closed earlier removes its services at the end of `main`.
///
/// **Errors** are messages of zeOS::AppOutput, and never stop a scan.
///
/// Threads: one thread for all plug-ins, proxies and services; any thread may call getInstance().
///
/// @code
/// const auto& manager = zePlugin::ServiceManager::getInstance();
/// assert(manager.getServiceIndex(L"no such type") == -1);
/// assert(manager.getNumServices(L"no such type") == 0xFFFFFFFFu);
/// assert(manager.getService(L"no such type", L"any") == nullptr);
/// @endcode

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zePlugin {

class Service;
class ServiceManagerImpl;

/// The table. Types have indices in the order of their first use, which never change; services have
/// indices in the order of registration within their type, which change when one before is removed.
/// Finding a type or a service by name takes the same time however many there are.
class ZEBASE_API ServiceManager {
public:
    /// The only one, made on the first call.
    static ServiceManager& getInstance();

    ServiceManager(const ServiceManager&) = delete;            ///< Pass a reference.
    ServiceManager& operator=(const ServiceManager&) = delete; ///< Pass a reference.
    /// Releases all services.
    virtual ~ServiceManager();

    /// @name Types
    /// @{

    /// The number of types, those without services included.
    int numServiceTypes() const;
    /// The name of a type. `type` must be one from 0 to numServiceTypes() - 1, as in all that
    /// follows.
    zeString::IString getServiceType(int type) const;
    /// The index of a type, or -1.
    int getServiceIndex(const zeString::IString& type) const;
    /// @}

    /// @name Services
    /// @{

    /// The number of services of a type.
    unsigned int getNumServices(int type) const;
    /// The same by name. 0xFFFFFFFF, not 0, if there is no such type.
    unsigned int getNumServices(const zeString::IString& type) const;
    /// A service. `index` must be less than getNumServices(type).
    Service* getService(int type, int index) const;
    /// A service by name, or null.
    Service* getService(int type, const zeString::IString& name) const;
    /// The same; null also if there is no such type.
    Service* getService(const zeString::IString& type, const zeString::IString& name) const;
    /// @}

    /// Adds a service at the end of its type, which is made if it is new, and to the list of its
    /// proxy. False if `service` is null, or if its name is taken by a service that does not allow
    /// it: then zeOS::AppOutput::status says so at level 1, with the first character of the name.
    /// The service that was there decides, and if it allows it, it is removed.
    ///
    /// A refused service belongs to the caller still; hold new services by a ze::Reference.
    bool addService(Service* service);

    /// Removes the service of this type and **name**, whether it is this object or another. Null is
    /// ignored. A type that is new is made.
    void removeService(Service* service);

    /// Finds the services of plug-ins. Only the first call in a process does anything.
    ///
    /// Each directory of zeOS::AppMain::getPluginDirectories() is searched, with all that lies
    /// below it; or, if `subDirectory` is not empty, the directory of that name in each. What does
    /// not exist is passed over. A file of whatever kind whose name begins with "serviceDecl_", and
    /// goes on before its last ".", is loaded as a proxy and its services are installed; files that
    /// end in ".pdb", ".debug" and ".dSYM" are not. So "serviceDecl_text.so" counts,
    /// "serviceDecl_.so" does not.
    /// **The order within a directory is that of the disk**, so that it is open which of two
    /// plug-ins with the same service comes first, and wins.
    ///
    /// zeOS::AppOutput::status tells, at any level, which files could not be loaded, each with the
    /// first character of the reason on a line of its own, and zeOS::AppOutput::log which had no
    /// services; those are closed again. Paths go through the locale's encoding: a file whose path
    /// it cannot hold is not found.
    ///
    /// Requires zeOS::AppMain::initialize(). Costs what opening the libraries costs; the real
    /// plug-ins are not opened.
    void registerServices(const zeString::IString& subDirectory);

private:
    ZEBASE_HIDDEN ServiceManager();

    ServiceManagerImpl* impl_; ///< Owned.
    bool servicesRegistered_ = false;
};

} // namespace zePlugin
