// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilError.h"

#include <memory>
#include <utility>

#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeStringPrintf.h"

using zeString::IString;

namespace zeUtil {
namespace {

/// The message of a format, or null for a null or empty one. A format that fails leaves an empty
/// message, which is not the same as none.
template<class Char>
std::unique_ptr<IString> formatted(const Char* format, va_list arguments) {
    if (!format || !*format)
        return nullptr;
    auto message = std::make_unique<IString>();
    message->vformat(format, arguments);
    return message;
}

} // namespace

Error::Error() = default;

Error::Error(const Error& other)
    : code_(other.code_), message_(other.message_ ? new IString(*other.message_) : nullptr) {}

Error::Error(Error&& other) noexcept
    : code_(std::exchange(other.code_, 0)), message_(std::exchange(other.message_, nullptr)) {}

Error::Error(int code, const IString& message) : code_(code), message_(new IString(message)) {}

Error::Error(int code, const char* format, ...) : code_(code) {
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    setMsg(format, arguments.list);
}

Error::Error(int code, const char* format, va_list arguments) : code_(code) {
    setMsg(format, arguments);
}

Error::Error(int code, const wchar_t* format, ...) : code_(code) {
    zeString::VariadicArguments arguments;
    va_start(arguments.list, format);
    setMsg(format, arguments.list);
}

Error::Error(int code, const wchar_t* format, va_list arguments) : code_(code) {
    setMsg(format, arguments);
}

Error::~Error() {
    delete message_;
}

Error& Error::operator=(Error other) noexcept {
    swap(other);
    return *this;
}

const char* Error::message() const {
    return message_ ? message_->asMultibyte(zeString::EncodingMultibyte, nullptr) : "";
}

const char* Error::messageAsUTF8() const {
    return message_ ? message_->asUTF8() : "";
}

void Error::swap(Error& other) noexcept {
    std::swap(code_, other.code_);
    std::swap(message_, other.message_);
}

bool Error::operator==(const Error& other) const {
    if (code_ != other.code_)
        return false;
    if (!message_ || !other.message_)
        return message_ == other.message_;
    return zeString::equal(*message_, *other.message_);
}

bool Error::operator!=(const Error& other) const {
    return !(*this == other);
}

void Error::setMsg(const char* format, va_list arguments) {
    delete std::exchange(message_, formatted(format, arguments).release());
}

void Error::setMsg(const wchar_t* format, va_list arguments) {
    delete std::exchange(message_, formatted(format, arguments).release());
}

} // namespace zeUtil
