// SPDX-License-Identifier: MIT

/// @file
/// zeOS::Filename from and to `std::filesystem::path`.
///
/// A `std::filesystem::path` holds bytes and leaves them as they are; a Filename holds characters
/// in normal form, which reach the system as UTF-8. So names in UTF-8 keep their bytes both ways,
/// whatever the locale, also one that begins with a byte order mark; what has no such form gives
/// the empty path, never the name of another file. **The normal form is not that of the standard
/// library**: see zeOSFilename.h for what becomes of "/../x".
///
/// Threads: any thread may call; a Filename belongs to one thread at a time.
///
/// @code
/// const std::filesystem::path given("shots//Sch\xC3\xB6n.txt");
/// const zeOS::Filename name = zeOS::fromPath(given);
/// assert(name.basename() == L"Sch\u00F6n.txt");
/// assert(zeOS::toPath(name) == "shots/Sch\xC3\xB6n.txt");
/// bool ok = true;
/// assert(zeOS::fromPath("Sch\xF6n.txt", &ok) == zeOS::Filename() && !ok); // Latin-1
/// @endcode

#pragma once

#include <filesystem>

#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringEncoding.h"

namespace zeOS {

/// The normal form of `path`, read as UTF-8; empty, with `ok` false, if it is not UTF-8 or holds a
/// terminator. `ok` may be null.
inline Filename fromPath(const std::filesystem::path& path, bool* ok = nullptr) {
    bool clean = false;
    // Behind another character a byte order mark is part of the name.
    zeString::IString text('/' + path.native(), zeString::EncodingUTF8, &clean);
    clean = clean && path.native().find('\0') == std::string::npos;
    if (ok)
        *ok = clean;
    return clean ? Filename(text.erase(0, 1)) : Filename();
}

/// The path in UTF-8; empty if a character has no such form.
inline std::filesystem::path toPath(const Filename& name) {
    const unsigned int size = name.path().asUTF8StoreSize();
    return std::string(name.path().asUTF8(), size - 1);
}

} // namespace zeOS
