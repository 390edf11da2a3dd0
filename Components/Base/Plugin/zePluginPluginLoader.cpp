// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPluginLoader.h"

using zeString::IString;

namespace zePlugin {
namespace {

template<class Kind>
ze::Reference<Kind> loaded(const IString& path, IString& error) {
    error = IString();
    ze::Reference<Kind> plugin(new Kind(path));
    if (plugin->load())
        return plugin;
    error = plugin->getError();
    return {};
}

} // namespace

ze::Reference<Plugin> PluginLoader::load(const IString& path) {
    return loaded<Plugin>(path, error_);
}

ze::Reference<PluginProxy> PluginLoader::loadProxy(const IString& path) {
    ze::Reference<PluginProxy> proxy = loaded<PluginProxy>(path, error_);
    if (!proxy)
        return proxy;
    if (void* name = proxy->getSymbol("getPluginProxyName"))
        proxy->setProxyFor(IString(reinterpret_cast<const char* (*)()>(name)()));
    return proxy;
}

IString PluginLoader::getError() const {
    return error_;
}

} // namespace zePlugin
