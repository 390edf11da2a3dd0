// SPDX-License-Identifier: MIT

// Everything that stays within wide text; zeStringIStringConversion.cpp and
// zeStringIStringFormat.cpp hold the rest.

#include "Base/Strings/zeStringIString.h"

#include <cwchar>
#include <utility>

#include "Base/Strings/zeStringIStringImpl.h"
#include "Base/Strings/zeStringTextImpl.h"

namespace zeString {

using detail::view;

namespace {

/// A text cannot leave the room behind its content object, so that the objects change places. Each
/// string keeps its own cache: where a conversion gives nothing, the earlier bytes stay in it.
void exchangeTexts(IStringImpl*& a, IStringImpl*& b) noexcept {
    std::swap(a, b);
    a->multibyteCache.swap(b->multibyteCache);
    a->changed();
    b->changed();
}

} // namespace

IString::IString() : impl_(IStringImpl::make()) {}

IString::IString(const wchar_t* text) : impl_(IStringImpl::make(view(text))) {}

IString::IString(const wchar_t* text, int n) : impl_(IStringImpl::make(view(text, n))) {}

IString::IString(wchar_t c) : impl_(IStringImpl::make(1, c)) {}

IString::IString(unsigned int n, wchar_t c) : impl_(IStringImpl::make(n, c)) {}

IString::IString(const IString& other)
    : String(other), impl_(IStringImpl::make(view(other.asWChar()))) {}

IString::~IString() {
    delete impl_;
}

IString& IString::operator=(const IString& other) {
    return assign(other);
}

IString& IString::operator=(IString&& other) noexcept {
    if (this != &other) {
        exchangeTexts(impl_, other.impl_);
        other.impl_->wideText.clear();
    }
    return *this;
}

IString& IString::operator=(const wchar_t* text) {
    return assign(text);
}

IString& IString::assign(const IString& other) {
    impl_->wideText = other.impl_->wideText;
    impl_->changed();
    return *this;
}

IString& IString::assign(const wchar_t* text) {
    impl_->wideText.assign(view(text));
    impl_->changed();
    return *this;
}

unsigned int IString::length() const {
    return detail::narrowed(impl_->wideText.size());
}

unsigned int IString::capacity() const {
    return detail::narrowed(impl_->wideText.capacity());
}

unsigned int IString::reserve(unsigned int n) {
    impl_->wideText.reserve(n);
    return capacity();
}

unsigned int IString::maxSize() const {
    return 0xFFFFFFFE;
}

IString& IString::append(const IString& other) {
    impl_->wideText.append(other.impl_->wideText);
    impl_->changed();
    return *this;
}

IString& IString::append(const wchar_t* text) {
    impl_->wideText.append(view(text));
    impl_->changed();
    return *this;
}

IString& IString::append(wchar_t c) {
    impl_->wideText.push_back(c);
    impl_->changed();
    return *this;
}

IString& IString::prepend(const IString& other) {
    return insert(0, other);
}

IString& IString::prepend(const wchar_t* text) {
    return insert(0, text);
}

IString& IString::prepend(wchar_t c) {
    return insert(0, c);
}

IString& IString::insert(unsigned int pos, const IString& other) {
    detail::insert(impl_->wideText, pos, other.impl_->wideText);
    impl_->changed();
    return *this;
}

IString& IString::insert(unsigned int pos, const wchar_t* text) {
    detail::insert(impl_->wideText, pos, view(text));
    impl_->changed();
    return *this;
}

IString& IString::insert(unsigned int pos, wchar_t c) {
    detail::insert(impl_->wideText, pos, {&c, 1});
    impl_->changed();
    return *this;
}

IString& IString::erase(unsigned int pos, unsigned int n) {
    if (detail::erase(impl_->wideText, pos, n))
        impl_->changed();
    return *this;
}

IString& IString::remove(unsigned int pos, unsigned int n) {
    return erase(pos, n);
}

IString& IString::replace(unsigned int pos, unsigned int n, const IString& other) {
    detail::replace(impl_->wideText, pos, n, other.impl_->wideText);
    impl_->changed();
    return *this;
}

IString& IString::replace(unsigned int pos, unsigned int n, const wchar_t* text) {
    detail::replace(impl_->wideText, pos, n, view(text));
    impl_->changed();
    return *this;
}

IString& IString::replace(unsigned int pos, unsigned int n, wchar_t c) {
    detail::replace(impl_->wideText, pos, n, {&c, 1});
    impl_->changed();
    return *this;
}

IString& IString::replace(const IString& from, const IString& to) {
    const WideText& text = impl_->wideText;
    const WideText& pattern = from.impl_->wideText;
    std::size_t hit = pattern.empty() ? WideText::npos : text.find(pattern);
    if (hit == WideText::npos)
        return *this;
    // Into a new text, so that `from` and `to` may be this string.
    WideText result(text.get_allocator());
    result.reserve(text.size());
    std::size_t copied = 0;
    do {
        result.append(text, copied, hit - copied).append(to.impl_->wideText);
        copied = hit + pattern.size();
        hit = text.find(pattern, copied);
    } while (hit != WideText::npos);
    result.append(text, copied);
    impl_->wideText = std::move(result);
    impl_->changed();
    return *this;
}

IString& IString::replaceFirst(const IString& from, const IString& to) {
    const unsigned int hit = find(from);
    return hit == npos ? *this : replace(hit, from.length(), to);
}

IString& IString::replaceText(unsigned int pos, unsigned int n, const wchar_t* text,
                              std::size_t length) {
    detail::replace(impl_->wideText, pos, n, {text, length});
    impl_->changed();
    return *this;
}

const wchar_t* IString::asWChar() const {
    return impl_->wideText.c_str();
}

unsigned int IString::asWCharStoreSize() const {
    return detail::narrowed((impl_->wideText.size() + 1) * sizeof(wchar_t));
}

const unsigned short* IString::asUnicode() const {
    return nullptr;
}

unsigned int IString::asUnicodeStoreSize() const {
    return 0;
}

wchar_t* IString::copyAsWChar() const {
    return detail::copyToMalloc(impl_->wideText);
}

wchar_t IString::at(unsigned int pos) const {
    return std::as_const(impl_->wideText)[pos];
}

// The cache stays as it is, in all writing through a reference: callers rely on the narrow form
// that they asked for.
wchar_t& IString::at(unsigned int pos) {
    return impl_->wideText[pos];
}

wchar_t IString::operator[](unsigned int pos) const {
    return at(pos);
}

wchar_t& IString::operator[](unsigned int pos) {
    return at(pos);
}

int IString::compare(const IString& other) const {
    return detail::compare<wchar_t>(impl_->wideText, other.impl_->wideText);
}

int IString::compareText(const wchar_t* text, std::size_t length) const {
    return detail::compare<wchar_t>(impl_->wideText, {text, length});
}

int IString::order(const wchar_t* text) const {
    return detail::compare<wchar_t>(impl_->wideText, view(text));
}

std::size_t IString::hash() const noexcept {
    return std::hash<std::wstring_view>()(impl_->wideText);
}

int IString::collate(const IString& other) const {
    return std::wcscoll(asWChar(), other.asWChar());
}

int IString::compareNoCase(const IString& other) const {
    return IString(*this).toLowerCase().compare(IString(other).toLowerCase());
}

int IString::collateNoCase(const IString& other) const {
    return IString(*this).toLowerCase().collate(IString(other).toLowerCase());
}

unsigned int IString::find(const IString& other, unsigned int start) const {
    return detail::find(impl_->wideText, other.impl_->wideText, start);
}

unsigned int IString::find(const wchar_t* text, unsigned int start) const {
    return detail::find(impl_->wideText, view(text), start);
}

unsigned int IString::find(wchar_t c, unsigned int start) const {
    return detail::find(impl_->wideText, {&c, 1}, start);
}

unsigned int IString::find(bool (*predicate)(wchar_t), unsigned int start) const {
    return detail::findIf(impl_->wideText, predicate, start);
}

unsigned int IString::rfind(const IString& other, unsigned int start) const {
    return detail::rfind(impl_->wideText, other.impl_->wideText, start);
}

unsigned int IString::rfind(const wchar_t* text, unsigned int start) const {
    return detail::rfind(impl_->wideText, view(text), start);
}

unsigned int IString::rfind(wchar_t c, unsigned int start) const {
    return detail::rfind(impl_->wideText, {&c, 1}, start);
}

unsigned int IString::rfind(bool (*predicate)(wchar_t), unsigned int start) const {
    return detail::rfindIf(impl_->wideText, predicate, start);
}

unsigned int IString::findAny(const IString& set, unsigned int start) const {
    return detail::narrowed(impl_->wideText.find_first_of(set.impl_->wideText, start));
}

unsigned int IString::rfindAny(const IString& set, unsigned int start) const {
    return detail::narrowed(impl_->wideText.find_last_of(set.impl_->wideText, start));
}

// Where nothing is stripped, nothing has changed, and the cache stays as it is.

IString& IString::strip(wchar_t c) {
    const unsigned int n = detail::frontCount(impl_->wideText, detail::equals(c));
    return n == 0 ? *this : erase(0, n);
}

IString& IString::stripSpaces() {
    const unsigned int n = detail::frontCount(impl_->wideText, detail::isSpaceCharacter<wchar_t>);
    return n == 0 ? *this : erase(0, n);
}

IString& IString::rstrip(wchar_t c) {
    const unsigned int kept = detail::lengthWithoutBack(impl_->wideText, detail::equals(c));
    return kept == length() ? *this : erase(kept);
}

IString& IString::rstripSpaces() {
    const unsigned int kept =
        detail::lengthWithoutBack(impl_->wideText, detail::isSpaceCharacter<wchar_t>);
    return kept == length() ? *this : erase(kept);
}

IString& IString::toLowerCase() {
    detail::toLowerCase(impl_->wideText);
    impl_->changed();
    return *this;
}

IString& IString::toUpperCase() {
    detail::toUpperCase(impl_->wideText);
    impl_->changed();
    return *this;
}

IString IString::substr(unsigned int pos, unsigned int n) const {
    IString result;
    substr(result, pos, n);
    return result;
}

IString& IString::substr(IString& out, unsigned int pos, unsigned int n) const {
    const std::wstring_view part = detail::substr(impl_->wideText, pos, n);
    out.impl_->wideText.assign(part.substr(0, part.find(L'\0')));
    out.impl_->changed();
    return out;
}

void IString::swap(IString& other) {
    exchangeTexts(impl_, other.impl_);
    impl_->wideText.resize(std::wcslen(asWChar())); // this side receives a copy
}

bool IString::isAscii() const {
    return detail::isAsciiOnly(impl_->wideText);
}

IString plus(const IString& a, const IString& b) {
    IString result(a);
    result.append(b);
    return result;
}

IString& plusEqual(IString& a, const IString& b) {
    return a.append(b);
}

bool equal(const IString& a, const IString& b) {
    return a.compare(b) == 0;
}

bool notEqual(const IString& a, const IString& b) {
    return a.compare(b) != 0;
}

bool less(const IString& a, const IString& b) {
    return a.compare(b) < 0;
}

bool greater(const IString& a, const IString& b) {
    return a.compare(b) > 0;
}

bool lessEqual(const IString& a, const IString& b) {
    return a.compare(b) <= 0;
}

bool greaterEqual(const IString& a, const IString& b) {
    return a.compare(b) >= 0;
}

void swap(IString& a, IString& b) {
    a.swap(b);
}

} // namespace zeString
