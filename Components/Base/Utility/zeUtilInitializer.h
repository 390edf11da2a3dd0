// SPDX-License-Identifier: MIT

/// @file
/// One-time initialisers, run in dependency order at start-up and in reverse at shut-down.
///
/// See zeUtil::Initializer for the contract.

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

/// Base of initialisers.
///
/// An Initializer is normally a file-scope static: defining it registers it. The application calls
/// initializeAll() once, when its statics are constructed, and finalizeAll() once before it exits;
/// the library calls neither. Registration is safe from the static constructors of any translation
/// unit, in any order. A registered object is never removed from the registry, so it must live
/// until the last call of initializeAll() and finalizeAll().
///
/// Threads: everything here belongs to the one thread of start-up and shut-down.
///
/// @code
/// struct Fonts : zeUtil::Initializer {
///     zeUtil::Error initialize() override { return zeUtil::Error(); }
/// };
/// struct Menus : zeUtil::Initializer {
///     explicit Menus(Fonts& fonts) { dependsOn(&fonts); }
///     zeUtil::Error initialize() override { return zeUtil::Error(); }
/// };
/// static Fonts fonts;
/// static Menus menus(fonts);
/// assert(zeUtil::Initializer::initializeAll().code() == 0); // fonts, then menus
/// zeUtil::Initializer::finalizeAll();                       // menus, then fonts
/// @endcode
class ZEBASE_API Initializer {
public:
    /// Registers the object.
    Initializer() : label_("Components/Base/Utility/zeUtilInitializer") { addInit(); }
    Initializer(const Initializer&) = delete; ///< An initialiser is known by its address.
    Initializer& operator=(const Initializer&) = delete;

    /// Does the work. Any code but 0 ends the start-up.
    virtual Error initialize() = 0;

    /// Undoes it. Called even if initialize() failed or was never reached. Does nothing by default.
    virtual void finalize();

    virtual ~Initializer();

    /// Appends this object to the registry; the constructor has done so already, and a member
    /// that is there twice runs twice.
    void addInit();

    /// Has `other`, which must not be null, initialised before this object. A circle of
    /// dependencies is a programming error: initializeAll() does not return.
    void dependsOn(Initializer* other);

    /// Runs every initialiser, dependencies first, and stops at the first failure, which it returns
    /// unchanged. Members without an order among them run in any order. A process initialises once:
    /// after the first call, failed or not, the result is code 1. An initialize() may register
    /// further members; they run last. The cost grows with the number of paths through the
    /// dependencies.
    static Error initializeAll();

    /// Finalises every registered member in exactly the reverse order of initializeAll(), also
    /// those that were never initialised.
    static void finalizeAll();

private:
    [[maybe_unused]] const char* label_;
    int count_ = 0; ///< the number of dependency paths that end here; 0 until initializeAll()
};

} // namespace zeUtil
