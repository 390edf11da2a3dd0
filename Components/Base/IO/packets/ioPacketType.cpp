// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketType.h"

#include <cassert>
#include <cstring>

#include "Base/IO/ioClientContext.h"
#include "Base/IO/packets/ioReferenceMapImpl.h"

// ioPacketType

ioPacketType::ioPacketType(const char* name) : name_(new char[std::strlen(name) + 1]) {
    std::strcpy(name_, name);
}

ioPacketType::~ioPacketType() {
    delete[] name_;
}

void ioPacketType::read(ioClientReadContext& client) {
    client.invalidPacket();
}

void ioPacketType::memoryNotReferenced(ioClientReadContext&, void*) {}

void ioPacketType::hasUnresolvedPointer(ioClientReadContext&, void*, int) {}

void ioPacketType::handleUnreferencedMemory(ioClientReadContext& client, void* memory) {
    flags_ |= unreferencedFlag;
    memoryNotReferenced(client, memory);
}

void ioPacketType::handleUnresolvedPtr(ioClientReadContext& client, void* pointer, int offset) {
    flags_ |= unresolvedFlag;
    hasUnresolvedPointer(client, pointer, offset);
}

// ioReadPacketByFunction

ioReadPacketByFunction::ioReadPacketByFunction(const char* name,
                                               void (*function)(ioClientReadContext&))
    : ioPacketType(name), function_(function) {
    assert(function);
}

ioReadPacketByFunction::~ioReadPacketByFunction() = default;

void ioReadPacketByFunction::read(ioClientReadContext& client) {
    function_(client);
}

// ioReadCallback, ioGlobalReadCallback

ioReadCallback::~ioReadCallback() = default;

ioGlobalReadCallback::ioGlobalReadCallback(void (*function)()) : function_(function) {
    assert(function);
}

ioGlobalReadCallback::~ioGlobalReadCallback() = default;

void ioGlobalReadCallback::read() {
    function_();
}

// ioSimplePacketType

ioSimplePacketType::ioSimplePacketType(const char* name, ioReadCallback* callback)
    : ioPacketType(name), callback_(callback) {}

ioSimplePacketType::~ioSimplePacketType() = default;

void ioSimplePacketType::read(ioClientReadContext& client) {
    if (callback_)
        callback_->read();
    else
        ioPacketType::read(client);
}

// ioPacketString

ioPacketString::ioPacketString() : ioPacketType("packetFile_string") {}

ioPacketString::~ioPacketString() = default;

void ioPacketString::read(ioClientReadContext& client) {
    const char* const text = client.readCString();
    const int reference = client.getPacketReference();
    // No map holds a number below 1, as damaged files have: a copy could never be found again. Nor
    // could the first of two with one number: it stays.
    if (!text || reference < 1)
        return client.definePacketReference(nullptr);
    auto* const map = dynamic_cast<ioReferenceMapImpl*>(client.getContext().getReferenceMap());
    const bool known = map && !map->takeText(reference);
    client.definePacketReference(known ? map->getReferenceDefinition(reference) : strdup(text));
}

// ioPacketEOF

ioPacketEOF::ioPacketEOF() : ioPacketType("packetFile_EOF") {}

ioPacketEOF::~ioPacketEOF() = default;

void ioPacketEOF::read(ioClientReadContext&) {}

void ioPacketEOF::write(ioWriteContext& context) {
    context.startPacket(this, nullptr);
    context.endPacket();
}
