// SPDX-License-Identifier: MIT

#include "document/document.h"

namespace scenefile {

std::string DocumentFilters::words() const {
    std::string result;
    for (const auto& [used, word] : {std::pair(checksum, "checksum"), std::pair(encrypt, "encrypt"),
                                     std::pair(compress, "compress")})
        if (used)
            result += (result.empty() ? "" : " ") + std::string(word);
    return result;
}

std::optional<DocumentFilters> DocumentFilters::fromWords(std::string_view words) {
    for (unsigned int subset = 1; subset < 8; ++subset) {
        const DocumentFilters filters = {(subset & 1) != 0, (subset & 2) != 0, (subset & 4) != 0};
        if (filters.words() == words)
            return filters;
    }
    return std::nullopt;
}

void DocumentFilters::push(ioBufferedStream& stream) const {
    if (checksum)
        stream.checksum(true);
    if (encrypt)
        stream.encrypt(true);
    if (compress)
        stream.compress(true);
}

void DocumentFilters::push(ioBufferedStreamInput& stream, bool isText) const {
    if (isText)
        stream.readChar();
    push(stream);
}

} // namespace scenefile
