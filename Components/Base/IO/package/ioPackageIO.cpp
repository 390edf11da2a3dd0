// SPDX-License-Identifier: MIT

#include "Base/IO/ioPackageFile.h"
#include "Base/IO/ioPacketType.h"
#include "Base/IO/ioWriteContext.h"

namespace {

constexpr const char* entryTypeName = "package.entry";

} // namespace

// ioPackageIO::PackageRegistry

ioPackageIO::PackageRegistry::PackageRegistry(bool namesOnly) : ioPacketRegistry(namesOnly) {}

ioPackageIO::PackageRegistry::~PackageRegistry() = default;

void ioPackageIO::PackageRegistry::registerAllTypes() {
    supportedType(new ioReadPacketByFunction(entryTypeName, readEntryPacket));
}

// ioPackageIO::PackageReadContext

ioPackageIO::PackageReadContext::PackageReadContext(ioReadContext* context, ioPackageFile* package)
    : ioClientReadContext(context), package_(package) {}

ioPackageIO::PackageReadContext::~PackageReadContext() = default;

// ioPackageIO

void ioPackageIO::writeEntryPacket(ioWriteContext& context, const ioPackageFileEntry& entry) {
    context.startPacket(entryTypeName, nullptr);
    context.writeCString(entry.getName().asUTF8());
    context.writeInt64(entry.getOffset());
    context.writeInt64(entry.getSize());
    context.writeInt64(entry.getTimeStamp());
    context.writeBool(entry.getCompressed());
    context.endPacket();
}

void ioPackageIO::readEntryPacket(ioClientReadContext& client) {
    const char* const name = client.readCString();
    const auto offset = client.readInt64();
    const auto size = client.readInt64();
    const auto timeStamp = client.readInt64();
    const bool compressed = client.readBool();
    static_cast<PackageReadContext&>(client).getPackage()->appendEntry(name, offset, size,
                                                                       timeStamp, compressed);
}
