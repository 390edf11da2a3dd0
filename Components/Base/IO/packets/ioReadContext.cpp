// SPDX-License-Identifier: MIT

#include "Base/IO/ioReadContext.h"

#include <new>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioClientContext.h"
#include "Base/IO/ioPacketFileBuffer.h"
#include "Base/IO/ioPacketFileError.h"
#include "Base/IO/ioPacketRegistry.h"
#include "Base/IO/ioPacketType.h"
#include "Base/IO/packets/ioReferenceMapImpl.h"

ioReadContext::ioReadContext(ioReadMethod method, ioBufferedStreamInput& stream)
    : stream_(&stream), method_(method) {}

ioReadContext::~ioReadContext() = default;

// References

void ioReadContext::definePacketReference(void* pointer) {
    defineReference(packetReference_, pointer);
}

void* ioReadContext::readReferenceUsage() {
    int reference;
    return readReferenceUsage(reference);
}

void* ioReadContext::readReferenceUsage(int& reference) {
    reference = readReference();
    if (reference == 0 || !isReferenceDefined(reference))
        return nullptr;
    useReference(reference);
    return getReferenceDefinition(reference);
}

void ioReadContext::readReferenceUsage(void* location, int offset) {
    resolveReference(readReference(), location, offset);
}

void ioReadContext::readReferenceDefinition(void* pointer) {
    defineReference(readReference(), pointer);
}

int ioReadContext::readReference() {
    return static_cast<int>(readUInt());
}

void ioReadContext::defineReference(int reference, void* pointer) {
    defineReference(reference, pointer, false);
}

void ioReadContext::defineReferenceAlias(int reference, void* pointer) {
    defineReference(reference, pointer, true);
}

void ioReadContext::resolveReference(int reference, void* location, int offset) {
    getReferenceMap()->resolveReferenceUsage(reference, static_cast<void**>(location),
                                             currentType(), offset);
}

void ioReadContext::useReference(int reference) {
    getReferenceMap()->useReference(reference, currentType(), 0);
}

void ioReadContext::useReference(void* pointer) {
    useReference(getReference(pointer));
}

void ioReadContext::defineReference(int reference, void* pointer, bool alias) {
    getReferenceMap()->associatePtrWithReference(reference, pointer, alias);
    getReferenceMap()->defineReference(reference, currentType());
    if (reference == packetReference_)
        referenceDefined_ = true;
}

void ioReadContext::resolveRemainingReferences(ioClientReadContext& client) {
    getReferenceMap()->verifyReferenceMap(client);
}

// Files and packets

void ioReadContext::readFile(ioClientReadContext& client) {
    try {
        readWholeFile(client);
    } catch (const std::bad_alloc&) {
        setStatus(ioError);
        popPacket();
    }
}

void ioReadContext::readWholeFile(ioClientReadContext& client) {
    if (!getRegistry()) {
        setStatus(ioError);
        return;
    }
    if (auto* const map = dynamic_cast<ioReferenceMapImpl*>(getReferenceMap()))
        map->startFile();
    getRegistry()->init();
    if (getRegistry()->readRegistry(*stream_) != 0 || getRegistry()->isMisnumbered()) {
        setStatus(ioBadFile);
        return;
    }
    eofType_ = getRegistry()->lookup("packetFile_EOF");
    pushPacket();
    while (good() && !halted_)
        readPacket(client);
    popPacket();
    if (halted_)
        setStatus(ioHalted);
    if (getStatus() != ioEndOfFile)
        return;
    resolveRemainingReferences(client);
    setStatus(ioOK);
}

void ioReadContext::readPacket(ioClientReadContext& client) {
    ioPacketFileBuffer* packet = currentPacket();
    if (!packet) {
        setStatus(ioError);
        return;
    }
    packet->reset();
    packetReference_ = 0;
    referenceDefined_ = false;
    const int hasReference = packet->readPacketStart(this, *stream_);
    if (stream_->getStatus() != streamOK) {
        promoteStreamStatus(*stream_);
        return;
    }
    ioPacketType* type = packet->getType();
    if (!type) {
        setStatus(ioBadFile);
        return;
    }
    type->used();
    if (type == eofType_) {
        packet->readPacketEnd(this);
        setStatus(ioEndOfFile);
        return;
    }
    if (hasReference == 0 || hasReference == 1) { // other values are reserved
        if (hasReference == 1)
            packetReference_ = readReference();
        client.prePacketRead();
        type->read(client);
        client.postPacketRead();
    }
    packet->readPacketEnd(this);
    if (packetReference_ != 0 && !referenceDefined_ && packet->isValid())
        undefinedPacketReference(*type);
    ++packetsRead_;
}

void ioReadContext::undefinedPacketReference(const ioPacketType& type) {
    ioPacketFileError("ioPacketFile: A packet type: '%s'\n", type.getName());
    ioPacketFileError("  had a reference associated with it but no \n");
    ioPacketFileError("  definition was provided by the client code.\n");
    // Prints 0 instead of the reference: kept for compatibility.
    ioPacketFileError("  The undefined reference is: %d.\n", static_cast<int>(referenceDefined_));
    fatalError();
}

bool ioReadContext::reusePacketFile() {
    setStatus(ioOK);
    halted_ = false;
    ioHeader header;
    if (header.readHeader(*stream_) && header.determineReadMethod() == method_)
        return true;
    halted_ = true;
    return false;
}

// Chunks and sub-packets

bool ioReadContext::nextChunk() {
    ioPacketFileBuffer* packet = currentPacket();
    if (!packet)
        return false;
    endChunk();
    packet->setChunkOpen(true);
    packet->readChunkStart(this);
    return packet->isValidChunk();
}

void ioReadContext::endChunk() {
    ioPacketFileBuffer* packet = currentPacket();
    if (packet->isChunkOpen()) {
        packet->readChunkEnd(this);
        packet->setChunkOpen(false);
    }
}

void ioReadContext::startSubPacket() {
    if (ioPacketFileBuffer* packet = currentPacket()) {
        packet->pushSubPacket();
        packet->readSubPacketStart(this);
    }
}

void ioReadContext::endSubPacket() {
    ioPacketFileBuffer* packet = currentPacket();
    if (!packet || packet->getLevel() == 0)
        return;
    endChunk();
    packet->readSubPacketEnd(this);
    packet->popSubPacket();
}
