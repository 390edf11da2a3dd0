// SPDX-License-Identifier: MIT

#include "Base/IO/ioContext.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPacketFileBuffer.h"
#include "Base/IO/ioPacketFileError.h"
#include "Base/IO/ioPacketRegistry.h"
#include "Base/IO/ioPacketType.h"

namespace {

constexpr int initialDepth = 10;

} // namespace

ioContext::ioContext()
    : referenceMap_(ioPacketFileNewReferenceMap()),
      packets_(new ioPacketFileBuffer* [initialDepth] {}),
      capacity_(initialDepth) {}

ioContext::~ioContext() {
    for (int level = 0; level < capacity_; ++level)
        delete packets_[level];
    delete[] packets_;
}

void ioContext::undefineReference(void* pointer) {
    referenceMap_->undefineReference(pointer);
}

void ioContext::undefineReference(int reference) {
    referenceMap_->undefineReference(reference);
}

ioPacketType* ioContext::lookupType(int id) const {
    return registry_ ? registry_->lookup(id) : nullptr;
}

bool ioContext::isReferenceDefined(int reference) const {
    return referenceMap_->isReferenceDefined(reference);
}

bool ioContext::isReferenceDefined(const void* pointer) const {
    return isReferenceDefined(getReference(pointer));
}

int ioContext::getReference(const void* pointer) const {
    return referenceMap_->findReference(pointer);
}

void* ioContext::getReferenceDefinition(int reference) const {
    return referenceMap_->getReferenceDefinition(reference);
}

void ioContext::reportUnresolvedPtrs(ioPacketType* type, void (*callback)(void*, int)) {
    referenceMap_->reportUnresolvedPtrs(type, callback);
}

void ioContext::invalidPacket() {
    if (packet_)
        packet_->setInvalid();
}

void ioContext::promoteStreamStatus(const ioBufferedStream& stream) {
    switch (stream.getStatus()) {
    case streamOK:
        break;
    case streamOpenError:
        setStatus(ioOpenError);
        break;
    case streamEOF:
    case streamCompressEnd:
        setStatus(ioBadFile);
        break;
    case streamDiskFull:
        setStatus(ioDiskFull);
        break;
    case streamChecksumError:
        setStatus(ioChecksumError);
        break;
    case streamIOError:
    default:
        setStatus(ioError);
    }
}

void ioContext::fatalError() {
    ioPacketFileError("ioPacketFile: Fatal error.  Aborting.\n");
    for (int level = 0; level < depth_; ++level) {
        const ioPacketType* type = packets_[level]->getType();
        // The name's address where one expects a number or the name: kept for compatibility.
        const auto name = reinterpret_cast<std::intptr_t>(type ? type->getName() : nullptr);
        ioPacketFileError("  %d: %d\n", level, static_cast<int>(name));
    }
    ioPacketFileAbort();
}

ioPacketType* ioContext::currentType() const {
    return packet_ ? packet_->getType() : nullptr;
}

ioPacketFileBuffer* ioContext::pushPacket() {
    if (depth_ + 1 == capacity_) {
        auto** const grown = new ioPacketFileBuffer* [2 * static_cast<unsigned int>(capacity_)] {};
        std::copy_n(packets_, capacity_, grown);
        delete[] std::exchange(packets_, grown);
        capacity_ *= 2;
    }
    ioPacketFileBuffer*& slot = packets_[depth_ + 1];
    if (!slot)
        slot = allocPacket();
    ++depth_;
    packet_ = slot;
    setPacket(packet_);
    return packet_;
}

void ioContext::popPacket() {
    if (depth_ < 0)
        return;
    --depth_;
    packet_ = depth_ < 0 ? nullptr : packets_[depth_];
    setPacket(packet_);
}
