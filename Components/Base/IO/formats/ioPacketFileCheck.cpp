// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFileCheck.h"

#include <new>

#include "Base/IO/formats/ioPacketFileAsciiBufferImpl.h"
#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPacketFile.h"
#include "Base/Strings/zeStringIString.h"

namespace {

/// A link that hands on byte by byte, so that it holds nothing when it is popped, and that delivers
/// at signs behind the end of the data: header and list of types end at one.
class EndGuard : public ioBuffer {
public:
    explicit EndGuard(std::int64_t& count) : ioBuffer(true, 1), count_(count) {}

    int getType() override { return -1; }
    void close() override {}
    void write(const char*, int) override {}
    int read(char* destination, int n) override {
        if (next_ && next_->readData(destination, n) == n) {
            ++count_;
        } else { // and so it stays, since statuses do
            *destination = '@';
            count_ = -1;
        }
        return n;
    }

private:
    std::int64_t& count_; // of the bytes handed on; -1 behind the end
};

/// Puts the guard on a stream for as long as it lives itself.
class Guarded {
public:
    Guarded(ioBufferedStreamInput& stream, std::int64_t& count) : stream_(stream) {
        stream.addBufferToChain(new EndGuard(count));
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    ~Guarded() { stream_.popBufferChain(); }

private:
    ioBufferedStreamInput& stream_;
};

/// Reads header and list of types and returns their size; -1 if the stream ends in them.
std::int64_t readStart(ioBufferedStreamInput& stream, ioHeader& header, ioPacketRegistry& types) {
    std::int64_t size = 0;
    const Guarded guarded(stream, size);
    if (header.readHeader(stream)) {
        types.init();
        header.valid = types.readRegistry(stream) == 0 && !types.isMisnumbered();
    }
    return size;
}

/// Reads the next packet as the format does, with its place behind `place`. False if there is none.
bool readNext(ioReadContext& context, ioBufferedStreamInput& stream,
              ioPacketFileBinaryBuffer& packet, ioPacketFilePlace& place) {
    place.position += place.size;
    place.hasReference = packet.readPacketStart(&context, stream);
    place.size = packet.packetSize();
    return true;
}

bool readNext(ioReadContext& context, ioBufferedStreamInput& stream,
              ioPacketFileAsciiBuffer& packet, ioPacketFilePlace& place) {
    const std::int64_t gap = packet.findPacket(stream);
    if (gap < 0)
        return false;
    place.position += place.size + gap;
    place.hasReference = packet.readFoundPacket(&context, stream);
    place.size = packet.packetSize();
    return true;
}

/// A context of a format that goes from packet to packet and has no type read one.
template<class Base, class Buffer>
class Walker : public Base {
public:
    using Base::Base;

    ioStatus walk(ioBufferedStreamInput& stream, std::int64_t position,
                  ioPacketFileVisitor* visitor) {
        auto& packet = static_cast<Buffer&>(*this->pushPacket());
        const ioPacketType* const last = this->getRegistry()->lookup("packetFile_EOF");
        ioPacketFilePlace place{position};
        const ioPacketType* type = nullptr;
        while (type != last || !type) {
            packet.reset();
            if (!readNext(*this, stream, packet, place) || stream.getStatus() != streamOK) {
                this->promoteStreamStatus(stream);
                return this->getStatus();
            }
            type = packet.getType();
            if (!type)
                return ioBadFile;
            if (visitor && !visitor->packet(*this, *type, place))
                return ioHalted;
            packet.readPacketEnd(this);
        }
        return ioOK;
    }
};

template<class Base, class Buffer>
ioStatus walk(ioBufferedStreamInput& stream, ioPacketRegistry& types, std::int64_t position,
              ioPacketFileVisitor* visitor) {
    Walker<Base, Buffer> walker(stream);
    walker.associateRegistry(&types);
    return walker.walk(stream, position, visitor);
}

/// Debug files have the structure of the others: where tags are not looked at, none can be wrong.
ioStatus walkPackets(ioBufferedStreamInput& stream, ioReadMethod method, ioPacketRegistry& types,
                     std::int64_t position, ioPacketFileVisitor* visitor) {
    switch (method) {
    case ioReadAscii:
    case ioReadAsciiDebug:
        return walk<ioReadContextAscii, ioPacketFileAsciiBuffer>(stream, types, position, visitor);
    case ioReadBinarySameEndian:
    case ioReadBinarySameEndianDebug:
        return walk<ioReadContextBinarySameEndian, ioPacketFileBinaryBuffer>(stream, types,
                                                                             position, visitor);
    case ioReadBinarySwapped:
    case ioReadBinarySwappedDebug:
        return walk<ioReadContextBinarySwapped, ioPacketFileBinaryBuffer>(stream, types, position,
                                                                          visitor);
    case ioReadUnknown:
        break;
    }
    return ioBadFile;
}

ioStatus check(ioBufferedStreamInput& stream, ioPacketRegistry& types,
               ioPacketFileVisitor* visitor) {
    ioHeader header;
    const std::int64_t size = readStart(stream, header, types);
    if (size < 0 || !header.valid) {
        stream.promoteBufferStatus();      // which the guard has kept to itself
        ioReadContextAscii failed(stream); // any context knows what a stream's failure means
        failed.setStatus(ioBadFile);
        failed.promoteStreamStatus(stream);
        return failed.getStatus();
    }
    if (visitor && !visitor->start(header, types))
        return ioHalted;
    return walkPackets(stream, header.determineReadMethod(), types, size, visitor);
}

} // namespace

// ioPacketFileVisitor

ioPacketFileVisitor::~ioPacketFileVisitor() = default;

bool ioPacketFileVisitor::start(const ioHeader&, const ioPacketRegistry&) {
    return true;
}

bool ioPacketFileVisitor::packet(ioReadContext&, const ioPacketType&, const ioPacketFilePlace&) {
    return true;
}

// ioPacketFileCheck

ioStatus ioPacketFileCheck(ioBufferedStreamInput& stream, ioPacketFileVisitor* visitor,
                           ioPacketRegistry* registry) {
    try {
        ioSimplePacketRegistry own(true);
        return check(stream, registry ? *registry : own, visitor);
    } catch (const std::bad_alloc&) {
        return ioError;
    }
}

ioStatus ioPacketFileCheck(const zeString::IString& path) {
    ioBufferedStreamInput stream;
    stream.openFile(path);
    const ioStatus status = ioPacketFileCheck(stream);
    stream.close();
    return status;
}
