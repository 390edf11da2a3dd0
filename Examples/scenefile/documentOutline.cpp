// SPDX-License-Identifier: MIT

#include "documentOutline.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <string_view>

#include "failure.h"
#include "progress.h"

namespace scenefile {

DocumentFile::DocumentFile(const std::string& path)
    : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (descriptor_ < 0)
        throw Failure(path_ + ": cannot be opened: " + systemMessage(errno));
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor_);
        throw Failure(path_ + ": cannot be read: not a regular file");
    }
    size_ = status.st_size;
}

DocumentFile::~DocumentFile() {
    close(descriptor_);
}

std::string DocumentOutline::describePacket(int number) const {
    const PacketOutline& packet = packets.at(static_cast<std::size_t>(number));
    return "packet " + std::to_string(number) + " (" +
           types.at(static_cast<std::size_t>(packet.type)) + ") at byte " +
           std::to_string(packet.position);
}

namespace {

constexpr std::string_view endOfFileType = "packetFile_EOF";

/// The longest line of a registry that the reader takes in one piece, with its newline.
constexpr int longestTypeLine = 89;

class Walker {
public:
    explicit Walker(const DocumentFile& file) : file_(file), progress_("checking", file.size()) {}

    DocumentOutline walk();

private:
    void header();
    void registry();
    std::string typeName();
    void binaryPacket();
    void textPacket();
    void textValues();
    void quotedText();

    bool atEnd() const { return position_ == file_.size(); }
    void fillBlock();
    char next();
    void expect(char wanted, const char* what);
    int digits(const char* what);
    std::int32_t int32();
    void addPacket(std::int64_t position, int type);
    [[noreturn]] void fail(std::int64_t position, const std::string& message) const;

    const DocumentFile& file_;
    Progress progress_;
    DocumentOutline outline_;
    int endType_ = -1;
    std::int64_t position_ = 0; // of the next byte
    std::int64_t blockStart_ = 0;
    std::size_t blockSize_ = 0;
    char block_[65536];
};

DocumentOutline Walker::walk() {
    header();
    registry();
    bool ended = false;
    while (!ended) {
        if (atEnd())
            fail(position_, "the file ends without its end-of-file packet: it is cut off");
        if (outline_.isText())
            textPacket();
        else
            binaryPacket();
        ended = outline_.packets.back().type == endType_;
        progress_.report(position_);
    }
    if (!atEnd())
        fail(position_, "there is something behind the end-of-file packet");
    return std::move(outline_);
}

/// Eleven numbers between the magic and the at sign. The reader takes any text for 0 here, and
/// would then run past the at sign in search of it.
void Walker::header() {
    for (char c : {'^', '@', '\n'})
        if (atEnd() || next() != c)
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
    for (;;) {
        const std::int64_t start = position_;
        char c = next();
        if (c == '@')
            break;
        while (c == ' ')
            c = next();
        --position_;
        const int number = digits("a type's number");
        expect(' ', "a type's name");
        if (outline_.types.empty())
            first = number;
        if (number - first != static_cast<int>(outline_.types.size()))
            fail(start, "the list of types is not numbered in order");
        std::string name = typeName();
        if (position_ - start > longestTypeLine)
            fail(start, "the name of a type is too long");
        if (std::find(outline_.types.begin(), outline_.types.end(), name) != outline_.types.end())
            fail(start, "type " + name + " is listed twice");
        outline_.types.push_back(std::move(name));
    }
    expect('\n', "the end of the list of types");
    const auto end = std::find(outline_.types.begin(), outline_.types.end(), endOfFileType);
    if (end == outline_.types.end())
        fail(position_, "the list of types has no end-of-file packet");
    endType_ = static_cast<int>(end - outline_.types.begin());
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
    if (length < referenceSize * hasReference || length > file_.size() - position_)
        fail(start + 8, "a packet of " + std::to_string(length) + " bytes where " +
                            std::to_string(file_.size() - position_) + " are left");
    position_ += length;
    addPacket(start, type);
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
    textValues();
    expect('\n', "the end of a packet");
    addPacket(start, type);
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

void Walker::fillBlock() {
    blockStart_ = position_;
    ssize_t size;
    do
        size = pread(file_.descriptor(), block_, sizeof block_, position_);
    while (size < 0 && errno == EINTR);
    if (size < 0)
        throw Failure(file_.path() + ": cannot be read: " + systemMessage(errno));
    if (size == 0)
        fail(position_, "the file became shorter");
    blockSize_ = static_cast<std::size_t>(size);
}

char Walker::next() {
    if (atEnd())
        fail(position_, "the file ends too early: it is cut off");
    if (position_ < blockStart_ || position_ >= blockStart_ + static_cast<std::int64_t>(blockSize_))
        fillBlock();
    return block_[position_++ - blockStart_];
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
    --position_;
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

void Walker::fail(std::int64_t position, const std::string& message) const {
    throw Failure(file_.path() + ": byte " + std::to_string(position) + ": " + message);
}

} // namespace

DocumentOutline outlineDocument(const DocumentFile& file) {
    return Walker(file).walk();
}

} // namespace scenefile
