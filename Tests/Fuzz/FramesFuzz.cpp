// SPDX-License-Identifier: MIT

// Bytes that a peer sends, taken for framed strings.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Base/Strings/zeStringCString.h"

#include "Fuzz/require.h"
#include "TCP/Connection.h"

namespace {

/// The longest frame, and some bytes: what a connection takes before anybody reads.
constexpr std::size_t maxSize = 70000;

/// The frame that the bytes begin with, taken apart in the obvious way; nothing if it is not whole.
std::string_view firstFrame(std::string_view bytes) {
    if (bytes.size() < 2)
        return {};
    const auto high = static_cast<unsigned char>(bytes[0]);
    const auto low = static_cast<unsigned char>(bytes[1]);
    const std::size_t size = 2 + 256U * high + low;
    return size <= bytes.size() ? bytes.substr(0, size) : std::string_view();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), std::min(size, maxSize));
    Pair pair{std::string(bytes)};
    pair.there.close(2);
    Pair copy;
    zeString::CString text("none");
    std::string last = "none";
    for (auto frame = firstFrame(bytes); !frame.empty(); frame = firstFrame(bytes)) {
        const std::string_view payload = frame.substr(2);
        last = payload.substr(0, payload.find('\0'));
        require(pair.here.read(text).code() == 0 && text.asChar() == last);
        // Written anew, the whole payload gives the same bytes.
        const zeString::CString whole(payload.data(), static_cast<int>(payload.size()));
        require(copy.there.write(whole).code() == 0);
        std::string wire(frame.size(), '\0');
        require(copy.here.read(wire.data(), wire.size(), nullptr).code() == 0 && wire == frame);
        bytes.remove_prefix(frame.size());
    }
    // What is cut off is an error; what was read before stays.
    require(pair.here.read(text).code() == 4 && text.asChar() == last);
    return 0;
}
