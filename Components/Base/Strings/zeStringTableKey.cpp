// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringTableKey.h"

#include <vector>

#include "Base/Strings/zeStringCharacter.h"
#include "Base/Strings/zeUtilSplit.h"

namespace zeStringTable {

using zeString::CString;

namespace {

bool isNotValidCharacterForKey(char c) {
    return !zeString::isAlnum(c) && c != '.' && c != '_';
}

/// The parts between full stops. One at the end has no part behind it.
std::vector<CString> parts(const CString& text) {
    return zeUtil::split(text, '.', false, false);
}

} // namespace

Key::Key(const CString& text) : text_(text) {}

Key::Key(const char* text) : text_(text) {}

Key::Key(const Key& other) = default;

Key::~Key() = default;

Key& Key::operator=(const Key& other) = default;

Key& Key::operator=(const CString& text) {
    text_ = text;
    return *this;
}

Key& Key::operator=(const char* text) {
    text_ = text;
    return *this;
}

void Key::assign(const Key& other) {
    text_ = other.text_;
}

void Key::assign(const CString& text) {
    text_ = text;
}

void Key::assign(const char* text) {
    text_ = text;
}

int Key::compareSetID(const Key& other) const {
    CString set;
    CString otherSet;
    CString id;
    getSubParts(set, id);
    other.getSubParts(otherSet, id);
    return set.compare(otherSet);
}

bool Key::getSubParts(CString& set, CString& id) const {
    const std::vector<CString> found = parts(text_);
    const bool isPair = found.size() == 2;
    set = isPair ? found[0] : CString();
    id = isPair ? found[1] : CString();
    return isPair;
}

bool Key::isValidKeyString(const CString& text) {
    if (text.find(isNotValidCharacterForKey) != CString::npos)
        return false;
    const std::vector<CString> found = parts(text);
    return found.size() == 2 && !found[0].isEmpty() && !found[1].isEmpty();
}

} // namespace zeStringTable
