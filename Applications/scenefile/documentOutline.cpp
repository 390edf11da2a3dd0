// SPDX-License-Identifier: MIT

#include "documentOutline.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <unordered_set>

#include "failure.h"

namespace scenefile {

std::string DocumentOutline::describePacket(int number) const {
    const PacketOutline& packet = packets.at(static_cast<std::size_t>(number));
    return "packet " + std::to_string(number) + " (" +
           types.at(static_cast<std::size_t>(packet.type)) + ") at byte " +
           std::to_string(packet.position);
}

namespace {

constexpr std::string_view endOfFileType = "packetFile_EOF";

/// Longer than any packet that announces filters.
constexpr int longestAnnouncement = 64;

/// The longest line of a registry that the reader takes in one piece, with its newline.
constexpr int longestTypeLine = 89;

class Walker {
public:
    explicit Walker(const DocumentFile& file) : file_(file), stream_(file, "checking") {
        outline_.fileSize = file.size();
    }

    DocumentOutline walk();

private:
    void header();
    void registry();
    std::string typeName();
    void binaryPacket();
    void textPacket();
    void textValues();
    void quotedText();
    std::string shortLine();
    void announcement(std::int64_t position, std::string_view values);
    void end();
    void expectStatus(ioStreamStatus status);

    char next();
    void back();
    void skip(std::int64_t size);
    void expect(char wanted, const char* what);
    int digits(const char* what);
    std::int32_t int32();
    void addPacket(std::int64_t position, int type);
    int findType(std::string_view name) const;
    [[noreturn]] void failBehind() const;
    [[noreturn]] void failStream() const;
    [[noreturn]] void fail(std::int64_t position, const std::string& message) const;

