// SPDX-License-Identifier: MIT

#include <cstddef>
#include <cstdint>

#include "Fuzz/PacketFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::readPackets({reinterpret_cast<const char*>(data), size});
    return 0;
}
