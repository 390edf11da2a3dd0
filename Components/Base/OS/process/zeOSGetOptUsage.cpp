// SPDX-License-Identifier: MIT

// Usage texts, made from the declarations.

#include <algorithm>
#include <numeric>

#include "Base/OS/process/zeOSGetOptImpl.h"
#include "Base/OS/zeOSGetOpt.h"
#include "Base/Strings/zeUtilSplit.h"

namespace zeOS {

using zeString::CString;
using zeString::IString;

namespace {

/// The name with its dash and a word for each type.
IString title(const CString& name, const impl::option& option, bool hasDash) {
    IString text(name, zeString::EncodingUTF8);
    if (hasDash)
        text.prepend(L'-');
    for (const impl::optionTypes type : option.types)
        text.append(L' ').append(impl::optionTypeName(type));
    return text.append(L'\n');
}

} // namespace

IString GetOpt::getOptionTitle(const option* declared) const {
    return title(declared->name, *declared, impl_->needLeadingDash);
}

IString GetOpt::getOptionUsage(const option* declared, bool withShortest) const {
    IString text;
    const auto addTitle = [&](const CString& name) {
        text.append(L"  ").append(title(name, *declared, impl_->needLeadingDash));
    };
    if (withShortest) {
        const CString shortest = getOptionShortestName(declared);
        if (shortest != declared->name)
            addTitle(shortest);
    }
    addTitle(declared->name);
    for (IString& line : zeUtil::split(declared->usage, L'\n'))
        text.append(L"    ").append(line.stripSpaces().rstripSpaces()).append(L'\n');
    return text;
}

CString GetOpt::getOptionShortestName(const option* declared) const {
    CString name;
    impl_->root->getShortestName(declared, declared->name, name);
    return name;
}

void GetOpt::getSortedOptions(std::vector<int>& indices) const {
    indices.resize(impl_->options.size());
    std::iota(indices.begin(), indices.end(), 0);
    std::sort(indices.begin(), indices.end(), [this](int a, int b) {
        return impl_->optionAt(a)->name < impl_->optionAt(b)->name; // no two are the same
    });
}

} // namespace zeOS
