// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilUniqueNames.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Base/Utility/zeReferenceCount.h"

namespace zeUtil {

using zeString::CString;

namespace {

/// The view ends where its text does, with a terminator behind it.
std::string_view viewOf(const CString& text) {
    return {text.asChar(), text.length()};
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

class UniqueNamesImpl : public ze::ImplBase {
public:
    UniqueNamesImpl(const CString& suffix, const CString& separator)
        : suffix_(suffix), separator_(separator) {}

    CString insert(const CString& name) {
        if (names_.insert(name).second)
            return name;
        std::string_view base = viewOf(name);
        // A name that is nothing but the suffix keeps it; an entry below does not.
        const bool hasSuffix = base.length() > suffix_.length() && removeSuffix(base);
        const std::string_view stem = basenameOf(base);
        const unsigned long next = static_cast<unsigned long>(highestOf(stem, hasSuffix)) + 1;
        CString unique;
        unique.format("%s%s%d", CString(stem.data(), static_cast<int>(stem.length())).asChar(),
                      separator_.asChar(), static_cast<int>(static_cast<unsigned int>(next)));
        if (hasSuffix)
            unique.append(suffix_);
        names_.insert(unique);
        return unique;
    }

    std::set<CString> names_;
    CString suffix_;
    CString separator_;

private:
    /// Whether there was one.
    bool removeSuffix(std::string_view& name) const {
        const std::string_view suffix = viewOf(suffix_);
        if (suffix.empty() || !name.ends_with(suffix))
            return false;
        name.remove_suffix(suffix.length());
        return true;
    }

    /// The name without its last separator and the digits behind it, if there is nothing else.
    std::string_view basenameOf(std::string_view name) const {
        const std::string_view separator = viewOf(separator_);
        const std::size_t found =
            separator.empty() ? std::string_view::npos : name.rfind(separator);
        if (found == std::string_view::npos)
            return name;
        const std::string_view number = name.substr(found + separator.length());
        return std::all_of(number.begin(), number.end(), isDigit) ? name.substr(0, found) : name;
    }

    /// The highest number in the family of `stem`, with or without the suffix, as far as it stands
    /// together in the sorted order.
    long highestOf(std::string_view stem, bool hasSuffix) const {
        long highest = 0;
        const CString first(stem.data(), static_cast<int>(stem.length()));
        for (auto entry = names_.lower_bound(first); entry != names_.end(); ++entry) {
            std::string_view name = viewOf(*entry);
            if (removeSuffix(name) != hasSuffix)
                continue;
            const std::string_view basename = basenameOf(name);
            if (basename.length() == name.length())
                continue; // no number
            if (basename != stem)
                break;
            const std::string number(name.substr(basename.length() + separator_.length()));
            highest = std::max(highest, std::strtol(number.c_str(), nullptr, 10));
        }
        return highest;
    }
};

UniqueNames::UniqueNames() : UniqueNames(CString()) {}

UniqueNames::UniqueNames(const CString& suffix) : UniqueNames(suffix, CString("-")) {}

UniqueNames::UniqueNames(const CString& suffix, const CString& separator)
    : impl_(new UniqueNamesImpl(suffix, separator)), ownsImpl_(true) {}

UniqueNames::~UniqueNames() {
    if (ownsImpl_)
        delete impl_;
    impl_ = nullptr;
}

void UniqueNames::setSuffix(const CString& suffix) {
    impl_->suffix_ = suffix;
}

void UniqueNames::setSeparator(const CString& separator) {
    impl_->separator_ = separator;
}

const std::set<CString>& UniqueNames::getNames() const {
    return impl_->names_;
}

CString UniqueNames::insert(const CString& name) {
    return impl_->insert(name);
}

} // namespace zeUtil
