// SPDX-License-Identifier: MIT

#include "Base/IO/ioWriteContext.h"

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPacketFileBuffer.h"
#include "Base/IO/ioPacketRegistry.h"
#include "Base/IO/ioPacketType.h"

ioWriteContext::ioWriteContext(ioBufferedStreamOutput& stream) : stream_(&stream) {}

ioWriteContext::~ioWriteContext() = default;

void ioWriteContext::writeReference(const void* pointer, bool define) {
    int reference = getReference(pointer);
    if (reference < 0)
        reference = getReferenceMap()->newReference(const_cast<void*>(pointer));
    writeReference(reference, define);
}

void ioWriteContext::writeReference(int reference, bool define) {
    if (define)
        getReferenceMap()->defineReference(reference, currentType());
    writeUInt(static_cast<unsigned int>(reference));
}

void ioWriteContext::startFile() {
    inFile_ = true;
    if (!good())
        return;
    if (!getRegistry()) {
        setStatus(ioError);
        return;
    }
    getRegistry()->init();
    if (writeRegistry_ && getRegistry()->hasNameTwice()) {
        setStatus(ioError);
        return;
    }
    getHeader().writeHeader(*stream_);
    getRegistry()->writeRegistry(*stream_, writeRegistry_);
    stringType_ = getRegistry()->lookup("packetFile_string");
    promoteStreamStatus(*stream_);
}

void ioWriteContext::endFile() {
    if (!good())
        return;
    auto* type = dynamic_cast<ioPacketEOF*>(getRegistry() ? getRegistry()->lookup("packetFile_EOF")
                                                          : nullptr);
    if (isPacketOpen() || !type)
        setStatus(ioError);
    if (type)
        type->write(*this);
    promoteStreamStatus(*stream_);
    inFile_ = false;
}

void ioWriteContext::startPacket(const ioPacketType* type, const void* reference) {
    ioPacketFileBuffer* packet = pushPacket();
    packet->reset();
    auto* packetType = const_cast<ioPacketType*>(type); // the reference map keeps it for reports
    packet->setType(packetType);
    const bool listed =
        type && type->getId() >= 0 && (!getRegistry() || getRegistry()->isListed(type->getId()));
    if (!listed) {
        packet->writePacketStart(this, 0, packetType);
        packet->setInvalid();
        setStatus(ioError);
        return;
    }
    packet->writePacketStart(this, reference ? 1 : 0, packetType);
    if (reference)
        writeReference(reference, true);
    type->used();
}

void ioWriteContext::startPacket(const char* typeName, const void* reference) {
    const ioPacketType* type =
        getRegistry() && typeName ? getRegistry()->lookup(typeName) : nullptr;
    startPacket(type, reference);
}

void ioWriteContext::endPacket() {
    if (!isPacketOpen())
        return;
    endChunk();
    currentPacket()->writePacketEnd(this, *stream_);
    popPacket();
}

void ioWriteContext::startChunk() {
    if (!isPacketOpen())
        return;
    endChunk();
    currentPacket()->setChunkOpen(true);
    currentPacket()->writeChunkStart(this);
}

void ioWriteContext::endChunk() {
    ioPacketFileBuffer* packet = currentPacket();
    if (packet && packet->isChunkOpen()) {
        packet->setChunkOpen(false);
        packet->writeChunkEnd(this);
    }
}

void ioWriteContext::startSubPacket() {
    if (!isPacketOpen())
        return;
    currentPacket()->pushSubPacket();
    currentPacket()->writeSubPacketStart(this);
}

void ioWriteContext::endSubPacket() {
    if (!isPacketOpen() || currentPacket()->getLevel() == 0)
        return;
    endChunk();
    currentPacket()->writeSubPacketEnd(this);
    currentPacket()->popSubPacket();
}

void ioWriteContext::writeCStringPacket(const char* text) {
    if (!text)
        return;
    startPacket(stringType_, text);
    writeCString(text);
    endPacket();
}
