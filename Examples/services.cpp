// SPDX-License-Identifier: MIT

// Services: objects of one type that a program finds by name, its own and those of plug-ins.
// Whoever uses one does not know where it comes from. Documentation/plugin-template is a plug-in to
// start from.
//
//     $ services
//     plain: the text as it is
//     shout: the text in capitals
//     $ services shout "Good morning"
//     GOOD MORNING
//     $ services --louder shout "Good morning"
//     GOOD MORNING!!!
//     $ services sing "Good morning"
//     There is no style sing.
//
// Plug-ins lie beside the program. One that cannot be loaded is reported, with the first character
// of the reason, and stops nothing; loading it by hand gives the whole reason.
//
//     $ cp "$(command -v services)" . && mkdir plug-ins
//     $ echo 'not a library' > plug-ins/serviceDecl_sing.so
//     $ ./services plain "Good morning"
//     Proxy failed to load: ./plug-ins/serviceDecl_sing.so
//     .
//     Good morning
//     $ ./services --why ./plug-ins/serviceDecl_sing.so
//     ./plug-ins/serviceDecl_sing.so: file too short

#include <clocale>
#include <cstdio>
#include <cstring>

#include "Base/OS/zeOSAppMain.h"
#include "Base/OS/zeOSAppOutput.h"
#include "Base/Plugin/zePluginPluginLoader.h"
#include "Base/Plugin/zePluginService.h"
#include "Base/Plugin/zePluginServiceManager.h"

namespace {

using zePlugin::Service;
using zePlugin::ServiceManager;
using zeString::IString;

/// A type of service: a class that all services of the type derive from, and a name for it.
class Style : public Service {
public:
    using Service::Service;
    IString getType() const override { return L"style"; }

    virtual const char* summary() const = 0;
    virtual IString apply(const IString& text) const = 0;
};

class Plain : public Style {
public:
    Plain() : Style(L"plain", false) {} // nobody takes its place

    const char* summary() const override { return "the text as it is"; }
    IString apply(const IString& text) const override { return text; }
};

class Shout : public Style {
public:
    explicit Shout(const wchar_t* end) : Style(L"shout", true), end_(end) {} // another one may

    const char* summary() const override { return "the text in capitals"; }
    IString apply(const IString& text) const override {
        IString result(text);
        return result.toUpperCase().append(end_);
    }

private:
    const wchar_t* end_;
};

void list(const ServiceManager& manager) {
    const int type = manager.getServiceIndex(L"style");
    for (int i = 0; i < static_cast<int>(manager.getNumServices(type)); ++i) {
        const auto* style = static_cast<const Style*>(manager.getService(type, i));
        std::printf("%s: %s\n", style->getName().asMultibyte(), style->summary());
    }
}

/// What went wrong with a plug-in, in full.
int explain(const char* path) {
    zePlugin::PluginLoader loader;
    const auto proxy = loader.loadProxy(path);
    const IString reason = proxy ? L"Nothing is wrong." : loader.getError();
    std::printf("%s\n", reason.isEmpty() ? "There is no such file." : reason.asMultibyte());
    return proxy ? 0 : 1;
}

} // namespace

int main(int argc, char** argv, char** envp) {
    std::setlocale(LC_ALL, "");
    zeOS::AppMain::getInstance().initialize(argc, argv, envp);
    zeOS::AppOutput::getInstance().status.open("-", false); // for what the search has to say
    if (argc == 3 && std::strcmp(argv[1], "--why") == 0)
        return explain(argv[2]);

    ServiceManager& manager = ServiceManager::getInstance(); // owns what is registered
    (new Plain)->registerService();
    (new Shout(L""))->registerService();
    if (argc > 1 && std::strcmp(argv[1], "--louder") == 0) {
        (new Shout(L"!!!"))->registerService(); // in place of the first
        ++argv, --argc;
    }
    manager.registerServices(L""); // those of plug-ins

    if (argc != 3) {
        list(manager);
        return argc == 1 ? 0 : 2;
    }
    const auto* style = static_cast<const Style*>(manager.getService(L"style", argv[1]));
    if (!style) {
        std::printf("There is no style %s.\n", argv[1]);
        return 1;
    }
    std::printf("%s\n", style->apply(argv[2]).asMultibyte());
    return 0;
}
