// SPDX-License-Identifier: MIT

#include "Base/OS/process/zeOSOptionTrieImpl.h"

namespace zeOS::impl {

using zeString::CString;

parse* parse::child(char letter) const {
    const auto found = children_.find(letter);
    return found == children_.end() ? nullptr : found->second.get();
}

bool parse::add(const CString& name, impl::option* option) {
    parse* node = this;
    ++node->count_;
    for (unsigned int i = 0; i < name.length(); ++i) {
        ze::Reference<parse>& next = node->children_[name[i]];
        if (!next)
            next = new parse(name[i], node);
        node = next.get();
        ++node->count_;
    }
    if (node->option_ != nullptr)
        return false;
    node->option_ = option;
    return true;
}

option* parse::find(const char* text) const {
    const parse* node = this;
    for (; *text != '\0'; ++text) {
        node = node->child(*text);
        if (node == nullptr)
            return nullptr;
    }
    if (node->option_ != nullptr)
        return node->option_;
    while (node->children_.size() == 1)
        node = node->children_.begin()->second.get();
    return node->children_.empty() ? node->option_ : nullptr;
}

void parse::getShortestName(const impl::option* option, const CString& name, CString& out) const {
    out = CString();
    const parse* node = this;
    for (unsigned int i = 0; i < name.length(); ++i) {
        // Byte by byte, also within a character of UTF-8: kept for compatibility.
        if (node->option_ == option || (node->count_ == 1 && i > 0))
            return;
        out.append(name[i]);
        node = node->child(name[i]);
        if (node == nullptr)
            return;
    }
}

} // namespace zeOS::impl
