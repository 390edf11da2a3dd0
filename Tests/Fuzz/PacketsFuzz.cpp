// SPDX-License-Identifier: MIT

// A reader that does everything that a client can do, in the order in which the file asks for it.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iterator>
#include <memory>
#include <set>
#include <tuple>
#include <vector>

#include "Base/IO/ioPacketFile.h"

#include "IO/formats/PacketFileSupport.h"

namespace {

constexpr int longestArray = 16;
constexpr int operationsPerPacket = 200;

/// What fatalError() throws in this process.
struct Fatal {};

/// Objects that packets describe; nothing looks into them.
char s_objects[8];

class Reader : public ioClientReadContext {
public:
    using ioClientReadContext::ioClientReadContext;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() override {
        for (void* text : texts_)
            std::free(text);
    }

    /// Mixes what was read into one number, so that two readings can be compared.
    template<class T>
    void take(T value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        takeBytes({bytes, sizeof value});
    }
    void takeBytes(std::string_view bytes) {
        digest_ = 31 * digest_ + std::hash<std::string_view>()(bytes);
    }
    std::size_t digest() const { return digest_; }

    /// The count of an array, or the number of an object.
    int small() { return readUChar() % longestArray; }
    void* object() { return s_objects + small() % 8; }
    /// A place for a reference, which has to stay until the file ends.
    void* location() { return &locations_.emplace_back(); }
    /// Takes over what a string packet made.
    void own(void* text) {
        if (text < s_objects || text >= s_objects + sizeof s_objects)
            texts_.insert(text);
    }

private:
    std::size_t digest_ = 0;
    std::deque<void*> locations_;
    std::set<void*> texts_;
};

template<auto read>
void value(Reader& in) {
    in.take((in.*read)());
}

template<class T, auto read>
void array(Reader& in) {
    T values[longestArray] = {};
    (in.*read)(values, in.small());
    for (T each : values)
        in.take(each);
}

using R = ioClientReadContext;

/// What a byte in a packet asks for. The files of the corpus depend on the order: append only.
void (*const operations[])(Reader& in) = {
    value<&R::readBool>,
    value<&R::readChar>,
    value<&R::readUChar>,
    value<&R::readShort>,
    value<&R::readUShort>,
    value<&R::readInt>,
    value<&R::readUInt>,
    value<&R::readInt64>,
    value<&R::readUInt64>,
    value<&R::readFloat>,
    value<&R::readDouble>,
    value<&R::readRawByte>,
    array<bool, &R::readBoolArray>,
    array<char, &R::readCharArray>,
    array<unsigned char, &R::readUCharArray>,
    array<short, &R::readShortArray>,
    array<unsigned short, &R::readUShortArray>,
    array<int, &R::readIntArray>,
    array<unsigned int, &R::readUIntArray>,
    array<std::int64_t, &R::readInt64Array>,
    array<std::uint64_t, &R::readUInt64Array>,
    array<float, &R::readFloatArray>,
    array<double, &R::readDoubleArray>,
    [](Reader& in) {
        const char* text = in.readCString();
        in.takeBytes(text ? text : "null");
    },
    [](Reader& in) { in.take(in.nextChunk()); },
    [](Reader& in) { in.startSubPacket(); },
    [](Reader& in) { in.endSubPacket(); },
    [](Reader& in) { in.readReferenceUsage(in.location(), 7); },
    [](Reader& in) { in.take(in.readReferenceUsage() != nullptr); },
    [](Reader& in) {
        void* object = in.object();
        in.readReferenceDefinition(object);
    },
    [](Reader& in) {
        void* object = in.object();
        in.defineReferenceAlias(in.readReference(), object);
    },
    [](Reader& in) { in.useReference(in.readReference()); },
    [](Reader& in) { in.undefineReference(in.readReference()); },
    [](Reader& in) {
        void* object = in.object();
        in.useReference(object);
        in.undefineReference(object);
    },
    [](Reader& in) { in.invalidPacket(); },
    [](Reader& in) { in.halt(); },
};

/// Does what one byte after another asks for, up to one that asks for nothing.
void readOperations(ioClientReadContext& client) {
    auto& in = static_cast<Reader&>(client);
    in.take(in.getPacketReference());
    if (in.getPacketReference() != 0)
        in.definePacketReference(in.object());
    for (int i = 0; i < operationsPerPacket; ++i) {
        const unsigned char operation = in.readUChar();
        if (operation >= std::size(operations))
            return;
        operations[operation](in);
    }
}

/// The library's own type for strings; what it makes is freed with the reader.
class StringType : public ioPacketString {
    void read(ioClientReadContext& client) override {
        ioPacketString::read(client);
        auto& in = static_cast<Reader&>(client);
        in.own(in.getContext().getReferenceDefinition(in.getPacketReference()));
    }
};

class ReadingRegistry : public ioPacketRegistry {
public:
    ReadingRegistry() : ioPacketRegistry(true) {}
    void registerAllTypes() override {
        supportedType(new StringType);
        supportedType(new packets::Type("thing", readOperations));
    }
};

/// What came of it: the status, the values, the packets, and whether fatalError() was called.
using Outcome = std::tuple<ioStatus, std::size_t, int, bool>;

Outcome read(const std::string& file, int blockSize) {
    packets::Input input(file, blockSize);
    ReadingRegistry registry;
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    if (!context)
        return {};
    Reader reader(context.get());
    bool fatal = false;
    try {
        reader.readFile();
    } catch (const Fatal&) {
        fatal = true;
    }
    return {context->getStatus(), reader.digest(), context->getPacketsRead(), fatal};
}

} // namespace

// Reads a file in blocks of two sizes, which must come to the same.
//
// The library waits for ever for an "@" that ends a header and for the "{" that begins a packet of
// text: both are put behind the file, so that every wait ends there.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file(reinterpret_cast<const char*>(data), size);
    ioPacketFileErrorInit([](char*) {});
    ioPacketFileAbortInit([] { throw Fatal(); });
    packets::Input checked(file);
    if (ioPacketFileCheck(checked.stream) == ioOK)
        read(file, 4096); // which ends without help
    // Each of the header's eleven numbers takes a byte of what stands in its place.
    const std::string ended = file + std::string(16, '@') + "\n{";
    if (read(ended, 4096) != read(ended, 3))
        std::abort();
    return 0;
}
