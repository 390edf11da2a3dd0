// SPDX-License-Identifier: MIT

/// @file
/// What goes over the wire, byte by byte as README.md has it.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace relay {

/// The first string of a request.
inline constexpr const char* protocol = "relay 1";

/// How long a string of a request, and the name of a document, may be.
inline constexpr std::size_t longestText = 255;
inline constexpr std::size_t longestName = 200;

/// What the server answers, before a reason or a number.
namespace answers {
inline constexpr const char* send = "send"; ///< The document may come.
inline constexpr const char* ok = "ok";     ///< All is done; so many bytes follow.
inline constexpr const char* no = "no";     ///< Nothing was done, for this reason.
} // namespace answers

/// What a client wants.
struct Request {
    std::string command;
    std::string name;
    std::uint64_t size = 0; ///< Of the document that is to follow, in bytes.
};

/// Takes a request from the start of `bytes`, and leaves what follows. Nothing, and `bytes` as it
/// was, if the rest of the request has yet to come. zeTCP::Socket has framed strings too, but waits
/// for all of one, and with it would wait all other clients. Throws a Failure for what can be no
/// request.
std::optional<Request> takeRequest(std::string_view& bytes);

/// Two framed strings, as zeTCP::Socket reads them.
std::string answerBytes(std::string_view answer, std::string_view detail);

/// Why no document may have this name; null if one may.
const char* nameFault(std::string_view name);

/// The number that `text` is, all of it; nothing for any other text.
std::optional<std::uint64_t> numberFrom(std::string_view text);

} // namespace relay
