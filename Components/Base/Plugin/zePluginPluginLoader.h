// SPDX-License-Identifier: MIT

/// @file
/// Loads plug-ins and says why one could not be loaded: zePlugin::PluginLoader.
///
/// Threads: all plug-ins, proxies and services belong to one thread.
///
/// @code
/// zePlugin::PluginLoader loader;
/// const ze::Reference<zePlugin::Plugin> none = loader.load("/dev/null");
/// assert(!none && loader.getError() == L"Plugin: could not load plugin: /dev/null\n");
/// @endcode

#pragma once

#include "Base/Plugin/zePluginPlugin.h"
#include "Base/Plugin/zePluginPluginProxy.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zePlugin {

/// A value for the stack: one serves any number of loads. What it loaded does not depend on it.
class ZEBASE_API PluginLoader {
public:
    /// Loads the library at `path` as Plugin::load() does. Null if that failed.
    ze::Reference<Plugin> load(const zeString::IString& path);

    /// The same as a proxy, which is then told the name that the library's `getPluginProxyName`
    /// gives, decoded in the locale's encoding; null counts as empty. A library without this
    /// function is a proxy for nothing.
    ze::Reference<PluginProxy> loadProxy(const zeString::IString& path);

    /// Why the last load failed: Plugin::getError(), which is empty for a missing file. Empty after
    /// a success.
    zeString::IString getError() const;

private:
    zeString::IString error_;
};

} // namespace zePlugin
