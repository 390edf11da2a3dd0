// SPDX-License-Identifier: MIT

/// @file
/// The names of all options, letter by letter: finds an option by the beginning of a name.

#pragma once

#include <map>

#include "Base/OS/process/zeOSOptionImpl.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zeOS::impl {

/// One node of the trie, and by its root the whole of it. Options are not owned.
class parse : public ze::ReferenceCount {
public:
    /// A root.
    parse() = default;
    /// The node that `letter` leads to from `parent`.
    parse(char letter, parse* parent) : character_(letter), parent_(parent) {}

    /// Enters a name at the root. False if another option has it; the letters count all the same,
    /// so that a refused name lengthens the shortest names of others.
    bool add(const zeString::CString& name, option* option);

    /// The option whose name this is, or the only one whose name begins so; null if there is none,
    /// or more than one. An exact name wins over longer ones. A name that ends on the way to a
    /// longer one does not make a beginning ambiguous: with `ab` and `abcd`, `a` is `abcd`.
    option* find(const char* text) const;

    /// `name` up to where no other call of add() came past, in whole characters, or up to a name of
    /// this option. That it stands for the option is sure; find() may take a shorter one too.
    void getShortestName(const option* option, const zeString::CString& name,
                         zeString::CString& out) const;

private:
    parse* child(char letter) const; ///< Null if there is none.

    char character_ = '\n'; ///< Leads here. The root's is one that no name has.
    int count_ = 0;         ///< How many calls of add() came past.
    parse* parent_ = nullptr;
    impl::option* option_ = nullptr; ///< Whose name ends here.
    std::map<char, ze::Reference<parse>> children_;
};

} // namespace zeOS::impl
