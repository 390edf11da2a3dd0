// SPDX-License-Identifier: MIT

/// @file
/// The key of a translatable string: "set.id".
///
/// The set groups what belongs together, for example the strings of one dialog. Nothing checks a
/// text on its way into a Key: isValidKeyString() does where it comes from outside.
///
/// Threads: a Key is a value; different threads may read one at the same time.
///
/// @code
/// const zeStringTable::Key key("menu.open");
/// zeString::CString set, id;
/// assert(key.getSubParts(set, id) && set == "menu" && id == "open");
/// assert(key.compareSetID("menu.close") == 0);
/// assert(!zeStringTable::Key::isValidKeyString("menu.open.file"));
/// @endcode

#pragma once

#include <compare>

#include "Base/Strings/zeStringCString.h"
#include "Base/zeBaseExport.h"

namespace zeStringTable {

/// A text with the form of a set and an id, joined by a full stop.
class ZEBASE_API Key {
public:
    /// @{
    /// Holds the text, whatever it is. Implicit, so that a text can be passed for a key.
    Key(const zeString::CString& text);
    Key(const char* text);
    /// @}
    /// The same key.
    Key(const Key& other);
    ~Key();

    /// @{
    /// Replaces the text.
    Key& operator=(const Key& other);
    Key& operator=(const zeString::CString& text);
    Key& operator=(const char* text);
    void assign(const Key& other);
    void assign(const zeString::CString& text);
    void assign(const char* text);
    /// @}

    /// The text.
    const zeString::CString& value() const { return text_; }

    /// Order by bytes: negative, 0 or positive.
    int compare(const Key& other) const { return text_.compare(other.text_); }
    /// Order of the sets alone, as getSubParts() gives them: the set of a text that is no pair is
    /// empty.
    int compareSetID(const Key& other) const;
    /// Puts the two parts into `set` and `id`. False, with both emptied, unless there are two. The
    /// parts may be empty, and one full stop at the end does not count: ".a" and "a.b." have two.
    bool getSubParts(zeString::CString& set, zeString::CString& id) const;

    /// Whether the text consists of letters and digits (of the locale), underscores and full stops,
    /// and has two parts, neither of them empty.
    static bool isValidKeyString(const zeString::CString& text);

    /// Equality by compare().
    friend bool operator==(const Key& a, const Key& b) { return a.compare(b) == 0; }
    /// Order by compare().
    friend std::strong_ordering operator<=>(const Key& a, const Key& b) {
        return a.compare(b) <=> 0;
    }

private:
    zeString::CString text_;
};

} // namespace zeStringTable
