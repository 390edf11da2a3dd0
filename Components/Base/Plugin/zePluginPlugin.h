// SPDX-License-Identifier: MIT

/// @file
/// A library that is loaded while the program runs: zePlugin::Plugin.
///
/// Load one with zePlugin::PluginLoader, which gives a counted reference. The last reference closes
/// the library: nothing of it may be used from then on, neither code nor data, nor an object whose
/// class or whose destructor lies in it. `Documentation/plugins.md` says on one page who may hold
/// what, and holds a plug-in to start from.
///
/// **What a plug-in exports.** Up to four functions, all with C linkage and default visibility, all
/// optional. They must not let an exception out.
///
/// | Function | Called |
/// |---|---|
/// | `extern "C" void initializePlugin()` | after each successful load() |
/// | `extern "C" void uninitializePlugin()` | before the library is closed |
/// | `extern "C" const char* getPluginProxyName()` | by PluginLoader::loadProxy() |
/// | `extern "C" void installPluginServices(zePlugin::PluginProxy*)` | by PluginProxy::installServices() |
///
/// **Security.** Loading runs the library's code with all rights of the process: its static
/// constructors run before anything can be looked at. Whoever can write the file, or a directory
/// above it, runs code in the process. A file that is damaged inside can end the process; one that
/// was cut off, and what is neither a file nor a directory (a pipe would be waited for), is refused
/// unopened.
///
/// **Names.** The file is found by its path in UTF-8. A path without a "/" is not looked for in the
/// current directory, but where the system keeps libraries: write "./x.so". The dynamic linker
/// replaces "$ORIGIN", "$LIB" and "$PLATFORM" in a path.
///
/// Threads: all plug-ins, proxies and services belong to one thread, usually the one that starts
/// the program; counts and signals are not locked.
///
/// @code
/// #include "Base/zeBaseExport.h"
/// zePlugin::Plugin library("/no/such/plugin.so");
/// assert(library.getName() == L"plugin");
/// assert(!library.load() && library.getError().isEmpty()); // a missing file gives no text
/// assert(library.getSymbol("initializePlugin") == nullptr);
/// @endcode

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zePlugin {

class PluginImpl;

/// One library, loaded or not. Neither copied nor moved: share it by ze::Reference.
class ZEBASE_API Plugin : public ze::ReferenceCount {
public:
    /// A library by the path of its file. Touches nothing on disk.
    explicit Plugin(const zeString::IString& filename);
    Plugin(const Plugin&) = delete;            ///< Share it by ze::Reference.
    Plugin& operator=(const Plugin&) = delete; ///< Share it by ze::Reference.

    /// Sends unloadSignal and ends its connections, calls the library's `uninitializePlugin`, and
    /// closes the library, unless it was not loaded or finallyUnload() said no.
    ~Plugin() override;

    /// What went wrong in the last load() or getSymbol(); empty if nothing did. The text is the
    /// dynamic linker's, where it has one.
    virtual zeString::IString getError() const;

    /// Opens the library, and calls its `initializePlugin`. False if that failed; getError() says
    /// why, but is empty if there is no such file. After a success it may hold the text about a
    /// missing `initializePlugin`, which is no failure.
    ///
    /// Symbols are bound when they are first used, and are not seen by other libraries (`RTLD_LAZY`
    /// alone). A second call opens the library again and calls `initializePlugin` again; since it
    /// is closed once, it then stays in memory until the process ends.
    bool load();

    /// The address of a function or variable that the library exports. Null if there is none, with
    /// the reason in getError(), or if the library is not loaded, without one. The library's own
    /// dependencies are searched too.
    void* getSymbol(const zeString::IString& name);

    /// @{
    /// The file's base name without its suffix, and its whole path. What the locale's encoding
    /// cannot hold comes back as "?".
    zeString::IString getName() const;
    zeString::IString getFilename() const;
    /// @}

    /// Whether the destructor closes the library, true at first. False keeps it in memory until the
    /// process ends, and `uninitializePlugin` is not called: for a library whose code may still be
    /// needed, as by a thread that it started or a callback that it left behind.
    void finallyUnload(bool unload);

    /// Sent at the start of the destructor, with the library still open. **The count is 0 then**: a
    /// callback that makes a ze::Reference to the plug-in destroys it twice.
    zeRTB::SignalArg<Plugin*> unloadSignal;

private:
    friend class PluginProxy;
    ZEBASE_HIDDEN zeString::IString directory() const;

    PluginImpl* impl_; ///< Owned.
};

} // namespace zePlugin
