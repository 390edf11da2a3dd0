// SPDX-License-Identifier: MIT

/// @file
/// The program's arguments, and where the program, this library and its plug-ins lie on disk.
///
/// A program hands its arguments over at the top of `main`, after `setlocale`: arguments and paths
/// are decoded in the locale's encoding, which is ASCII in the "C" locale that a program starts in.
/// Nothing here reports an error: a place that cannot be found is an empty text.
///
/// **Places are texts of the moment when they were asked for first.** They are kept, also when the
/// process changes its current directory, and a relative one stays relative: ask early. The
/// application's place comes from the name that it was started by, which the parent process
/// chooses, and from "PATH": do not load code from it in a program that runs with rights that its
/// caller lacks. getPluginDirectories() includes that place.
///
/// Threads: any thread may call, but initialize(), addDirectoryToPath() and
/// removeDirectoryFromPath() belong to start-up: they must not overlap with other calls. A text
/// that is returned by reference is the same object for all threads: copy it before asking for its
/// narrow form.
///
/// @code
/// const char* const arguments[] = {"/bin/sh", "-v", nullptr};
/// const char* const environment[] = {nullptr};
/// zeOS::AppMain& app = zeOS::AppMain::getInstance();
/// app.initialize(2, arguments, environment);
/// std::vector<zeString::IString> given;
/// app.getArgs(given);
/// assert(given.size() == 2 && given[1] == L"-v");
/// assert(app.getAppName() == L"sh" && app.getAppLocation() == L"/bin");
/// @endcode

#pragma once

#include <vector>

#include "Base/OS/zeOSSearchPath.h"
#include "Base/OS/zeOSStopWatch.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// The process as a program: its arguments and its places.
class ZEBASE_API AppMain {
public:
    /// The only one. It is made on the first call, so that getElapsed() counts from there.
    static AppMain& getInstance();

    AppMain(const AppMain&) = delete;            ///< Pass a reference.
    AppMain& operator=(const AppMain&) = delete; ///< Pass a reference.

    /// @{
    /// Keeps what `main` was given: `argc` arguments, the program's name first, and the
    /// environment. Nothing is copied. The arrays stay the caller's, and must remain as they are.
    /// The narrow form does not touch what the wide one kept, nor the reverse. Where both were
    /// called, narrow arguments come first, and `argc` is that of the last call: it must hold for
    /// both.
    void initialize(int argc, char const* const* argv, char const* const* envp);
    void initialize(int argc, wchar_t const* const* argv, wchar_t const* const* envp);
    /// @}
    /// Whether initialize() was not called yet: true in static constructors.
    bool preMain() const { return argc_ == -1; }

    /// The seconds since the first call of getInstance().
    double getElapsed() const;

    /// Replaces the content of `arguments` by the arguments, the program's name first; none before
    /// initialize().
    void getArgs(std::vector<zeString::IString>& arguments);
    /// The program's name without its directory part. Like getAppLocation() and
    /// getPluginDirectories() it requires that initialize() was called.
    const zeString::IString& getAppName();

    /// The directory of the program's file, as far as the program's name says: its directory part,
    /// if there is such a file, or else the directory of "PATH" that has one. Relative if that is
    /// relative: "." for a program that was started as `./tool`. As long as it is not found, each
    /// call looks again.
    const zeString::IString& getAppLocation();
    /// The directory of this library's file; if the library is linked statically, that of the
    /// program or plug-in that holds it.
    const zeString::IString& getBaseLocation();
    /// The parent of getBaseLocation(). The argument is not used.
    const zeString::IString& getRuntimeDirectory(const char* unused);
    /// Puts the parent of getRuntimeDirectory() into `out`. False if that is empty.
    bool getBuildRootDirectory(zeString::IString& out);

    /// Adds the directories of plug-ins that exist, and that `directories` does not hold yet, in
    /// this order: "plug-ins" below getBaseLocation() and below getAppLocation(), then
    /// "bin/plug-ins" and "plug-ins" below getRuntimeDirectory(), and "bin/plug-ins" below the
    /// parent of that. A place that is not known leaves a relative name, below the current
    /// directory.
    void getPluginDirectories(std::vector<zeString::IString>& directories);

    /// @name Programs in PATH
    /// The environment variable "PATH" is read once, by the first call that needs it. An unset one
    /// counts as empty. Only directories that existed then are searched.
    /// @{

    /// Reads "PATH" now, unless that was done.
    void initializePath();
    /// The directory in which SearchPath::findFile() finds `name`; empty if there is none.
    zeString::IString searchPathFor(const zeString::IString& name);
    /// Adds an existing directory at the end of the list. False if it is no directory. The
    /// environment variable stays as it is.
    bool addDirectoryToPath(const zeString::IString& dir);
    /// Removes a directory from the list. False if it is not there.
    bool removeDirectoryFromPath(const zeString::IString& dir);
    /// @}

    /// Does nothing. Kept for compatibility, as an address that lies in this library.
    static void location();

private:
    ZEBASE_HIDDEN AppMain();
    ZEBASE_HIDDEN zeString::IString programName() const;
    ZEBASE_HIDDEN zeString::IString findAppLocation();

    int argc_ = -1;
    char const* const* argv_ = nullptr; // not owned, as the next three
    char const* const* envp_ = nullptr;
    wchar_t const* const* wargv_ = nullptr;
    wchar_t const* const* wenvp_ = nullptr;
    zeString::IString appName_; // empty until asked for, as the next four
    zeString::IString appLocation_;
    zeString::IString baseLocation_;
    zeString::IString runtimeDirectory_;
    zeString::IString buildRootDirectory_;
    bool buildRootKnown_ = false; // kept for compatibility
    SearchPath searchPath_;
    StopWatch timer_;
};

} // namespace zeOS
