// SPDX-License-Identifier: MIT

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <string_view>
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

unsigned int toNarrow(Encoding encoding, const WideText& src, char* dest, std::size_t cap,
                      bool* ok) {
    return encoding == EncodingUTF8
               ? WCStoUTF8(src.c_str(), units(src.size()), dest, units(cap), ok)
               : WCStoMBS(src.c_str(), units(src.size()), dest, units(cap), ok);
}

/// Whether ASCII text is the same bytes in this encoding.
bool extendsAscii(Encoding encoding) {
    return encoding == EncodingUTF8 || detail::localeExtendsAscii();
}

/// Whether the text consists of the same bytes in this encoding. An empty one does in each; in the
/// locale's, a text ends at a terminator.
bool isSameBytes(const WideText& text, Encoding encoding) {
    return text.empty() ||
           (detail::isAsciiText(text.data(), text.size()) && extendsAscii(encoding) &&
            (encoding == EncodingUTF8 || std::wcslen(text.c_str()) == text.size()));
}

enum class Outcome { Clean, Lossy, Nothing };

/// Puts the UTF-8 form of regular text in the cache, by pieces that are encoded on the stack.
bool encodeRegular(std::string& cache, const WideText& text) {
    constexpr std::size_t pieceLength = 256;
    char piece[pieceLength * 4];
    cache.clear();
    for (std::size_t pos = 0; pos < text.size(); pos += pieceLength) {
        const std::size_t length = std::min(pieceLength, text.size() - pos);
        const auto size = detail::encodeUTF8(text.data() + pos, length, piece);
        if (!size)
            return false;
        cache.append(piece, *size);
    }
    return true;
}

/// Puts the narrow form of the text in the cache.
Outcome fillCache(std::string& cache, const WideText& text, Encoding encoding) {
    if (isSameBytes(text, encoding)) {
        cache.resize(text.size());
        detail::copyAscii(text.data(), text.size(), cache.data());
        return Outcome::Clean;
    }
    if (encoding == EncodingUTF8 && encodeRegular(cache, text))
        return Outcome::Clean;
    const std::size_t room = toNarrow(encoding, text, nullptr, 0, nullptr);
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

/// Converts any text. A terminator stands behind it.
///
/// The converters are handed room for as many characters as there are bytes. No text needs more,
/// and what they write does not depend on more room than they need, so one call does what counting
/// first would do.
void convertAny(WideText& wide, std::string_view src, Encoding encoding, bool* ok) {
    const std::size_t room = src.size() + 1;
    Scratch<wchar_t> scratch(room);
    const unsigned int n = toWide(encoding, src.data(), src.size(), scratch.data(), room, ok);
    wide.assign(scratch.data(), n);
    if (n == 0 && ok)
        *ok = false;
}

/// The content of a string made from narrow text. ASCII and regular UTF-8 are written in place.
IStringImpl* makeConverted(const char* text, Encoding encoding, bool* ok) {
    const std::string_view src(text);
    if (ok)
        *ok = true;
    if (src.empty() || (detail::isAsciiText(src.data(), src.size()) && extendsAscii(encoding)))
        return IStringImpl::make(src);
    const bool isUTF8 = encoding == EncodingUTF8;
    const std::string_view regular = src.substr(isUTF8 ? detectUTF8BOM(text, -1) : 0);
    // Of text in the locale's encoding this is only a guess, which is right where that is UTF-8.
    const std::size_t count = detail::countUTF8(regular.data(), regular.size());
    std::unique_ptr<IStringImpl> impl(IStringImpl::make(count, L'\0'));
    WideText& wide = impl->wideText;
    const bool isDecoded = isUTF8 && count != 0 &&
                           detail::decodeUTF8(regular.data(), regular.size(), wide.data(), count);
    if (!isDecoded)
        convertAny(wide, src, encoding, ok);
    return impl.release();
}

} // namespace

IString::IString(const char* text, Encoding encoding, bool* ok)
    : impl_(makeConverted(text ? text : "", encoding, ok)) {}

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
    return *this = IString(text, encoding, ok);
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

/// Takes the converted text if anything remains of it, or if there was none.
void IString::convertFromMultibyte(const char* src, Encoding encoding, bool* ok) {
    IString converted(src, encoding, ok);
    if (*src == 0 || !converted.isEmpty())
        *this = std::move(converted);
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
        impl.multibyteDirty = true; // also where memory runs out half-way
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
