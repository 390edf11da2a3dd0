// SPDX-License-Identifier: MIT
// A proxy with one service, which is copied under many names.

#include <dlfcn.h>

#include <cstring>

#include "Base/Plugin/zePluginService.h"

namespace {

struct Declared : zePlugin::Service {
    using Service::Service;
    zeString::IString getType() const override { return L"declared"; }
};

} // namespace

extern "C" ZEBASE_API void installPluginServices(zePlugin::PluginProxy* proxy) {
    static const char here = 0;
    Dl_info info{};
    dladdr(&here, &info);
    const ze::Reference<Declared> service(
        new Declared(std::strrchr(info.dli_fname, '/') + 1, proxy));
    service->registerService();
}
