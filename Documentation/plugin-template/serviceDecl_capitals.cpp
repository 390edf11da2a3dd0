// SPDX-License-Identifier: MIT
// The proxy: a small library that offers the exporter "capitals", and opens the real one,
// capitals.so, when that is first used. The program finds it by its file name, which begins with
// "serviceDecl_".

#include "Exporter.h"

namespace {

class Capitals : public Exporter {
public:
    explicit Capitals(zePlugin::PluginProxy* proxy) : Exporter(L"capitals", proxy) {}

    bool convert(const std::string& text, std::string& out) override {
        using Convert = void(const std::string&, std::string&);
        const ze::Reference<zePlugin::Plugin> real = getPluginProxy()->getMainPlugin();
        void* const function = real ? real->getSymbol("convertToCapitals") : nullptr;
        if (!function) {
            out = "The plug-in capitals.so cannot be used";
            return false;
        }
        reinterpret_cast<Convert*>(function)(text, out);
        return true;
    }
};

} // namespace

extern "C" ZEBASE_API const char* getPluginProxyName() {
    return "capitals.so"; // beside this library
}

extern "C" ZEBASE_API void installPluginServices(zePlugin::PluginProxy* proxy) {
    // The reference ends a service that is refused, because there is one of this name already.
    const ze::Reference<Exporter> service(new Capitals(proxy));
    service->registerService();
}
