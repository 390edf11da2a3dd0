// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginServiceManager.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/OS/zeOSDirectoryIterator.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Plugin/zePluginPluginLoader.h"
#include "Base/Plugin/zePluginServiceManagerImpl.h"

using zeString::IString;

namespace zePlugin {
namespace {

constexpr unsigned int npos = 0xFFFFFFFF;

/// A wide text where a format has `%s`, so that its first character alone is printed. Kept for
/// compatibility: programs compare these messages.
const char* firstCharacter(const IString& text) {
    return reinterpret_cast<const char*>(text.asWChar());
}

IString throughLocale(const IString& text) {
    return IString(text.asMultibyte());
}

bool isDirectory(const IString& path) {
    zeOS::FileStatus status;
    zeOS::File::query(zeOS::Filename(path), status);
    return status.exists() && status.isDirectory();
}

/// By name alone. The suffixes are those of files of symbols for debuggers.
bool isDeclaration(const zeOS::Filename& file) {
    constexpr std::wstring_view prefix = L"serviceDecl_";
    constexpr std::wstring_view passedOver[] = {L"pdb", L"debug", L"dSYM"};
    const std::wstring_view trunk = view(file.baseTrunk());
    return trunk.size() > prefix.size() && trunk.starts_with(prefix) &&
           std::find(std::begin(passedOver), std::end(passedOver), view(file.baseSuffix())) ==
               std::end(passedOver);
}

void installServices(PluginLoader& loader, const IString& path) {
    const zeOS::AppOutput& output = zeOS::AppOutput::getInstance();
    const ze::Reference<PluginProxy> proxy = loader.loadProxy(path);
    if (!proxy) {
        output.status.printf("Proxy failed to load: %S\n", path.asWChar());
        output.status.printf("%s\n", firstCharacter(loader.getError()));
    } else if (!proxy->installServices()) {
        output.log.printf("No services in: %S\n", path.asWChar());
    }
}

/// Enters subdirectories too.
void scan(const IString& directory) {
    PluginLoader loader;
    for (zeOS::DirectoryIterator entry(throughLocale(directory)); entry.valid(); entry.next())
        if (entry.onFile() && isDeclaration(entry.getName()))
            installServices(loader, throughLocale(entry.getName()));
}

} // namespace

ServiceManager& ServiceManager::getInstance() {
    static ServiceManager instance;
    return instance;
}

ServiceManager::ServiceManager() : impl_(new ServiceManagerImpl) {}

ServiceManager::~ServiceManager() {
    delete impl_;
}

int ServiceManager::numServiceTypes() const {
    return static_cast<int>(impl_->types.size());
}

IString ServiceManager::getServiceType(int type) const {
    return impl_->type(type).typeName;
}

int ServiceManager::getServiceIndex(const IString& type) const {
    return impl_->getServiceType(type, false);
}

unsigned int ServiceManager::getNumServices(int type) const {
    return static_cast<unsigned int>(impl_->type(type).services.size());
}

unsigned int ServiceManager::getNumServices(const IString& type) const {
    const int index = impl_->getServiceType(type, false);
    return index == -1 ? npos : getNumServices(index);
}

Service* ServiceManager::getService(int type, int index) const {
    return impl_->type(type).services[static_cast<std::size_t>(index)].get();
}

Service* ServiceManager::getService(int type, const IString& name) const {
    return impl_->type(type).findService(name);
}

Service* ServiceManager::getService(const IString& type, const IString& name) const {
    const int index = impl_->getServiceType(type, false);
    return index == -1 ? nullptr : getService(index, name);
}

bool ServiceManager::addService(Service* service) {
    if (!service)
        return false;
    ServiceForType& type = impl_->type(impl_->getServiceType(service->getType(), true));
    ze::Reference<Service> kept; // where `service` takes its own place
    if (Service* old = type.findService(service->getName())) {
        if (!old->getAllowOverride()) {
            zeOS::AppOutput::getInstance().status.printf(
                1, "Registration of a service failed.  The name is already used: %s\n",
                firstCharacter(service->getName()));
            return false;
        }
        kept = service;
        type.remove(old);
    }
    type.add(service);
    if (PluginProxy* proxy = service->getPluginProxy())
        proxy->addService(service);
    return true;
}

void ServiceManager::removeService(Service* service) {
    if (!service)
        return;
    ServiceForType& type = impl_->type(impl_->getServiceType(service->getType(), true));
    if (Service* named = type.findService(service->getName()))
        type.remove(named);
}

void ServiceManager::registerServices(const IString& subDirectory) {
    if (servicesRegistered_)
        return;
    servicesRegistered_ = true;
    std::vector<IString> directories;
    zeOS::AppMain::getInstance().getPluginDirectories(directories);
    for (const IString& directory : directories) {
        if (!isDirectory(directory))
            continue;
        if (subDirectory.isEmpty())
            scan(directory);
        else if (const IString below = zeOS::Filename::join(directory, subDirectory);
                 isDirectory(below))
            scan(below);
    }
}

} // namespace zePlugin
