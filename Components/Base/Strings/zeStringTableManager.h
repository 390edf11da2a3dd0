// SPDX-License-Identifier: MIT

/// @file
/// Reads catalogs of strings into the application's table.
///
/// A catalog is a text file in UTF-8 with an entry on each line: a key of a set and an id, a blank,
/// "=", and a string in double quotes, where `\n` and `\t` stand for a line feed and a tab, and two
/// quotes, or a backslash and a quote, for one. A line that begins with "//" is a comment.
///
/// ~~~
/// // The menu bar
/// menu.open = "Öffnen"
/// menu.about = "Über ""Atelier"", Version {1}"
/// ~~~
///
/// Documentation/formats.md holds the whole grammar. What surprises: **a key without a blank
/// before "=" loses its last character**, and is stored under what remains; there is no comment
/// after a value; a backslash at the end of a line joins the next one without a blank; an entry
/// that is still open at the end of the file is dropped; a line of more than 4097 bytes is read as
/// several.
///
/// A catalog **adds** to what the table holds, and a key that is there already takes the later
/// string. The first error ends the reading; the entries before it stay in the table. Error codes:
///
/// | Code | What happened |
/// |---|---|
/// | 1 | the file cannot be opened |
/// | 2 | the file cannot be read, for example because it is a directory |
/// | 3 | an entry is not of the form above |
/// | 4 | the table did not take an entry |
/// | 5 | a line is not UTF-8, or consists of a byte order mark alone |
///
/// The message of 3 and 5 gives the number of the line, counting from 1, the file and the text.
///
/// Whoever writes a catalog decides what the program shows: **a string from a catalog that others
/// may write must not be a format**, since its "%" would choose how many arguments are read. Pass
/// it as an argument of "%S". The whole file is read, so that a device or a pipe without an end
/// keeps the call from returning.
///
/// Threads: as zeStringTable::appStringTable(), into which it writes without a lock: load catalogs
/// before other threads read.
///
/// @code
/// #include "Base/Strings/zeStringIString.h"
/// #include "Base/Strings/zeStringTableStringTable.h"
/// const zeUtil::Error error = zeStringTable::Manager::loadCatalog("/missing/de.cat");
/// assert(error.code() == 1); // Can't open catalog file /missing/de.cat for read: …
/// // The text in the code is the fallback, so that a program works without a catalog.
/// const zeString::IString fallback("Open");
/// assert(zeStringTable::appStringTable().getString("menu.open", fallback) == L"Open");
/// @endcode

#pragma once

#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {
class Filename;
}

namespace zeString {
class IString;
}

namespace zeStringTable {

/// Fills the application's table.
class ZEBASE_API Manager {
public:
    /// @{
    /// Reads a catalog file into appStringTable().
    static zeUtil::Error loadCatalog(const zeOS::Filename& file);
    static zeUtil::Error loadCatalog(const zeString::IString& file);
    /// @}
};

/// What Manager stands on.
class ZEBASE_API FileUtil {
public:
    /// The same as Manager::loadCatalog().
    static zeUtil::Error readCatalogFile(const zeOS::Filename& file);
};

} // namespace zeStringTable
