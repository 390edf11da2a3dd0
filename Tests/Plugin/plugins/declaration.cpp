// SPDX-License-Identifier: MIT
// A proxy whose file name says all: "serviceDecl_text+html.so" stands for "text+html.so" and offers
// the exporters "text" and "html"; without anything between the "+", it offers none.

#include <sstream>

#include "Base/Plugin/zePluginServiceManager.h"

#include "Plugin/plugins/exporter.h"
#include "Plugin/plugins/ownName.h"

namespace {

const std::string name = ownName();
const std::string realName = name.substr(name.find('_') + 1);

class Declared : public Exporter {
public:
    using Exporter::Exporter;
    ~Declared() override {
        const auto& manager = zePlugin::ServiceManager::getInstance(); // at exit, too
        const bool listed = manager.getService(L"exporter", getName()) == this;
        journal().push_back(label() + (listed ? " is still listed" : " destroyed"));
    }

    std::string run() override {
        const ze::Reference<zePlugin::Plugin> real = getPluginProxy()->getMainPlugin();
        if (!real)
            throw ExportError(getPluginProxy()->getError().asMultibyte());
        return reinterpret_cast<const char* (*)()>(real->getSymbol("text"))();
    }

private:
    std::string label() const { return getName().asMultibyte(); }
};

struct Static {
    ~Static() { journal().push_back(label + " gone"); }
    std::string label = name;
} object;

} // namespace

extern "C" {

ZEBASE_API const char* getPluginProxyName() {
    return realName.c_str();
}

ZEBASE_API void uninitializePlugin() {
    journal().push_back(ownName() + " uninitialized");
}

ZEBASE_API void installPluginServices(zePlugin::PluginProxy* proxy) {
    std::istringstream names(realName.substr(0, realName.find('.')));
    for (std::string one; std::getline(names, one, '+');) {
        if (one.empty())
            continue;
        const ze::Reference<Exporter> service(new Declared(one.c_str(), proxy));
        service->registerService(); // a refused one ends here
    }
}

} // extern "C"
