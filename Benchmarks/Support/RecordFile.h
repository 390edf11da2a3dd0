// SPDX-License-Identifier: MIT

/// @file
/// The small records of Workload.h as packet files, written and read through the public interface
/// as an application would.

#pragma once

#include <memory>

#include "Base/IO/ioPacketFile.h"
#include "Base/Strings/zeStringIString.h"
#include "Support/Workload.h"

namespace bench {

constexpr size_t recordCount = 200000;

/// A registry of one type, which it owns.
template<class Type>
class Registry : public ioPacketRegistry {
public:
    explicit Registry(bool namesOnly) : ioPacketRegistry(namesOnly), type(new Type) {}
    void registerAllTypes() override { supportedType(type); }

    Type* const type;
};

/// Writes a whole file to an open stream, and closes it; `packets` is given the context and the
/// type.
template<class Type, class Packets>
void writeStream(ioBufferedStreamOutput& stream, ioWriteMethod method, Packets packets) {
    Registry<Type> registry(false);
    std::unique_ptr<ioWriteContext> context(ioWriteContextAlloc(stream, method, &registry));
    context->startFile();
    packets(*context, registry.type);
    context->endFile();
    stream.close();
    require(context->good() && stream.getStatus() == streamOK, "the file was written");
}

/// Writes a whole file.
template<class Type, class Packets>
void writeFile(const std::string& path, ioWriteMethod method, Packets packets) {
    ioBufferedStreamOutput stream;
    stream.openFile(zeString::IString(path.c_str(), zeString::EncodingUTF8, nullptr));
    writeStream<Type>(stream, method, packets);
}

/// Reads a whole file; `done` is given the type and may look at what it read.
template<class Type, class Done>
void readFile(const std::string& path, Done done) {
    ioBufferedStreamInput stream;
    stream.openFile(zeString::IString(path.c_str(), zeString::EncodingUTF8, nullptr));
    Registry<Type> registry(true);
    std::unique_ptr<ioReadContext> context(ioReadContextAlloc(stream, &registry));
    ioClientReadContext client(context.get());
    context->readFile(client);
    require(context->getStatus() == ioOK, "the file was read");
    done(*registry.type);
    stream.close();
}

/// Reads one record a packet and keeps a sum of what it met.
class RecordType : public ioPacketType {
public:
    RecordType() : ioPacketType("record") {}

    static void write(ioWriteContext& context, const ioPacketType* type, const Rec& r) {
        context.startPacket(type, nullptr);
        context.writeInt(r.id);
        context.writeDouble(r.x);
        context.writeDouble(r.y);
        context.writeDouble(r.z);
        context.writeFloat(r.w);
        context.writeShort(r.kind);
        context.writeBool(r.flag);
        context.writeCString(r.name.c_str());
        context.writeUInt(r.ref);
        context.endPacket();
    }

    void read(ioClientReadContext& context) override {
        record_.id = context.readInt();
        record_.x = context.readDouble();
        record_.y = context.readDouble();
        record_.z = context.readDouble();
        record_.w = context.readFloat();
        record_.kind = context.readShort();
        record_.flag = context.readBool();
        record_.name.assign(context.readCString());
        record_.ref = context.readUInt();
        sum += record_.id + record_.x;
        ++count;
        keep(record_);
    }

    double sum = 0;
    size_t count = 0;

private:
    Rec record_{};
};

inline void putRecords(ioWriteContext& context, const ioPacketType* type) {
    for (const Rec& r : recs(recordCount))
        RecordType::write(context, type, r);
}

inline void writeRecords(const std::string& path, ioWriteMethod method) {
    writeFile<RecordType>(path, method, putRecords);
}

inline void readRecords(const std::string& path) {
    readFile<RecordType>(path, [](const RecordType& type) {
        require(type.count == recordCount, "all records came back");
        keep(type.sum);
    });
}

} // namespace bench
