// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSLocale.h"

#include <langinfo.h>

#include <clocale>
#include <cstdlib>

#include "Base/OS/zeOSError.h"
#include "Base/Strings/zeStringIString.h"

namespace zeOS {
namespace {

using zeString::CString;
using zeUtil::Error;

/// The C library's locale.
struct LocaleImpl {
    static CString queryCLibLocale(int category) { return std::setlocale(category, nullptr); }

    static Error setCLibLocale(const CString& id, int category) {
        if (std::setlocale(category, id.asChar()))
            return Error();
        const zeString::IString reason = getLastError();
        return Error(4, L"Unable to set locale: %S, system error: %S\n",
                     zeString::IString(id).asWChar(), reason.asWChar());
    }

    static Error changeLocale(const CString& id) { return setCLibLocale(id, LC_CTYPE); }
};

} // namespace

Locale::Locale() : initialLocale_(new CString(LocaleImpl::queryCLibLocale(LC_CTYPE))) {
    initializeAttributes();
}

Locale::~Locale() {
    delete initialLocale_;
}

Error Locale::setLocale(const CString& id) {
    Error error = LocaleImpl::changeLocale(id);
    isDefault_ = false;
    initializeAttributes();
    return error;
}

Error Locale::setNative() {
    return setLocale("");
}

Error Locale::setDefault() {
    Error error = LocaleImpl::changeLocale(*initialLocale_);
    if (error.code() == 0)
        isDefault_ = true;
    initializeAttributes();
    return error;
}

void Locale::initializeAttributes() {
    clibLocale_ = LocaleImpl::queryCLibLocale(LC_CTYPE);
    id_ = clibLocale_;
    const char* const codeSet = nl_langinfo(CODESET);
    codeSet_ = codeSet ? codeSet : "CodeSet Unknown";
    description_.format("Locale:%s CodeSet:%s", clibLocale_.asChar(), codeSet_.asChar());
    isMultibyte_ = MB_CUR_MAX > 1;
}

Locale& appLocale() {
    static Locale& locale = *new Locale;
    return locale;
}

} // namespace zeOS
