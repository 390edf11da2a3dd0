// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <utility>

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringConversion.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeStringIStringImpl.h"
#include "Base/Strings/zeStringTextImpl.h"
#include "Base/Strings/zeStringUTF8Impl.h"

namespace zeString {
namespace {

/// Working space for a conversion: on the stack for short texts.
template<class Char>
class Scratch {
public:
    explicit Scratch(std::size_t n) {
        if (n > std::size(stack_))
            heap_ = std::make_unique_for_overwrite<Char[]>(n);
    }
    Char* data() { return heap_ ? heap_.get() : stack_; }

private:
    Char stack_[1024 / sizeof(Char)];
    std::unique_ptr<Char[]> heap_;
};

/// The converters count in 32 bits.
unsigned int units(std::size_t n) {
    return static_cast<unsigned int>(std::min<std::size_t>(n, String::npos - 1));
}

unsigned int toWide(Encoding encoding, const char* src, std::size_t n, wchar_t* dest,
                    std::size_t cap, bool* ok) {
    return encoding == EncodingUTF8 ? UTF8toWCS(src, units(n), dest, units(cap), false, ok)
                                    : MBStoWCS(src, units(n), dest, units(cap), ok);
}

unsigned int toNarrow(Encoding encoding, const std::wstring& src, char* dest, std::size_t cap,
                      bool* ok) {
    return encoding == EncodingUTF8
               ? WCStoUTF8(src.c_str(), units(src.size()), dest, units(cap), ok)
               : WCStoMBS(src.c_str(), units(src.size()), dest, units(cap), ok);
}

/// Whether ASCII text is the same bytes in this encoding.
bool extendsAscii(Encoding encoding) {
    return encoding == EncodingUTF8 || detail::localeExtendsAscii();
}

enum class Outcome { Clean, Lossy, Nothing };

/// Above this length the most bytes that UTF-8 could take are too many to count in 32 bits.
constexpr std::size_t oneCallLimit = 1 << 28;

/// Room for the narrow form, terminator left out; 0 if nothing can be converted. UTF-8 takes at
/// most six bytes a character, so that counting can be left to the conversion itself. The locale's
/// repair writes as much as counting found room for.
std::size_t roomFor(const std::wstring& text, Encoding encoding) {
    if (encoding == EncodingUTF8 && text.size() < oneCallLimit)
        return text.size() * 6;
    return toNarrow(encoding, text, nullptr, 0, nullptr);
}

/// Puts the narrow form of the text in the cache.
Outcome fillCache(std::string& cache, const std::wstring& text, Encoding encoding) {
    if (std::wcslen(text.c_str()) == text.size() &&
        detail::isAsciiText(text.c_str(), text.size()) && extendsAscii(encoding)) {
        cache.resize(text.size());
        detail::copyAscii(text.c_str(), text.size(), cache.data());
        return Outcome::Clean;
    }
    const std::size_t room = roomFor(text, encoding);
    Scratch<char> scratch(room + 1);
    bool clean = false;
    const unsigned int n =
        room == 0 ? 0 : toNarrow(encoding, text, scratch.data(), room + 1, &clean);
    if (room == 0 || (n == 0 && encoding == EncodingUTF8)) {
        cache.clear();
        return Outcome::Nothing;
    }
    // Nothing is written where the locale's first character does not fit before a bad one: the
    // cache then keeps its earlier bytes.
    if (n != 0)
        cache.assign(scratch.data(), n);
    return clean ? Outcome::Clean : Outcome::Lossy;
}

} // namespace

// A delegating constructor, so that the object is destroyed if the conversion throws.
IString::IString(const char* text, Encoding encoding, bool* ok) : IString() {
    convertFromMultibyte(text ? text : "", encoding, ok);
}

IString::IString(char c, Encoding encoding, bool* ok) : IString(CString(c), encoding, ok) {}

IString::IString(unsigned int n, char c, Encoding encoding, bool* ok)
    : IString(CString(n, c), encoding, ok) {}

IString::IString(const CString& text, Encoding encoding, bool* ok)
    : IString(text.asChar(), encoding, ok) {}

wchar_t IString::widened(char c) {
    if (c == 0 || (detail::isAsciiUnit(c) && detail::localeExtendsAscii()))
        return static_cast<wchar_t>(c);
    return IString(c).at(0);
}

// Through a temporary: a text of which nothing remains empties this string.
IString& IString::assign(const char* text, Encoding encoding, bool* ok) {
    IString converted(text, encoding, ok);
    impl_->wideText = std::move(converted.impl_->wideText);
    impl_->changed();
    return *this;
}

IString& IString::assign(const CString& text, Encoding encoding, bool* ok) {
    convertFromMultibyte(text.asChar(), encoding, ok);
    return *this;
}

const char* IString::asMultibyte(Encoding encoding, bool* ok) const {
    convertToMultibyte(encoding, ok);
    return impl_->multibyteCache.c_str();
}

unsigned int IString::asMultibyteStoreSize(Encoding encoding) const {
    convertToMultibyte(encoding, nullptr);
    return detail::narrowed(impl_->multibyteCache.size()) + 1;
}

const char* IString::asUTF8(bool* ok) const {
    return asMultibyte(EncodingUTF8, ok);
}

unsigned int IString::asUTF8StoreSize() const {
    return asMultibyteStoreSize(EncodingUTF8);
}

char* IString::copyAsMultibyte(Encoding encoding, bool* ok) const {
    convertToMultibyte(encoding, ok);
    return detail::copyToMalloc(impl_->multibyteCache);
}

CString IString::convertToCString() const {
    return CString(asMultibyte());
}

/// Takes the converted text if anything remains of it.
///
/// The converters are handed room for as many characters as there are bytes. No text needs more,
/// and what they write does not depend on more room than they need, so one call does what counting
/// first would do.
void IString::convertFromMultibyte(const char* src, Encoding encoding, bool* ok) {
    const std::size_t length = std::strlen(src);
    if (detail::isAsciiText(src, length) && extendsAscii(encoding)) {
        impl_->wideText = std::wstring(src, src + length);
        impl_->changed();
        if (ok)
            *ok = true;
        return;
    }
    Scratch<wchar_t> scratch(length + 1);
    const unsigned int n = toWide(encoding, src, length, scratch.data(), length + 1, ok);
    if (n == 0) {
        if (ok)
            *ok = false;
        return;
    }
    impl_->wideText.assign(scratch.data(), n);
    impl_->changed();
}

/// A view has no terminator, which the converters need.
void IString::convertFromBytes(const char* bytes, std::size_t length, Encoding encoding, bool* ok) {
    convertFromMultibyte(std::string(bytes, length).c_str(), encoding, ok);
}

/// Brings the cache up to date, unless it is already, in this encoding and with the outcome that
/// the caller asks for.
void IString::convertToMultibyte(Encoding encoding, bool* ok) const {
    IStringImpl& impl = *impl_;
    if (ok && impl.conversionStatus == IStringImpl::NotRecorded)
        impl.multibyteDirty = true;
    if (impl.multibyteDirty || impl.multibyteEncoding != encoding) {
        const Outcome outcome = fillCache(impl.multibyteCache, impl.wideText, encoding);
        const bool recorded = ok || impl.wideText.empty() || outcome == Outcome::Nothing;
        const int status = outcome == Outcome::Clean ? IStringImpl::Clean : IStringImpl::Lossy;
        impl.conversionStatus = recorded ? status : IStringImpl::NotRecorded;
        impl.multibyteEncoding = encoding;
        impl.multibyteDirty = false;
    }
    if (ok)
        *ok = impl.conversionStatus == IStringImpl::Clean;
}

} // namespace zeString
