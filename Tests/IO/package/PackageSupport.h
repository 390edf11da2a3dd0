// SPDX-License-Identifier: MIT

/// @file
/// Packages by hand, and what a package holds: what its tests share.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPackageFile.h"

#include "IO/filters/FilterSupport.h"

namespace packages {

using zeString::IString;

inline IString wide(const std::string& text) {
    return IString(text.c_str(), zeString::EncodingUTF8);
}

/// The code, and the message behind it: "13 Can not delete…", "0 " for a success.
inline std::string text(const zeUtil::Error& error) {
    return std::to_string(error.code()) + ' ' + error.message();
}

/// What an entry holds, read in place; how the reading ended stands behind it if that was no end.
inline std::string content(const ioPackageFileEntry* entry) {
    ioBufferedStreamInput in;
    in.openPackageFileEntry(entry);
    if (entry && entry->getCompressed()) {
        in.compress(true);
        in.checksum(true);
    }
    const std::string bytes = readAll(in, 1000);
    const ioStreamStatus end = in.getStatus();
    in.close();
    const bool ended = end == streamEOF || end == streamCompressEnd;
    return ended ? bytes : bytes + "(status " + std::to_string(end) + ")";
}

using Contents = std::map<std::string, std::string>;

inline Contents contents(const ioPackageFile& package) {
    Contents result;
    for (const auto& [name, index] : package.getDirectory())
        result[name.asUTF8()] = content(package.getEntry(index));
    return result;
}

/// What the file at `path` holds if it is opened anew; `refused` gets the text of the failure.
inline Contents reopened(const std::string& path, std::string* refused = nullptr) {
    ioPackageFile package;
    const zeUtil::Error error = package.open(wide(path));
    if (refused)
        *refused = error.code() ? text(error) : "";
    return contents(package);
}

// Bytes by hand

inline const std::string headerStart = "\x8F"
                                       "ZephirumPortablePackageFile\n"
                                       "eliFegakcaPelbatroPmurihpeZ\n"
                                       "1\n@\n";

/// The 24 bytes of a pointer.
inline std::string pointer(const std::string& digits) {
    return digits + std::string(23 - digits.size(), ' ') + '\n';
}

template<class T>
std::string number(T value) {
    std::string bytes;
    for (std::size_t i = 0; i < sizeof value; ++i)
        bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> 8 * i);
    return bytes;
}

inline std::string packet(int type, const std::string& body, int hasReference = 0) {
    return number(type) + number(hasReference) + number(static_cast<int>(body.size())) + body;
}

struct Element {
    std::string name;
    std::int64_t offset;
    std::int64_t size;
    std::int64_t timeStamp = -1;
    bool compressed = false;
};

inline std::string body(const Element& element) {
    return element.name + '\0' + number(element.offset) + number(element.size) +
           number(element.timeStamp) + (element.compressed ? '\1' : '\0');
}

inline const std::string directoryStart = "^@\n1\n1 1 1\n1 2 4 8 4 8 8\n@\n"
                                          "   0 packetFile_string\n"
                                          "   1 packetFile_EOF\n"
                                          "   2 package.entry\n@\n";

inline std::string directory(const std::vector<Element>& elements) {
    std::string bytes = directoryStart;
    for (const Element& element : elements)
        bytes += packet(2, body(element));
    return bytes + packet(1, "");
}

/// A package of these data and this directory.
inline std::string package(const std::string& data, const std::vector<Element>& elements) {
    return headerStart + pointer(std::to_string(85 + data.size())) + data + directory(elements);
}

} // namespace packages
