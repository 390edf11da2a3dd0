// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringCString.h"

#include <cstdio>
#include <string>
#include <utility>

#include "Base/Strings/zeStringPrintf.h"
#include "Base/Strings/zeStringTextImpl.h"

namespace zeString {

using detail::view;

/// The bytes of a CString, and nothing else.
class CStringImpl {
public:
    CStringImpl() = default;
    explicit CStringImpl(std::string_view bytes) : text(bytes) {}
    CStringImpl(std::size_t n, char c) : text(n, c) {}

    bool doFormat(const char* fmt, va_list arguments);

    std::string text;
};

/// False, with the content kept, if the format fails or produces no text. A text too long for the
/// first buffer is formatted again at its size, which the first try has measured.
bool CStringImpl::doFormat(const char* fmt, va_list arguments) {
    VariadicArguments again;
    va_copy(again.list, arguments);
    char buffer[detail::formatStackSize];
    const int length = std::vsnprintf(buffer, sizeof buffer, fmt, arguments);
    if (length > 0) {
        if (static_cast<std::size_t>(length) < sizeof buffer) {
            text.assign(buffer); // up to the first terminator, if a "%c" put one there
        } else {
            std::string longer(static_cast<std::size_t>(length), '\0');
            std::vsnprintf(longer.data(), longer.size() + 1, fmt, again.list);
            longer.resize(std::strlen(longer.c_str()));
            text = std::move(longer);
        }
    }
    return length > 0;
}

// A moved-from string has no content object; it gets one with the first change.

const CStringImpl& CString::impl() const {
    if (impl_)
        return *impl_;
    static const CStringImpl& empty = *new CStringImpl; // outlives every static object
    return empty;
}

CStringImpl& CString::impl() {
    if (!impl_)
        impl_ = new CStringImpl;
    return *impl_;
}

CString::CString() : impl_(new CStringImpl) {}

CString::CString(const char* text) : impl_(new CStringImpl(view(text))) {}

CString::CString(const char* bytes, int n) : impl_(new CStringImpl(view(bytes, n))) {}

CString::CString(char c) : impl_(new CStringImpl(1, c)) {}

CString::CString(unsigned int n, char c) : impl_(new CStringImpl(n, c)) {}

CString::CString(const CString& other) : String(other), impl_(new CStringImpl(other.impl())) {}

CString::CString(CString&& other) noexcept : impl_(std::exchange(other.impl_, nullptr)) {}

CString::~CString() {
    delete impl_;
}

CString& CString::operator=(const CString& other) {
    return assign(other);
}

CString& CString::operator=(CString&& other) noexcept {
    CString(std::move(other)).swap(*this);
    return *this;
}

CString& CString::operator=(const char* text) {
    return assign(text);
}

CString& CString::assign(const CString& other) {
    impl().text = other.impl().text;
    return *this;
}

CString& CString::assign(const char* text) {
    impl().text.assign(view(text));
    return *this;
}

unsigned int CString::length() const {
    return detail::narrowed(impl().text.size());
}

unsigned int CString::capacity() const {
    return detail::narrowed(impl().text.capacity());
}

unsigned int CString::reserve(unsigned int n) {
    impl().text.reserve(n);
    return capacity();
}

unsigned int CString::maxSize() const {
    return 0xFFFFFFF9;
}

CString& CString::append(const CString& other) {
    impl().text.append(other.impl().text);
    return *this;
}

CString& CString::append(const char* text) {
    impl().text.append(view(text));
    return *this;
}

CString& CString::append(char c) {
    impl().text.push_back(c);
    return *this;
}

CString& CString::prepend(const CString& other) {
    return insert(0, other);
}

CString& CString::prepend(const char* text) {
    return insert(0, text);
}

CString& CString::prepend(char c) {
    return insert(0, c);
}

CString& CString::insert(unsigned int pos, const CString& other) {
    detail::insert(impl().text, pos, other.impl().text);
    return *this;
}

CString& CString::insert(unsigned int pos, const char* text) {
    detail::insert(impl().text, pos, view(text));
    return *this;
}

CString& CString::insert(unsigned int pos, char c) {
    detail::insert(impl().text, pos, {&c, 1});
    return *this;
}

CString& CString::erase(unsigned int pos, unsigned int n) {
    detail::erase(impl().text, pos, n);
    return *this;
}

CString& CString::remove(unsigned int pos, unsigned int n) {
    return erase(pos, n);
}

CString& CString::replace(unsigned int pos, unsigned int n, const CString& other) {
    detail::replace(impl().text, pos, n, other.impl().text);
    return *this;
}

CString& CString::replace(unsigned int pos, unsigned int n, const char* text) {
    detail::replace(impl().text, pos, n, view(text));
    return *this;
}

CString& CString::replace(unsigned int pos, unsigned int n, char c) {
    detail::replace(impl().text, pos, n, {&c, 1});
    return *this;
}

CString& CString::replaceText(unsigned int pos, unsigned int n, const char* text,
                              std::size_t length) {
    detail::replace(impl().text, pos, n, {text, length});
    return *this;
}

const char* CString::asChar() const {
    return impl().text.c_str();
}

const char* CString::asMultibyte() const {
    return asChar();
}

unsigned int CString::asCharStoreSize() const {
    return length() + 1;
}

unsigned int CString::asMultibyteStoreSize() const {
    return asCharStoreSize();
}

char* CString::copyAsChar() const {
    return detail::copyToMalloc(impl().text);
}

char* CString::copyAsMultibyte() const {
    return copyAsChar();
}

char CString::at(unsigned int pos) const {
    return std::as_const(impl().text)[pos];
}

char& CString::at(unsigned int pos) {
    return impl().text[pos];
}

char CString::operator[](unsigned int pos) const {
    return at(pos);
}

char& CString::operator[](unsigned int pos) {
    return at(pos);
}

int CString::compare(const CString& other) const {
    return detail::compare<char>(impl().text, other.impl().text);
}

int CString::compare(const char* text) const {
    return detail::compare<char>(impl().text, view(text));
}

int CString::compareText(const char* text, std::size_t length) const {
    return detail::compare<char>(impl().text, {text, length});
}

std::size_t CString::hash() const noexcept {
    return std::hash<std::string>()(impl().text);
}

int CString::collate(const CString& other) const {
    return std::strcoll(asChar(), other.asChar());
}

int CString::compareNoCase(const CString& other) const {
    return CString(*this).toLowerCase().compare(CString(other).toLowerCase());
}

int CString::collateNoCase(const CString& other) const {
    return CString(*this).toLowerCase().collate(CString(other).toLowerCase());
}

unsigned int CString::find(const CString& other, unsigned int start) const {
    return detail::find(impl().text, other.impl().text, start);
}

unsigned int CString::find(const char* text, unsigned int start) const {
    return detail::find(impl().text, view(text), start);
}

unsigned int CString::find(char c, unsigned int start) const {
    return detail::find(impl().text, {&c, 1}, start);
}

unsigned int CString::find(bool (*predicate)(char), unsigned int start) const {
    return detail::findIf(impl().text, predicate, start);
}

unsigned int CString::rfind(const CString& other, unsigned int start) const {
    return detail::rfind(impl().text, other.impl().text, start);
}

unsigned int CString::rfind(const char* text, unsigned int start) const {
    return detail::rfind(impl().text, view(text), start);
}

unsigned int CString::rfind(char c, unsigned int start) const {
    return detail::rfind(impl().text, {&c, 1}, start);
}

unsigned int CString::rfind(bool (*predicate)(char), unsigned int start) const {
    return detail::rfindIf(impl().text, predicate, start);
}

CString& CString::strip(char c) {
    return erase(0, detail::frontCount(impl().text, detail::equals(c)));
}

CString& CString::stripSpaces() {
    return erase(0, detail::frontCount(impl().text, detail::isSpaceCharacter<char>));
}

CString& CString::rstrip(char c) {
    return erase(detail::lengthWithoutBack(impl().text, detail::equals(c)));
}

CString& CString::rstripSpaces() {
    return erase(detail::lengthWithoutBack(impl().text, detail::isSpaceCharacter<char>));
}

CString& CString::toLowerCase() {
    detail::toLowerCase(impl().text);
    return *this;
}

CString& CString::toUpperCase() {
    detail::toUpperCase(impl().text);
    return *this;
}

unsigned int CString::format(const char* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return vformat(fmt, arguments.list);
}

unsigned int CString::vformat(const char* fmt, va_list arguments) {
    return fmt && impl().doFormat(fmt, arguments) ? length() : npos;
}

unsigned int CString::format(const CString* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return vformat(fmt ? fmt->asChar() : nullptr, arguments.list);
}

unsigned int CString::format(unsigned int, const char* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return vformat(fmt, arguments.list);
}

unsigned int CString::format(unsigned int, const CString* fmt, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, fmt);
    return vformat(fmt ? fmt->asChar() : nullptr, arguments.list);
}

