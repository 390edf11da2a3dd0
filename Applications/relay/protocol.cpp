// SPDX-License-Identifier: MIT

#include "relay/protocol.h"

#include <charconv>

#include "Shared/failure.h"
#include "Shared/terminal.h"

namespace relay {

namespace {

constexpr std::size_t prefixSize = 2; // the length, big-endian

unsigned int byteAt(std::string_view bytes, std::size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

std::optional<std::string_view> takeText(std::string_view& bytes) {
    if (bytes.size() < prefixSize)
        return std::nullopt;
    const std::size_t size = byteAt(bytes, 0) << 8 | byteAt(bytes, 1);
    if (size > longestText)
        throw app::Failure("this is no request");
    if (bytes.size() < prefixSize + size)
        return std::nullopt;
    const std::string_view text = bytes.substr(prefixSize, size);
    bytes.remove_prefix(prefixSize + size);
    return text;
}

std::string framed(std::string_view text) {
    std::string bytes = {static_cast<char>(text.size() >> 8), static_cast<char>(text.size())};
    return bytes.append(text);
}

} // namespace

/// What is wrong is refused as soon as it is seen, however much is yet to come.
std::optional<Request> takeRequest(std::string_view& bytes) {
    std::string_view rest = bytes;
    const auto version = takeText(rest);
    if (version && *version != protocol)
        throw app::Failure("this is no request");
    const auto command = takeText(rest);
    const auto name = takeText(rest);
    const auto size = takeText(rest);
    if (!version || !command || !name || !size)
        return std::nullopt;
    const std::optional<std::uint64_t> number = numberFrom(*size);
    if (!number)
        throw app::Failure("the size is no number");
    bytes = rest;
    return Request{std::string(*command), std::string(*name), *number};
}

std::string answerBytes(std::string_view answer, std::string_view detail) {
    return framed(answer) + framed(detail);
}

/// A name that consists of characters that may be shown is valid UTF-8 without control characters.
const char* nameFault(std::string_view name) {
    if (name.empty() || name.size() > longestName)
        return "the name of a document has 1 to 200 bytes";
    if (name.find_first_of("/\\") != std::string_view::npos)
        return "the name of a document has no slash or backslash";
    if (name.starts_with('.'))
        return "the name of a document does not begin with a dot";
    if (app::visible(name) != name)
        return "the name of a document is UTF-8 without control characters";
    return nullptr;
}

std::optional<std::uint64_t> numberFrom(std::string_view text) {
    std::uint64_t number = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number);
    return error == std::errc() && end == last ? std::optional(number) : std::nullopt;
}

} // namespace relay
