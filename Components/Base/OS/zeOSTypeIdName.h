// SPDX-License-Identifier: MIT

/// @file
/// Readable names of types for messages, from what `typeid(...).name()` gives.
///
/// Not a full demangler: it reads a name from left to right without looking back further than one
/// name, so that the common class names come out right, and the arguments of templates often lack a
/// comma or a bracket. It takes any text, and time and memory linear in its length, but for texts
/// that repeat a back-reference, where the result can have the square of it.
///
/// Threads: any thread may call the form with two arguments; calls of the other must not overlap.
///
/// @code
/// #include "Base/Strings/zeStringCString.h"
/// zeString::CString name;
/// zeOS::cleanupTypeIdName("N3foo3barE", name);
/// assert(name == "foo::bar");
/// zeOS::cleanupTypeIdName("PKc", name);
/// assert(name == "const char *");
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeString {
class CString;
}

namespace zeOS {

/// Puts the readable form of `mangled` into `out`. Null counts as empty.
///
/// Classes in namespaces, pointers, `const`, the built-in types and the abbreviations of the
/// standard library are understood; what is not stays as it is. `a` (signed char) reads "unsigned
/// char" like `h`, and every back-reference stands for the last name, whatever its number: kept for
/// compatibility.
ZEBASE_API void cleanupTypeIdName(const char* mangled, zeString::CString& out);

/// The readable form of `mangled`, valid until the next call of this function.
ZEBASE_API const char* cleanupTypeIdName(const char* mangled);

} // namespace zeOS
