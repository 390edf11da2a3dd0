// SPDX-License-Identifier: MIT

/// @file
/// The strings that a program shows, by key.
///
/// Code names a string by its zeStringTable::Key and brings a fallback; a translation replaces the
/// strings without touching the code. zeStringTable::Manager fills the application's table from a
/// catalog file; its header shows both together.
///
/// **References** to stored strings stay valid until their own entry is assigned, removed or
/// cleared, whatever happens to others.
///
/// Threads: a table takes no lock, nor does the first call of appStringTable(): load catalogs
/// before other threads read. Different threads may read one table at the same time, but may not
/// ask one stored string for its narrow form at the same time.
///
/// @code
/// zeStringTable::StringTable table;
/// table.assign("menu.open", L"\u00D6ffnen");
/// bool found = false;
/// assert(table.getString("menu.open", &found) == L"\u00D6ffnen" && found);
/// const zeString::IString fallback("Close");
/// assert(table.getString("menu.close", fallback) == L"Close");
/// @endcode

#pragma once

#include <vector>

#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeStringTableKey.h"
#include "Base/zeBaseExport.h"

namespace zeStringTable {

class StringTableImpl;

/// Wide strings in the order of their keys. Looking up, assigning and removing take time that grows
/// with the logarithm of the size.
class ZEBASE_API StringTable {
public:
    /// An empty table.
    StringTable();
    StringTable(const StringTable&) = delete; ///< Pass a reference, or assign() entry by entry.
    /// Pass a reference, or assign() entry by entry.
    StringTable& operator=(const StringTable&) = delete;
    ~StringTable();

    /// Whether there is an entry.
    bool keyExists(const Key& key) const;
    /// The stored string with `*found` true, or an empty one with `*found` false: an empty string
    /// may have been stored, too. `found` must not be null.
    const zeString::IString& getString(const Key& key, bool* found) const;
    /// The stored string, or `fallback` itself, so that the result must not outlive that. `found`
    /// may be null.
    const zeString::IString& getString(const Key& key, const zeString::IString& fallback,
                                       bool* found = nullptr) const;
    /// How many entries there are.
    unsigned int size() const;

    /// Replaces `out` by those keys for which `compareFunction(key, candidate)` is 0, in their
    /// order, and returns how many they are. Every key is compared. `key` may be one of `out`.
    unsigned int getKeys(int (*compareFunction)(const Key&, const Key&), const Key& key,
                         std::vector<Key>& out) const;
    /// The same with Key::compareSetID(): the keys of one set.
    unsigned int getKeysInSet(const Key& key, std::vector<Key>& out) const;

    /// Stores the string, over any that has this key. Always true.
    bool assign(const Key& key, const zeString::IString& value);
    /// Removes the entry, if there is one.
    void remove(const Key& key);
    /// Removes all entries.
    void clear();

private:
    StringTableImpl* impl_; ///< Owned.
};

/// The application's table: made by the first call, and never destroyed.
ZEBASE_API StringTable& appStringTable();

} // namespace zeStringTable