CString CString::substr(unsigned int pos, unsigned int n) const {
    CString result;
    result.impl().text = detail::substr(impl().text, pos, n);
    return result;
}

void CString::swap(CString& other) noexcept {
    std::swap(impl_, other.impl_);
}

bool CString::isAscii() const {
    return detail::isAsciiOnly(impl().text);
}

CString plus(const CString& a, const CString& b) {
    CString result(a);
    result.append(b);
    return result;
}

CString& plusEqual(CString& a, const CString& b) {
    return a.append(b);
}

bool equal(const CString& a, const CString& b) {
    return a.compare(b) == 0;
}

bool equal(const CString& a, const char* b) {
    return a.compare(b) == 0;
}

bool notEqual(const CString& a, const CString& b) {
    return a.compare(b) != 0;
}

bool less(const CString& a, const CString& b) {
    return a.compare(b) < 0;
}

bool greater(const CString& a, const CString& b) {
    return a.compare(b) > 0;
}

bool lessEqual(const CString& a, const CString& b) {
    return a.compare(b) <= 0;
}

bool greaterEqual(const CString& a, const CString& b) {
    return a.compare(b) >= 0;
}

void swap(CString& a, CString& b) noexcept {
    a.swap(b);
}

} // namespace zeString

zeString::CString* CString_create(const char* text) {
    return new zeString::CString(text);
}

void CString_delete(zeString::CString* string) {
    delete string;
}
