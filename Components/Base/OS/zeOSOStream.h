// SPDX-License-Identifier: MIT

/// @file
/// Text onto any byte stream, through a buffer of 4096 bytes.
///
/// The first error of the byte stream is kept: error(). From then on everything is dropped, what is
/// in the buffer included, and nothing is tried again. A write that reports success without taking
/// a byte counts as zeOS::File::ErrIO.
///
/// Threads: an OStream and the byte stream behind it belong to one thread at a time.
///
/// @code
/// #include <cstring>
/// #include "Base/OS/zeOSMemoryIOStream.h"
/// zeOS::MemoryIOStream memory(4096, nullptr);
/// memory.openForWrite();
/// {
///     zeOS::OStream text(memory);
///     text << "size " << 7 << '\n';
///     text.format("%.1f%%\n", 12.5);
///     assert(text.flush()); // no error so far
/// }
/// memory.openForRead();
/// char written[32] = {};
/// memory.read(written, sizeof written, nullptr);
/// assert(std::strcmp(written, "size 7\n12.5%\n") == 0);
/// @endcode

#pragma once

#include <cstdarg>

#include "Base/Strings/zeStringPrintf.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class CString;
}

namespace zeOS {

class IOStream;
class OStreamImpl;

/// Writes text onto an IOStream. Bytes go out when the next one does not fit into the buffer, in
/// blocks of 4096; the rest at flush() and when the object is destroyed.
class ZEBASE_API OStream {
public:
    /// `stream` is not owned, and must outlive this object.
    explicit OStream(IOStream& stream);
    OStream(const OStream&) = delete;            ///< Pass a reference: a copy would write twice.
    OStream& operator=(const OStream&) = delete; ///< Pass a reference: a copy would write twice.
    /// flush(), the error of which is lost.
    ~OStream();

    /// @name Values as text
    /// @{

    /// The byte itself.
    OStream& operator<<(char c);
    /// @copydoc operator<<(char)
    OStream& operator<<(unsigned char c);
    /// The bytes up to the terminator; nothing for null.
    OStream& operator<<(const char* text);
    /// The bytes, terminators included. There is no form for a zeString::IString: choose an
    /// encoding (`asUTF8()`), or format() it with "%S".
    OStream& operator<<(const zeString::CString& text);
    /// In decimal digits.
    OStream& operator<<(int value);
    /// @copydoc operator<<(int)
    OStream& operator<<(short value);
    /// @copydoc operator<<(int)
    OStream& operator<<(unsigned int value);
    /// @copydoc operator<<(int)
    OStream& operator<<(long value);
    /// @copydoc operator<<(int)
    OStream& operator<<(unsigned long value);
    /// @copydoc operator<<(int)
    OStream& operator<<(unsigned short value);
    /// By "%f": six digits behind the locale's decimal point.
    OStream& operator<<(float value);
    /// @copydoc operator<<(float)
    OStream& operator<<(double value);
    /// By "0x%p", which doubles the prefix: `0x0x7ffe12345678`, and `0x(nil)` for null. Kept for
    /// compatibility.
    OStream& operator<<(const void* pointer);
    OStream& operator<<(wchar_t c) = delete;           ///< It would print a number: use format().
    OStream& operator<<(const wchar_t* text) = delete; ///< Use format() with "%S".
    /// @}

    /// @{
    /// Writes a formatted text: `%s` takes a `const char*` and `%S` a `const wchar_t*`. A format
    /// that fails (an argument that the locale cannot convert), or whose text has a GiB or more,
    /// writes nothing, and is no error(). Compilers check the arguments of literal formats if
    /// ZEBASE_CHECK_FORMATS is defined.
    OStream& format(const char* format, ...) ZEBASE_FORMAT(2, 3);
    OStream& vformat(const char* format, va_list arguments) ZEBASE_FORMAT(2, 0);
    /// @}

    /// Writes out what is in the buffer. The byte stream may have a buffer of its own.
    OStream& flush();

    /// The first error of the byte stream; a success if there was none.
    zeUtil::Error error() const;
    /// The byte stream.
    IOStream& stream() const;
    /// Whether error() is a success.
    operator bool() const;

private:
    template<class Value>
    ZEBASE_HIDDEN OStream& print(const char* format, Value value);

    OStreamImpl* impl_;
    bool owner_ = true; ///< Whether the destructor deletes `impl_`.
};

} // namespace zeOS
