// SPDX-License-Identifier: MIT

#include "Fuzz/PacketFuzz.h"

#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <set>
#include <vector>

#include "Base/IO/ioPacketFile.h"

#include "IO/formats/PacketFileSupport.h"

namespace fuzz {

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

struct Operation {
    void (*write)(ioWriteContext& out);
    void (*read)(Reader& in);
};

template<auto writeValue, auto readValue>
constexpr Operation value = {
    [](ioWriteContext& out) { (out.*writeValue)(1); },
    [](Reader& in) { in.take((in.*readValue)()); },
};

template<class T, auto writeArray, auto readArray>
constexpr Operation array = {
    [](ioWriteContext& out) {
        const T values[3] = {1, 0, 1};
        out.writeUChar(3);
        (out.*writeArray)(values, 3);
    },
    [](Reader& in) {
        T values[longestArray] = {};
        (in.*readArray)(values, in.small());
        for (T each : values)
            in.take(each);
    },
};

using W = ioWriteContext;
using R = ioClientReadContext;

/// What a byte in a packet asks for. The files of the corpus depend on the order: append only.
constexpr Operation operations[] = {
    value<&W::writeBool, &R::readBool>,
    value<&W::writeChar, &R::readChar>,
    value<&W::writeUChar, &R::readUChar>,
    value<&W::writeShort, &R::readShort>,
    value<&W::writeUShort, &R::readUShort>,
    value<&W::writeInt, &R::readInt>,
    value<&W::writeUInt, &R::readUInt>,
    value<&W::writeInt64, &R::readInt64>,
    value<&W::writeUInt64, &R::readUInt64>,
    value<&W::writeFloat, &R::readFloat>,
    value<&W::writeDouble, &R::readDouble>,
    value<&W::writeRawByte, &R::readRawByte>,
    array<bool, &W::writeBoolArray, &R::readBoolArray>,
    array<char, &W::writeCharArray, &R::readCharArray>,
    array<unsigned char, &W::writeUCharArray, &R::readUCharArray>,
    array<short, &W::writeShortArray, &R::readShortArray>,
    array<unsigned short, &W::writeUShortArray, &R::readUShortArray>,
    array<int, &W::writeIntArray, &R::readIntArray>,
    array<unsigned int, &W::writeUIntArray, &R::readUIntArray>,
    array<std::int64_t, &W::writeInt64Array, &R::readInt64Array>,
    array<std::uint64_t, &W::writeUInt64Array, &R::readUInt64Array>,
    array<float, &W::writeFloatArray, &R::readFloatArray>,
    array<double, &W::writeDoubleArray, &R::readDoubleArray>,
    {[](W& out) { out.writeCString("a \"[text]\" {in} <brackets>\\\n"); },
     [](Reader& in) {
         const char* text = in.readCString();
         in.takeBytes(text ? text : "null");
     }},
    {[](W& out) { out.startChunk(); }, [](Reader& in) { in.take(in.nextChunk()); }},
    {[](W& out) { out.startSubPacket(); }, [](Reader& in) { in.startSubPacket(); }},
    {[](W& out) { out.endSubPacket(); }, [](Reader& in) { in.endSubPacket(); }},
    {[](W& out) { out.writeReference(&s_objects[0], false); },
     [](Reader& in) { in.readReferenceUsage(in.location(), 7); }},
    {[](W& out) { out.writeReference(&s_objects[0], false); },
     [](Reader& in) { in.take(in.readReferenceUsage() != nullptr); }},
    {[](W& out) {
         out.writeUChar(2);
         out.writeReference(&s_objects[2], true);
     },
     [](Reader& in) {
         void* object = in.object();
         in.readReferenceDefinition(object);
     }},
    {[](W& out) {
         out.writeUChar(3);
         out.writeReference(&s_objects[3], false);
     },
     [](Reader& in) {
         void* object = in.object();
         in.defineReferenceAlias(in.readReference(), object);
     }},
    {[](W& out) { out.writeReference(&s_objects[4], false); },
     [](Reader& in) { in.useReference(in.readReference()); }},
    {[](W& out) { out.writeReference(&s_objects[5], false); },
     [](Reader& in) { in.undefineReference(in.readReference()); }},
    {[](W& out) { out.writeUChar(4); },
     [](Reader& in) {
         void* object = in.object();
         in.useReference(object);
         in.undefineReference(object);
     }},
    {[](W&) {}, [](Reader& in) { in.invalidPacket(); }},
    {[](W&) {}, [](Reader& in) { in.halt(); }},
};
constexpr int halting = 1;
constexpr auto operationCount = static_cast<int>(std::size(operations));

/// Does what one byte after another asks for, up to one that asks for nothing.
void readOperations(ioClientReadContext& client) {
    auto& in = static_cast<Reader&>(client);
    in.take(in.getPacketReference());
    if (in.getPacketReference() != 0)
        in.definePacketReference(in.object());
    for (int i = 0; i < operationsPerPacket; ++i) {
        const unsigned char operation = in.readUChar();
        if (operation >= operationCount)
            return;
        operations[operation].read(in);
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

struct Outcome {
    ioStatus status = ioOpenError;
    std::size_t digest = 0;
    int packets = 0;
    bool fatal = false;

    bool operator==(const Outcome&) const = default;
};

Outcome read(const std::string& file, int blockSize) {
    packets::Input input(file, blockSize);
    ReadingRegistry registry;
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(input.stream, &registry));
    if (!context)
        return {};
    Reader reader(context.get());
    Outcome outcome;
    try {
        reader.readFile();
    } catch (const Fatal&) {
        outcome.fatal = true;
    }
    outcome.status = context->getStatus();
    outcome.digest = reader.digest();
    outcome.packets = context->getPacketsRead();
    return outcome;
}

void setHooks() {
    ioPacketFileErrorInit([](char*) {});
    ioPacketFileAbortInit([] { throw Fatal(); });
}

} // namespace

std::string everything(ioWriteMethod method) {
    packets::Output output;
    packets::Registry registry(false, {{"thing", nullptr}});
    const std::unique_ptr<ioWriteContext> context(
        ioWriteContextAlloc(output.stream, method, &registry));
    context->startFile();
    const auto put = [&](int operation) {
        context->writeUChar(static_cast<unsigned char>(operation));
        operations[operation].write(*context);
    };
    for (const int object : {0, 1}) {
        context->startPacket("thing", object == 0 ? nullptr : &s_objects[object]);
        if (object != 0)
            context->writeUChar(static_cast<unsigned char>(object));
        for (int i = 0; i < operationCount - halting; ++i)
            put(i);
        context->writeUChar(255);
        context->endPacket();
        context->writeCStringPacket("a string");
    }
    context->endFile();
    return output.bytes();
}

void readPackets(std::string_view file) {
    setHooks();
    packets::Input checked((std::string(file)));
    if (ioPacketFileCheck(checked.stream) == ioOK)
        read(std::string(file), 4096); // which ends without help
    // Each of the header's eleven numbers takes a byte of what stands in its place.
    const std::string ended = std::string(file) + std::string(16, '@') + "\n{";
    if (read(ended, 4096) != read(ended, 3))
        std::abort();
}

} // namespace fuzz
