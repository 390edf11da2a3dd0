// SPDX-License-Identifier: MIT

// Takes bytes apart as a URL: its parts must stand in the text.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Base/OS/zeOSURL.h"
#include "Base/Strings/zeStringIString.h"

#include "Fuzz/require.h"

using zeOS::URL;
using zeString::CString;

namespace {

std::string text(const CString& bytes) {
    return std::string(bytes.asChar(), bytes.length());
}

CString bytes(std::string_view s) {
    return CString(s.data(), static_cast<int>(s.size()));
}

std::string withoutDuplicates(std::string s) {
    for (std::size_t hit; (hit = s.find("//")) != s.npos;)
        s.erase(hit, 1);
    return s;
}

void requireEncoded(const CString& plain, const CString& encoded) {
    require(encoded == URL::encode(plain) && URL::decode(encoded) == plain);
}

/// Each part must stand in the text, and in its place.
void requireParts(const URL& url, const std::string& given) {
    const std::size_t scheme = given.find("://");
    const bool isLocal = scheme == given.npos || scheme == 1;
    require(url.isLocalFile() || !isLocal);
    const std::string rest = given.substr(isLocal ? 0 : scheme + 3);
    require(withoutDuplicates("//" + given).find(text(url.getPath(false))) != given.npos);
    require(given.ends_with(text(url.getRef(false))));
    require(given.find(text(url.getQuery(false))) != given.npos);
    const CString lower = bytes(rest).toLowerCase();
    require(text(lower).starts_with(text(url.getAuthority())));
    require(text(url.getAuthority()).starts_with(text(url.getHost())));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string given(reinterpret_cast<const char*>(data), size);
    const URL url(bytes(given));
    requireParts(url, given);
    for (const bool encoded : {false, true}) {
        require(text(url.getCanonicalPath(encoded)) ==
                withoutDuplicates(text(url.getPath(encoded))));
        require(text(url.getFullURL(encoded)).starts_with(text(url.getProtocol()) + "://"));
        url.getName(encoded);
        url.getDirname(encoded);
        url.baseTrunk(encoded);
    }
    requireEncoded(url.getPath(false), url.getPath(true));
    requireEncoded(url.getQuery(false), url.getQuery(true));
    requireEncoded(url.getRef(false), url.getRef(true));
    requireEncoded(bytes(given), URL::encode(bytes(given)));
    require(URL::decode(bytes(given)).length() <= size);
    require(url.comparePath(URL(bytes(given))));
    url.hasIllegalCharacters();
    return 0;
}
