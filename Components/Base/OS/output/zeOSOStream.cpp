// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSOStream.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Base/OS/output/zeOSWriteAllImpl.h"
#include "Base/OS/zeOSIOStream.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Utility/zeReferenceCount.h"

using zeString::VariadicArguments;

namespace zeOS {

namespace {

constexpr int blockSize = 4096;
constexpr int formatLimit = 1 << 30; ///< the largest format buffer whose size an int can hold

} // namespace

class OStreamImpl : public ze::ImplBase {
public:
    explicit OStreamImpl(IOStream& target)
        : stream(&target), buffer(std::make_unique<char[]>(blockSize)) {}
    OStreamImpl(const OStreamImpl&) = delete;
    OStreamImpl& operator=(const OStreamImpl&) = delete;
    ~OStreamImpl() override { flush(); }

    void write(const char* bytes, std::size_t count);
    void vformat(const char* format, va_list arguments);
    void flush();

    IOStream* stream;
    zeUtil::Error error;
    std::unique_ptr<char[]> formatBuffer; ///< null until the first format
    std::unique_ptr<char[]> buffer;
    int used = 0;
    int formatSize = 0;

private:
    void writeOut(const char* bytes, std::size_t count);
    void growFormatBuffer(int size);
};

/// A block leaves the buffer only when a byte comes that has no room in it.
void OStreamImpl::write(const char* bytes, std::size_t count) {
    const auto room = static_cast<std::size_t>(blockSize - used);
    if (count > room) {
        std::memcpy(&buffer[static_cast<std::size_t>(used)], bytes, room);
        used = blockSize;
        flush();
        bytes += room;
        count -= room;
        for (; count > blockSize; bytes += blockSize, count -= blockSize)
            writeOut(bytes, blockSize); // as if it had gone through the empty buffer
    }
    std::memcpy(&buffer[static_cast<std::size_t>(used)], bytes, count);
    used += static_cast<int>(count);
}

void OStreamImpl::vformat(const char* format, va_list arguments) {
    if (!formatBuffer)
        growFormatBuffer(blockSize);
    VariadicArguments again;
    va_copy(again.list, arguments);
    const auto size = static_cast<std::size_t>(formatSize);
    const int length = std::vsnprintf(formatBuffer.get(), size, format, arguments);
    if (length < 0 || length >= formatLimit)
        return;
    if (length >= formatSize) {
        growFormatBuffer(length + 1);
        std::vsnprintf(formatBuffer.get(), static_cast<std::size_t>(formatSize), format,
                       again.list);
    }
    write(formatBuffer.get(), static_cast<std::size_t>(length));
}

void OStreamImpl::flush() {
    writeOut(buffer.get(), static_cast<std::size_t>(used));
    used = 0;
}

void OStreamImpl::writeOut(const char* bytes, std::size_t count) {
    if (error.ok())
        writeAll(*stream, bytes, count, error);
}

/// To the first doubling of 4096 that is at least `size`, which is at most formatLimit.
void OStreamImpl::growFormatBuffer(int size) {
    const auto doubled = std::bit_ceil(static_cast<unsigned int>(std::max(size, blockSize)));
    formatBuffer = std::make_unique<char[]>(doubled);
    formatSize = static_cast<int>(doubled);
}

OStream::OStream(IOStream& stream) : impl_(new OStreamImpl(stream)) {}

OStream::~OStream() {
    if (owner_)
        delete impl_;
}

OStream& OStream::operator<<(char c) {
    impl_->write(&c, 1);
    return *this;
}

OStream& OStream::operator<<(unsigned char c) {
    return *this << static_cast<char>(c);
}

OStream& OStream::operator<<(const char* text) {
    if (text)
        impl_->write(text, std::strlen(text));
    return *this;
}

OStream& OStream::operator<<(const zeString::CString& text) {
    impl_->write(text.asChar(), text.length());
    return *this;
}

OStream& OStream::operator<<(int value) {
    return print("%d", value);
}

OStream& OStream::operator<<(short value) {
    return print("%d", value);
}

OStream& OStream::operator<<(unsigned int value) {
    return print("%u", value);
}

OStream& OStream::operator<<(long value) {
    return print("%ld", value);
}

OStream& OStream::operator<<(unsigned long value) {
    return print("%lu", value);
}

OStream& OStream::operator<<(unsigned short value) {
    return print("%hu", value);
}

OStream& OStream::operator<<(float value) {
    return print("%f", static_cast<double>(value));
}

OStream& OStream::operator<<(double value) {
    return print("%f", value);
}

OStream& OStream::operator<<(const void* pointer) {
    return print("0x%p", pointer);
}

OStream& OStream::format(const char* format, ...) {
    VariadicArguments arguments;
    va_start(arguments.list, format);
    return vformat(format, arguments.list);
}

OStream& OStream::vformat(const char* format, va_list arguments) {
    if (format)
        impl_->vformat(format, arguments);
    return *this;
}

OStream& OStream::flush() {
    impl_->flush();
    return *this;
}

zeUtil::Error OStream::error() const {
    return impl_->error;
}

IOStream& OStream::stream() const {
    return *impl_->stream;
}

OStream::operator bool() const {
    return impl_->error.code() == 0;
}

/// One number by the C library, so that the locale's decimal point holds.
template<class Value>
OStream& OStream::print(const char* format, Value value) {
    char text[512]; // a double takes up to 318 bytes
    const int length = std::snprintf(text, sizeof text, format, value);
    impl_->write(text, static_cast<std::size_t>(length));
    return *this;
}

} // namespace zeOS
