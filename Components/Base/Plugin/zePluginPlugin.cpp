// SPDX-License-Identifier: MIT

#include "Base/Plugin/zePluginPlugin.h"

#include <dlfcn.h>

#include <memory>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Plugin/zePluginFileImpl.h"

using zeString::IString;

namespace zePlugin {
namespace {

enum class PluginError { Load = 0, Symbol = 1 };

/// What is left of a text in the locale's encoding.
IString throughLocale(const IString& text) {
    return IString(text.asMultibyte());
}

} // namespace

class PluginImpl : public ze::ImplBase {
public:
    explicit PluginImpl(const IString& name) : filename(name) {}

    bool load();
    void* getSymbol(const IString& name);
    void unload();

    zeOS::Filename filename;
    IString error; ///< Of the last operation; empty if there was none.
    bool loaded = false;
    bool unloadAtEnd = true;
    void* handle = nullptr; ///< From `dlopen`.

private:
    void open(const zeOS::FileStatus& status);
    void callIfExported(const char* name);
    void setError(PluginError kind, const IString& what);
};

bool PluginImpl::load() {
    error = IString();
    zeOS::FileStatus status;
    zeOS::File::query(filename, status);
    if (!status.exists())
        return false; // without a text: callers rely on that, and tell a missing file by it
    open(status);
    if (handle) {
        loaded = true;
    } else if (!loaded) {
        setError(PluginError::Load, filename.path());
        return false;
    }
    // If it was loaded before and cannot be opened again, a null handle stands for the program.
    callIfExported("initializePlugin");
    return loaded;
}

void PluginImpl::open(const zeOS::FileStatus& status) {
    ::dlerror(); // an error that the program did not ask for is not the reason of a refusal
    const char* path = filename.path().asUTF8();
    // What is loaded is found by its name: its file is not read again, whatever became of it.
    handle = loaded || canBeOpened(path, status) ? ::dlopen(path, RTLD_LAZY) : nullptr;
}

void* PluginImpl::getSymbol(const IString& name) {
    error = IString();
    if (!loaded)
        return nullptr;
    void* address = ::dlsym(handle, name.asMultibyte());
    if (!address)
        setError(PluginError::Symbol, name);
    return address;
}

void PluginImpl::unload() {
    error = IString();
    if (!loaded || !unloadAtEnd)
        return;
    callIfExported("uninitializePlugin");
    loaded = false;
    if (handle)
        ::dlclose(handle);
    handle = nullptr;
}

/// A missing function leaves its text in `error`, which callers see after a successful load.
void PluginImpl::callIfExported(const char* name) {
    if (const auto function = reinterpret_cast<void (*)()>(getSymbol(name)))
        function();
}

void PluginImpl::setError(PluginError kind, const IString& what) {
    error = IString(::dlerror());
    if (!error.isEmpty())
        return;
    error.format(kind == PluginError::Load ? "Plugin: could not load plugin: %s\n"
                                           : "Plugin: could not find symbol: %s\n",
                 what.asMultibyte());
}

Plugin::Plugin(const IString& filename) : impl_(new PluginImpl(filename)) {}

Plugin::~Plugin() {
    unloadSignal.send(this);
    // Function objects that the library connected are of its code, and go before it.
    std::destroy_at(&unloadSignal);
    std::construct_at(&unloadSignal);
    impl_->unload();
    delete impl_;
}

IString Plugin::getError() const {
    return impl_->error;
}

bool Plugin::load() {
    return impl_->load();
}

void* Plugin::getSymbol(const IString& name) {
    return impl_->getSymbol(name);
}

IString Plugin::getName() const {
    return throughLocale(impl_->filename.baseTrunk());
}

IString Plugin::getFilename() const {
    return throughLocale(impl_->filename.path());
}

void Plugin::finallyUnload(bool unload) {
    impl_->unloadAtEnd = unload;
}

/// Unlike getFilename() with all characters, so that what lies beside the file is found.
IString Plugin::directory() const {
    return impl_->filename.dirname();
}

} // namespace zePlugin
