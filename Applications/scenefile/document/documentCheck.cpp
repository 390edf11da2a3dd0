// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketFile.h"

#include "Shared/failure.h"
#include "document/document.h"
#include "document/documentFile.h"

namespace scenefile {

std::string DocumentOutline::describePacket(int number) const {
    const PacketOutline& packet = packets.at(static_cast<std::size_t>(number));
    return "packet " + std::to_string(number) + " (" +
           types.at(static_cast<std::size_t>(packet.type)) + ") at byte " +
           std::to_string(packet.position);
}

namespace {

/// Takes notes while the library walks the file, and pushes the filters as it comes upon the packet
/// that announces them.
class Outliner : public ioPacketFileVisitor {
public:
    explicit Outliner(const DocumentFile& file)
        : stream_(file, "checking"), end_(file.isCompressed() ? streamCompressEnd : streamEOF) {
        outline_.name = file.name();
        outline_.fileSize = file.size();
    }

    DocumentOutline outline();

    bool start(const ioHeader& header, const ioPacketRegistry& types) override;
    bool packet(ioReadContext& context, const ioPacketType& type,
                const ioPacketFilePlace& place) override;

private:
    void announcement(ioReadContext& context, const ioPacketFilePlace& place);
    void finish();
    void expectEnd(ioStreamStatus status);
    [[noreturn]] void failStream() const;
    [[noreturn]] void fail(const std::string& message) const;

    DocumentStream stream_;
    ioStreamStatus end_; // of the document
    DocumentOutline outline_;
    std::int64_t position_ = 0; // behind what was understood
};

DocumentOutline Outliner::outline() {
    if (ioPacketFileCheck(stream_, this) != ioOK)
        failStream();
    finish();
    return std::move(outline_);
}

bool Outliner::start(const ioHeader& header, const ioPacketRegistry& types) {
    if (header.determineReadMethod() == ioReadUnknown)
        fail("the document is written by a method that scenefile does not know");
    outline_.form.method = header.method;
    outline_.littleEndian = header.littleEndian;
    for (int id = 0; const ioPacketType* type = types.lookup(id); ++id)
        outline_.types.emplace_back(type->getName());
    return true;
}

bool Outliner::packet(ioReadContext& context, const ioPacketType& type,
                      const ioPacketFilePlace& place) {
    std::vector<PacketOutline>& packets = outline_.packets;
    if (!packets.empty()) // what stands between two packets belongs to the one before
        packets.back().size = place.position - packets.back().position;
    packets.push_back({place.position, place.size, type.getId()});
    position_ = place.position + place.size;
    if (place.hasReference != 0 && place.hasReference != 1)
        fail("the packet before this byte says neither that it has a reference nor that it has "
             "none");
    if (type.getName() == std::string_view(packetType::filters))
        announcement(context, place);
    return true;
}

/// The packet holds a string, the words of the filters.
void Outliner::announcement(ioReadContext& context, const ioPacketFilePlace& place) {
    if (outline_.packets.size() > 1)
        fail("the packet before this byte announces filters, but is not the first packet");
    if (outline_.form.isDebug())
        context.readRawByte(); // the tag
    const char* words = place.hasReference == 0 ? context.readCString() : nullptr;
    const auto filters = DocumentFilters::fromWords(words != nullptr ? words : "");
    if (!filters)
        fail("the packet before this byte announces no filters that scenefile knows");
    outline_.form.filters = *filters;
    filters->push(stream_, outline_.form.isText());
}

/// Nothing may follow the last packet, neither within the filters nor below them. Only a compressed
/// part marks its own end. The other filters are popped as soon as they have delivered all that
/// they held: read further, a checksum takes the rest of a frame for an ordinary end.
void Outliner::finish() {
    if (outline_.form.isText()) {
        if (stream_.readChar() != '\n')
            failStream();
        ++outline_.packets.back().size;
        ++position_;
    }
    const DocumentFilters& filters = outline_.form.filters;
    if (filters.compress) {
        expectEnd(streamCompressEnd);
        stream_.compress(false);
    }
    for (const bool filter : {filters.encrypt, filters.checksum})
        if (filter) {
            if (!stream_.buffered().empty())
                expectEnd(streamOK);
            stream_.popBufferChain();
        }
    expectEnd(end_);
}

void Outliner::expectEnd(ioStreamStatus status) {
    stream_.readChar();
    if (stream_.getStatus() == streamOK)
        fail("there is something behind the end-of-file packet");
    if (stream_.getStatus() != status)
        failStream();
}

void Outliner::failStream() const {
    const DocumentFilters& filters = outline_.form.filters;
    switch (stream_.getStatus()) {
    case streamChecksumError:
        fail("the checksum is wrong: the document is damaged");
    case streamCompressEnd:
        fail("the compressed part ends too early");
    case streamIOError:
        if (filters.compress || filters.encrypt)
            fail(std::string("the rest is damaged or cut off, and cannot be ") +
                 (filters.compress ? "expanded" : "deciphered"));
        fail("the file cannot be read");
    default:
        if (outline_.types.empty())
            fail("this is no document, or its start is damaged or cut off");
        fail("the document is damaged or cut off");
    }
}

void Outliner::fail(const std::string& message) const {
    const char* note = outline_.form.filters.any() ? " (without its filters)" : "";
    throw app::Failure(outline_.name + ": byte " + std::to_string(position_) + note + ": " +
                       message);
}

} // namespace

DocumentOutline outlineDocument(const DocumentFile& file) {
    return Outliner(file).outline();
}

} // namespace scenefile
