// SPDX-License-Identifier: MIT

/// @file
/// The locale of the process for character types, which decides how narrow text is decoded.
///
/// Only the category `LC_CTYPE` is ever read or changed: numbers, dates and messages keep their
/// form. A program starts in the "C" locale, where all but ASCII is lost; an application that takes
/// the user's locale calls setNative() on appLocale() before it converts its first text.
///
/// Threads: the locale is the whole process's, and changing it belongs to start-up, while no other
/// thread converts text; any thread may call appLocale() and read it after that.
///
/// @code
/// #include <string_view>
/// assert(zeOS::appLocale().isDefault());
/// assert(zeOS::appLocale().setLocale("C.UTF-8").code() == 0);
/// assert(std::string_view(zeOS::appLocale().codeSet().asChar()) == "UTF-8");
/// assert(zeOS::appLocale().setLocale("no such locale").code() == 4);
/// assert(zeOS::appLocale().setDefault().code() == 0);
/// @endcode

#pragma once

#include "Base/Strings/zeStringCString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// A view of the process's locale, as it was when this object last changed it or was made; what
/// others change by `setlocale` meanwhile does not show.
class ZEBASE_API Locale {
public:
    /// Remembers the current locale as the default one.
    Locale();
    Locale(const Locale&) = delete;            ///< Make another: both show the same locale.
    Locale& operator=(const Locale&) = delete; ///< Use setLocale(other.id()).
    /// Changes nothing: the locale stays as it is.
    ~Locale();

    /// Makes `id` ("C.UTF-8", "de_DE") the process's locale; an empty one is what the environment
    /// asks for (`LC_ALL`, `LC_CTYPE`, `LANG`). Error 4, and the locale stays, if the system does
    /// not have it; isDefault() is false even then.
    zeUtil::Error setLocale(const zeString::CString& id);

    /// setLocale() with the environment's locale.
    zeUtil::Error setNative();

    /// Goes back to the locale that was current when this object was made. Error 4 as above.
    zeUtil::Error setDefault();

    /// The system's name of the locale.
    const zeString::CString& id() const { return id_; }
    /// The same as id().
    const zeString::CString& clibLocale() const { return clibLocale_; }
    /// A line for people: "Locale:C.UTF-8 CodeSet:UTF-8".
    const zeString::CString& description() const { return description_; }
    /// The encoding of narrow text ("UTF-8", "ANSI_X3.4-1968"), or "CodeSet Unknown".
    const zeString::CString& codeSet() const { return codeSet_; }
    /// Whether setDefault() succeeded after the last setLocale() or setNative(), or none was
    /// called.
    bool isDefault() const { return isDefault_; }
    /// Whether a character can take more than one byte.
    bool isMultibyte() const { return isMultibyte_; }

private:
    ZEBASE_HIDDEN void initializeAttributes();

    zeString::CString id_;
    zeString::CString clibLocale_;
    zeString::CString description_;
    zeString::CString codeSet_;
    zeString::CString unused_[3]; ///< Always empty; kept for the layout.
    bool isDefault_ = true;
    bool isMultibyte_ = false;
    zeString::CString* initialLocale_; ///< Owned.
};

/// The one Locale of the application, made by the first call and never deleted. The locale at that
/// moment is its default.
ZEBASE_API Locale& appLocale();

} // namespace zeOS