    const DocumentFile& file_;
    DocumentStream stream_;
    DocumentOutline outline_;
    int endType_ = -1;
    int filtersType_ = -1;
    std::int64_t position_ = 0; // of the next byte
    char last_ = 0;
    bool again_ = false; // the last byte is the next once more
};

DocumentOutline Walker::walk() {
    header();
    registry();
    do {
        if (outline_.isText())
            textPacket();
        else
            binaryPacket();
    } while (outline_.packets.back().type != endType_);
    end();
    return std::move(outline_);
}

/// Eleven numbers between the magic and the at sign. The reader takes any text for 0 here, and
/// would then run past the at sign in search of it.
void Walker::header() {
    for (char c : {'^', '@', '\n'})
        if (file_.size() < 3 || next() != c)
            fail(0, "this is no document");
    int numbers[11];
    for (int& number : numbers) {
        number = digits("a number of the header");
        if (const char c = next(); c != ' ' && c != '\n')
            fail(position_ - 1, "the header is damaged");
    }
    expect('@', "the end of the header");
    expect('\n', "the end of the header");
    outline_.littleEndian = numbers[1] != 0;
    outline_.method = static_cast<ioWriteMethod>(numbers[2]);
    if (numbers[2] > ioWriteBinaryDebug)
        fail(0, "the document is written by method " + std::to_string(numbers[2]) +
                    ", which scenefile does not read");
    constexpr int sizes[] = {1, 2, 4, 8, 4, 8};
    if (!outline_.isText() &&
        (numbers[3] == 0 || !std::equal(std::begin(sizes), std::end(sizes), numbers + 4)))
        fail(0, "the document was written by a machine with other sizes of numbers");
}

void Walker::registry() {
    int first = 0;
    std::unordered_set<std::string> names;
    for (;;) {
        const std::int64_t start = position_;
        char c = next();
        if (c == '@')
            break;
        while (c == ' ')
            c = next();
        back();
        const int number = digits("a type's number");
        expect(' ', "a type's name");
        if (outline_.types.empty())
            first = number;
        if (number - first != static_cast<int>(outline_.types.size()))
            fail(start, "the list of types is not numbered in order");
        std::string name = typeName();
        if (position_ - start > longestTypeLine)
            fail(start, "the name of a type is too long");
        if (!names.insert(name).second)
            fail(start, "type " + name + " is listed twice");
        outline_.types.push_back(std::move(name));
    }
    expect('\n', "the end of the list of types");
    endType_ = findType(endOfFileType);
    filtersType_ = findType(packetType::filters);
    if (endType_ < 0)
        fail(position_, "the list of types has no end-of-file packet");
}

/// -1 for a type that is not listed.
int Walker::findType(std::string_view name) const {
    const auto place = std::find(outline_.types.begin(), outline_.types.end(), name);
    return place == outline_.types.end() ? -1 : static_cast<int>(place - outline_.types.begin());
}

std::string Walker::typeName() {
    std::string name;
    for (char c = next(); c != '\n'; c = next()) {
        if (c <= ' ' || c > '~' || name.size() == longestTypeLine)
            fail(position_ - 1, "the name of a type is damaged");
        name.push_back(c);
    }
    if (name.empty())
        fail(position_ - 1, "a type has no name");
    return name;
}

/// Id, whether there is a reference, the length of the rest, the rest.
void Walker::binaryPacket() {
    const std::int64_t start = position_;
    const std::int32_t type = int32();
    const std::int32_t hasReference = int32();
    const std::int32_t length = int32();
    if (hasReference < 0 || hasReference > 1)
        fail(start + 4, "a packet says neither that it has a reference nor that it has none");
    const int referenceSize = outline_.isDebug() ? 6 : 4; // two tags
    if (length < referenceSize * hasReference)
        fail(start + 8, "a packet of " + std::to_string(length) + " bytes");
    if (!outline_.filters.any() && length > file_.size() - position_)
        fail(start + 8, "a packet of " + std::to_string(length) + " bytes where " +
                            std::to_string(file_.size() - position_) + " are left");
    if (type != filtersType_) {
        skip(length);
        return addPacket(start, type);
    }
    std::string values;
    for (int i = 0; i < std::min(length, longestAnnouncement); ++i)
        values.push_back(next());
    addPacket(start, type);
    announcement(start, values);
}

/// "{ ", id, whether there is a reference, values, "}\n".
void Walker::textPacket() {
    const std::int64_t start = position_;
    expect('{', "a packet");
    expect(' ', "the type of a packet");
    const int type = digits("the type of a packet");
    expect(' ', "a blank");
    const int hasReference = digits("whether there is a reference");
    if (hasReference > 1)
        fail(position_ - 1, "a packet says neither that it has a reference nor that it has none");
    if (type != filtersType_) {
        textValues();
        expect('\n', "the end of a packet");
        return addPacket(start, type);
    }
    const std::string values = shortLine();
    addPacket(start, type);
    announcement(start, values);
}

/// Up to the right brace. Outside of quotes, only what numbers, tags and brackets are made of can
/// stand, and the brackets close in order.
void Walker::textValues() {
    const std::string_view plain =
        outline_.isDebug() ? " \n+-.0123456789ebBcChHiIlLfdsr" : " \n+-.0123456789e";
    std::string open;
    for (;;) {
        const char c = next();
        if (c == '}' && open.empty())
            return;
        if (c == '"')
            quotedText();
        else if (c == '[' || c == '<')
            open.push_back(c == '[' ? ']' : '>');
        else if (!open.empty() && c == open.back())
            open.pop_back();
        else if (plain.find(c) == std::string_view::npos)
            fail(position_ - 1, "a byte that has no place in a text document");
    }
}

/// Up to the quote that is not escaped. Brackets are always escaped: one that is not belongs to
/// what follows a string that was cut off.
void Walker::quotedText() {
    for (char c = next(); c != '"'; c = next()) {
        if (std::string_view("{}[]<>").find(c) != std::string_view::npos)
            fail(position_ - 1, "a bracket within a string");
        if (c == '\\')
            next();
    }
}

/// Up to a newline, which is left out.
std::string Walker::shortLine() {
    std::string line;
    for (char c = next(); c != '\n' && line.size() < longestAnnouncement; c = next())
        line.push_back(c);
    return line;
}

/// The values of the packet are one string, with the words of the filters. What follows is read
/// through them.
void Walker::announcement(std::int64_t position, std::string_view values) {
    std::string before = outline_.isDebug() ? "s" : "";
    std::string after = std::string(1, '\0');
    if (outline_.isText()) {
        before = " " + before + "\"";
        after = "\" }";
    }
    std::optional<DocumentFilters> filters;
    if (values.starts_with(before) && values.ends_with(after)) {
        values.remove_prefix(before.size());
        values.remove_suffix(std::min(after.size(), values.size()));
        filters = DocumentFilters::fromWords(values);
    }
    if (!filters)
        fail(position, "a packet that announces no filters that scenefile knows");
    if (outline_.packets.size() > 1)
        fail(position, "a packet that announces filters behind other packets");
    outline_.filters = *filters;
    filters->push(stream_);
}

/// Nothing may stand behind the last packet, neither within the filters nor below them. Only a
/// compressed part has an end of its own. The others are taken off as soon as they have handed out
/// all that they held: asked for more, a checksum takes the rest of a frame for an ordinary end.
void Walker::end() {
    if (outline_.filters.compress) {
        expectStatus(streamCompressEnd);
        stream_.compress(false);
    }
    for (const bool filter : {outline_.filters.encrypt, outline_.filters.checksum})
        if (filter) {
            if (!stream_.buffered().empty())
                failBehind();
            stream_.popBufferChain();
        }
    expectStatus(streamEOF);
}

void Walker::expectStatus(ioStreamStatus status) {
    stream_.readChar();
    if (stream_.getStatus() == streamOK)
        failBehind();
    if (stream_.getStatus() != status)
        failStream();
}

char Walker::next() {
    if (!again_) {
        last_ = static_cast<char>(stream_.readChar());
        if (stream_.getStatus() != streamOK)
            failStream();
    }
    again_ = false;
    ++position_;
    return last_;
}

void Walker::back() {
    again_ = true;
    --position_;
}

/// Not after back().
void Walker::skip(std::int64_t size) {
    while (size > 0) {
        const auto held = static_cast<std::int64_t>(stream_.buffered().size());
        const std::int64_t skipped = std::min(held, size);
        stream_.skip(static_cast<int>(skipped));
        position_ += skipped;
        size -= skipped;
        if (size > 0) {
            next();
            --size;
        }
    }
}

void Walker::expect(char wanted, const char* what) {
    if (next() != wanted)
        fail(position_ - 1, std::string("expected ") + what);
}

/// A number of up to nine digits; what ends it is left.
int Walker::digits(const char* what) {
    const std::int64_t start = position_;
    int number = 0;
    char c = next();
    for (; c >= '0' && c <= '9' && position_ - start < 10; c = next())
        number = 10 * number + (c - '0');
    back();
    if (position_ == start || (c >= '0' && c <= '9'))
        fail(start, std::string("expected ") + what);
    return number;
}

std::int32_t Walker::int32() {
    std::uint32_t number = 0;
    for (int i = 0; i < 4; ++i) {
        const int shift = outline_.littleEndian ? 8 * i : 24 - 8 * i;
        number |= std::uint32_t{static_cast<unsigned char>(next())} << shift;
    }
    return std::bit_cast<std::int32_t>(number);
}

void Walker::addPacket(std::int64_t position, int type) {
    if (type < 0 || type >= static_cast<int>(outline_.types.size()))
        fail(position, "a packet of type " + std::to_string(type) + ", which is not listed");
    outline_.packets.push_back({position, position_ - position, type});
}

void Walker::failBehind() const {
    fail(position_, "there is something behind the end-of-file packet");
}

void Walker::failStream() const {
    switch (stream_.getStatus()) {
    case streamChecksumError:
        fail(position_, "the checksum does not agree: the document is damaged");
    case streamEOF:
        fail(position_, "the file ends too early: it is cut off");
    case streamCompressEnd:
        fail(position_, "what is compressed ends too early");
    default:
        if (outline_.filters.compress || outline_.filters.encrypt)
            fail(position_, "what is behind is damaged or cut off, and cannot be " +
                                std::string(outline_.filters.compress ? "expanded" : "deciphered"));
        fail(position_, "the file cannot be read");
    }
}

void Walker::fail(std::int64_t position, const std::string& message) const {
    const char* note = outline_.filters.any() ? " (without its filters)" : "";
    throw Failure(file_.path() + ": byte " + std::to_string(position) + note + ": " + message);
}

} // namespace

DocumentOutline outlineDocument(const DocumentFile& file) {
    return Walker(file).walk();
}

} // namespace scenefile
