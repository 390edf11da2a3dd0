// SPDX-License-Identifier: MIT

/// @file
/// Packet files in memory: what the tests of the packet family share.

#pragma once

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/IO/ioPacketFile.h"

#include "IO/chain/TestLinks.h"

namespace packets {

class Input {
public:
    /// The bytes arrive in blocks of the size given.
    explicit Input(std::string bytes, int blockSize = 4096) : bytes_(std::move(bytes)) {
        stream.addBufferToChain(new MemorySink(true, blockSize, bytes_));
    }
    ioBufferedStreamInput stream;

private:
    std::string bytes_;
};

class Output {
public:
    Output() { stream.addBufferToChain(new MemorySink(false, 4096, bytes_)); }
    const std::string& bytes() {
        stream.flush();
        return bytes_;
    }
    ioBufferedStreamOutput stream;

private:
    std::string bytes_;
};

using Read = std::function<void(ioClientReadContext&)>;
using Write = std::function<void(ioWriteContext&)>;

/// A type that reads by any function.
class Type : public ioPacketType {
public:
    Type(const char* name, Read read) : ioPacketType(name), read_(std::move(read)) {}
    void read(ioClientReadContext& client) override { read_(client); }

private:
    Read read_;
};

/// A registry that knows the built-in types and, behind them, those that are given here.
class Registry : public ioPacketRegistry {
public:
    explicit Registry(bool namesOnly, std::vector<std::pair<const char*, Read>> types = {})
        : ioPacketRegistry(namesOnly), types_(std::move(types)) {}
    void registerAllTypes() override {
        for (const auto& [name, read] : types_)
            supportedType(read ? new Type(name, read) : new ioPacketType(name));
    }

private:
    std::vector<std::pair<const char*, Read>> types_;
};

inline const std::string binaryHeader = "^@\n1\n1 1 1\n1 2 4 8 4 8 8\n@\n";
inline const std::string bigEndianHeader = "^@\n1\n0 1 1\n1 2 4 8 4 8 8\n@\n";
inline const std::string textHeader = "^@\n1\n1 0 1\n1 2 4 8 4 8 8\n@\n";
/// The list of types of a file with one type of its own, "thing", of id 2.
inline const std::string thingTypes =
    "   0 packetFile_string\n   1 packetFile_EOF\n   2 thing\n@\n";
inline const std::string binaryEnd("\1\0\0\0\0\0\0\0\0\0\0\0", 12);
inline const std::string bigEndianEnd("\0\0\0\1\0\0\0\0\0\0\0\0", 12);
inline const std::string textEnd = "{ 1 0 }\n";

/// Bytes from hexadecimal digits; a text in quotes stands for itself.
inline std::string bytes(std::string_view hex) {
    std::string result;
    for (std::size_t i = 0; i < hex.size();) {
        if (hex[i] == '\'') {
            const std::size_t end = hex.find('\'', i + 1);
            result += hex.substr(i + 1, end - i - 1);
            i = end + 1;
        } else if (hex[i] == ' ') {
            ++i;
        } else {
            result += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
            i += 2;
        }
    }
    return result;
}

/// A form of a file.
struct Form {
    const char* method; ///< As the header has it.
    bool text, big, debug;

    ioWriteMethod writes() const { return static_cast<ioWriteMethod>(method[0] - '0'); }
    const std::string& end() const { return text ? textEnd : big ? bigEndianEnd : binaryEnd; }

    std::string file(const std::string& packets) const {
        const char* const order = big ? "0 " : "1 ";
        return "^@\n1\n" + (order + std::string(method)) + " 1\n1 2 4 8 4 8 8\n@\n" + thingTypes +
               packets + end();
    }
    /// A packet of type "thing" with this body.
    std::string thing(const std::string& body) const {
        if (text)
            return "{ 2 0 " + body + "}\n";
        std::string head;
        for (const std::size_t number : {std::size_t(2), std::size_t(0), body.size()})
            for (const int byte : {0, 8, 16, 24})
                head += static_cast<char>(number >> (big ? 24 - byte : byte));
        return head + body;
    }
};

inline constexpr Form forms[] = {{"1", false, false, false}, {"1", false, true, false},
                                 {"0", true, false, false},  {"3", false, false, true},
                                 {"3", false, true, true},   {"2", true, false, true}};

/// What a program writes whose own types are "thing" (2) and "other" (3), without header and list
/// of types.
inline std::string written(ioWriteMethod method, const Write& write, ioStatus status = ioOK) {
    Output output;
    Registry registry(false, {{"thing", nullptr}, {"other", nullptr}});
    const std::unique_ptr<ioWriteContext> context(
        ioWriteContextAlloc(output.stream, method, &registry));
    context->writePacketRegistry(false);
    context->startFile();
    const std::size_t start = output.bytes().size();
    write(*context);
    context->endFile();
    return context->getStatus() == status ? output.bytes().substr(start) : "wrong status";
}

/// A program that reads a file by types of its own.
template<class Client = ioClientReadContext>
struct Reader {
    explicit Reader(std::string file, std::vector<std::pair<const char*, Read>> types = {},
                    int blockSize = 4096)
        : input(std::move(file), blockSize), registry(true, std::move(types)) {}

    Input input;
    Registry registry;
    std::unique_ptr<ioReadContext> context{ioReadContextAlloc(input.stream, &registry)};
    Client client{context.get()};
};

/// Reads a file by a program whose types are "thing" and "other".
inline ioStatus readFile(const std::string& file, const Read& thing, const Read& other = nullptr,
                         int blockSize = 4096) {
    Reader<> reader(file, {{"thing", thing}, {"other", other}}, blockSize);
    return reader.context ? reader.client.readFile() : ioOpenError;
}

} // namespace packets
