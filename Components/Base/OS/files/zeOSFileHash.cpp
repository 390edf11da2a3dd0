// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileHash.h"

#include <memory>

#include "Base/OS/files/zeOSSha256Impl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringCString.h"

namespace zeOS {

namespace {

constexpr unsigned int hexDigits = 2 * std::tuple_size_v<Sha256::Digest>;

void addName(HmacSha256& digest, const zeString::IString& name) {
    const char* text = name.asUTF8();
    const std::uint64_t length = name.asUTF8StoreSize() - 1;
    unsigned char bytes[8];
    for (int i = 0; i < 8; ++i)
        bytes[i] = static_cast<unsigned char>(length >> 8 * i);
    digest.add(bytes, sizeof bytes);
    digest.add(text, length);
}

/// Reads an open file to its end.
zeUtil::Error addContent(HmacSha256& digest, File& file) {
    constexpr unsigned long blockSize = 64 * 1024;
    const auto block = std::make_unique<unsigned char[]>(blockSize);
    for (;;) {
        unsigned long done = 0;
        zeUtil::Error error = file.read(block.get(), blockSize, &done);
        const bool atEnd = error.code() == File::ErrEndOfFile;
        if (error.code() != File::ErrNone && !atEnd)
            return error;
        digest.add(block.get(), done); // the end comes with the last bytes
        if (atEnd)
            return File::getError(File::ErrNone);
        // A failed read of a local file is a success with 0 bytes. What was read so far must not
        // count as the whole.
        if (done == 0)
            return File::getError(File::ErrIO);
    }
}

zeString::CString hexText(const Sha256::Digest& digest) {
    zeString::CString text;
    text.reserve(hexDigits);
    for (const unsigned char byte : digest) {
        text.append("0123456789abcdef"[byte >> 4]);
        text.append("0123456789abcdef"[byte & 15]);
    }
    return text;
}

} // namespace

zeUtil::Error CreateFileHash(const Filename& file, const void* key, unsigned long keyLength,
                             zeString::CString& hash) {
    hash = "";
    if (key == nullptr || keyLength == 0)
        return File::getError(File::ErrAuthenticationFailed);
    File opened(file.path());
    if (!opened.isValid())
        return File::getError(File::ErrNotImplemented);
    if (opened.isDirectory())
        return File::getError(File::ErrNotFile);
    zeUtil::Error error = opened.open(File::ModeRead | File::ModeBinary);
    if (error.code() != File::ErrNone)
        return error;

    HmacSha256 digest(key, keyLength);
    constexpr char version[] = "zeBase file hash 1";
    digest.add(version, sizeof version); // with its terminator
    addName(digest, file.basename());
    error = addContent(digest, opened);
    if (error.code() == File::ErrNone)
        hash = hexText(digest.finish());
    return error;
}

bool EqualFileHash(const zeString::CString& a, const zeString::CString& b) {
    if (a.length() != hexDigits || b.length() != hexDigits)
        return false;
    // Constant time: all digits are compared, and `volatile` keeps the compiler from stopping
    // earlier.
    volatile unsigned int difference = 0;
    for (unsigned int i = 0; i < hexDigits; ++i)
        difference =
            difference | (static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]));
    return difference == 0;
}

} // namespace zeOS
