// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringTableStringTable.h"

#include <cassert>
#include <map>

namespace zeStringTable {

using zeString::IString;

class StringTableImpl {
public:
    std::map<Key, IString> entries;
    IString emptyValue; ///< what a lookup without a result refers to
};

namespace {

int compareKeyBySet(const Key& a, const Key& b) {
    return a.compareSetID(b);
}

} // namespace

StringTable::StringTable() : impl_(new StringTableImpl) {}

StringTable::~StringTable() {
    delete impl_;
}

bool StringTable::keyExists(const Key& key) const {
    return impl_->entries.contains(key);
}

const IString& StringTable::getString(const Key& key, bool* found) const {
    assert(found);
    return getString(key, impl_->emptyValue, found);
}

const IString& StringTable::getString(const Key& key, const IString& fallback, bool* found) const {
    const auto entry = impl_->entries.find(key);
    const bool exists = entry != impl_->entries.end();
    if (found)
        *found = exists;
    return exists ? entry->second : fallback;
}

unsigned int StringTable::size() const {
    return static_cast<unsigned int>(impl_->entries.size());
}

unsigned int StringTable::getKeys(int (*compareFunction)(const Key&, const Key&), const Key& key,
                                  std::vector<Key>& out) const {
    std::vector<Key> found; // `key` may be one of `out`
    for (const auto& [candidate, value] : impl_->entries)
        if (compareFunction(key, candidate) == 0)
            found.push_back(candidate);
    out.swap(found);
    return static_cast<unsigned int>(out.size());
}

unsigned int StringTable::getKeysInSet(const Key& key, std::vector<Key>& out) const {
    return getKeys(compareKeyBySet, key, out);
}

bool StringTable::assign(const Key& key, const IString& value) {
    impl_->entries[key] = value;
    return true;
}

void StringTable::remove(const Key& key) {
    impl_->entries.erase(key);
}

void StringTable::clear() {
    impl_->entries.clear();
}

StringTable& appStringTable() {
    // Never destroyed: destructors of an application's statics may still ask for strings.
    static StringTable& table = *new StringTable;
    return table;
}

} // namespace zeStringTable
