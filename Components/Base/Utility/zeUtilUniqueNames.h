// SPDX-License-Identifier: MIT

/// @file
/// Names that are made unique by a number: `mesh`, `mesh-1`, `mesh-2`.
///
/// A zeUtil::UniqueNames collects names. UniqueNames::insert() gives a name that is taken already
/// the number one above the highest that its family has, where the family of `mesh` and of
/// `mesh-7` is `mesh` with any number. With a suffix, such as ".png", the number goes before it:
/// `sky.png`, `sky-1.png`.
///
/// Names are bytes and are compared exactly. A name that is made anew is a C string: it ends at the
/// first terminator in its parts.
///
/// **What is not promised.** A number is not always new. The family is sought in the sorted order
/// of the names, up to the first number of another family: after `a` and `a b-1` (which sorts
/// before `a-1`), every further `a` gives `a-1`. With an empty separator every further `a` gives
/// `a1`.
///
/// Cost: that of looking at each name of the family.
///
/// Threads: as for any plain value, different objects may be used by different threads at once.
///
/// @code
/// zeUtil::UniqueNames names(".png");
/// assert(names.insert("sky.png") == "sky.png");
/// assert(names.insert("sky.png") == "sky-1.png");
/// assert(names.insert("sky-1.png") == "sky-2.png");
/// assert(names.getNames().size() == 3);
/// @endcode

#pragma once

#include <set>

#include "Base/Strings/zeStringCString.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

class UniqueNamesImpl;

/// The collection of names. Neither copied nor moved: to copy, insert the names of getNames() into
/// another one.
class ZEBASE_API UniqueNames {
public:
    /// No suffix, and "-" before the number.
    UniqueNames();

    /// This suffix, and "-" before the number.
    explicit UniqueNames(const zeString::CString& suffix);

    /// This suffix, and this separator before the number.
    UniqueNames(const zeString::CString& suffix, const zeString::CString& separator);

    /// Not copied.
    UniqueNames(const UniqueNames&) = delete;
    /// Not assigned.
    UniqueNames& operator=(const UniqueNames&) = delete;

    ~UniqueNames();

    /// From now on numbers go before this suffix; empty for none. Names that are in already stay.
    void setSuffix(const zeString::CString& suffix);

    /// From now on this separator stands before the number.
    void setSeparator(const zeString::CString& separator);

    /// All names that insert() has returned, in the order of their bytes.
    const std::set<zeString::CString>& getNames() const;

    /// Adds the name, numbered if it is taken, and returns what was added.
    zeString::CString insert(const zeString::CString& name);

private:
    UniqueNamesImpl* impl_;
    bool ownsImpl_;
};

} // namespace zeUtil
