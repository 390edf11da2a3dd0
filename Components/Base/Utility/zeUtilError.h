// SPDX-License-Identifier: MIT

/// @file
/// The status value that fallible operations return: zeUtil::Error.
///
/// See the class for its contract.

#pragma once

#include <cstdarg>
#include <iosfwd>

#include "Base/Strings/zeStringPrintf.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class IString;
}

namespace zeUtil {

/// A code, 0 meaning success, and an optional message. The meaning of each other code belongs to
/// the operation that returns it.
///
/// A success holds no message and allocates nothing. Copying copies the message; a moved-from Error
/// is a success.
///
/// Formats follow the C library: `%s` takes a `const char*` in the locale's encoding and `%S` a
/// `const wchar_t*`, in narrow and wide formats alike. A null or empty format gives no message. A
/// format that fails (an argument that the locale cannot convert) gives an empty message. Compilers
/// check the arguments of literal narrow formats if ZEBASE_CHECK_FORMATS is defined.
///
/// **Overload trap.** On x86-64 a `va_list` is a pointer, so a literal `0`, `NULL` or `nullptr` as
/// the only argument after the format selects the `va_list` constructor and reads garbage. Write a
/// variable or `int(0)` there: `Error(3, "%d", int(0))`. Two or more arguments are always safe.
///
/// Threads: an Error belongs to one thread at a time, since message() fills a cache.
///
/// @code
/// #include <string>
/// zeUtil::Error missing(2, "cannot open %s", "scene.ze");
/// assert(missing.code() == 2 && !missing.ok());
/// assert(std::string(missing.message()) == "cannot open scene.ze");
/// assert(zeUtil::Error().ok());
/// @endcode
class ZEBASE_API Error {
public:
    /// Success: code 0, no message.
    Error();
    /// Copies the message too.
    Error(const Error& other);
    /// Takes the message over and leaves `other` a success.
    Error(Error&& other) noexcept;
    /// Always holds a message, also when `message` is empty.
    Error(int code, const zeString::IString& message);
    /// @{
    /// Formats the message. A literal 0 or nullptr must not be the only variadic argument: see the
    /// overload trap above.
    Error(int code, const char* format, ...) ZEBASE_FORMAT(3, 4);
    Error(int code, const char* format, va_list arguments) ZEBASE_FORMAT(3, 0);
    Error(int code, const wchar_t* format, ...);
    Error(int code, const wchar_t* format, va_list arguments);
    /// @}
    virtual ~Error();

    /// Leaves the left side unchanged if the copy cannot be allocated.
    Error& operator=(Error other) noexcept;

    /// 0 for success, else what the header of the failing call says.
    int code() const { return code_; }

    /// Whether this is a success: code 0, with or without a message.
    bool ok() const { return code_ == 0; }
    /// The same as ok(): **true is success**, as for `std::expected` and unlike `std::error_code`.
    explicit operator bool() const { return ok(); }

    /// The message in the locale's multi-byte encoding; empty without one, never null. Valid until
    /// the Error changes.
    const char* message() const;

    /// The same in UTF-8. Invalidates what message() returned, and the other way round.
    const char* messageAsUTF8() const;

    /// Exchanges codes and messages.
    void swap(Error& other) noexcept;

    /// Equal codes, and equal messages or none on either side: an empty message is not the same as
    /// none.
    bool operator==(const Error& other) const;
    /// The negation.
    bool operator!=(const Error& other) const;

private:
    ZEBASE_HIDDEN void setMsg(const char* format, va_list arguments);
    ZEBASE_HIDDEN void setMsg(const wchar_t* format, va_list arguments);

    int code_ = 0;
    zeString::IString* message_ = nullptr; ///< Owned; null means no message.
};

/// Writes the code and, if there is one, the message in UTF-8 to a stream of the standard library:
/// `2: cannot open scene.ze`. A success without a message is `0`.
template<class Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                             const Error& error) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): message() of `error` stays valid
    const Error copy(error);
    stream << copy.code();
    if (const char* message = copy.messageAsUTF8(); *message)
        stream << ": " << message;
    return stream;
}

} // namespace zeUtil
