// SPDX-License-Identifier: MIT

#include <cstddef>
#include <cstdint>

#include "Base/IO/ioBuffer.h"

#include "Fuzz/FilterFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    fuzz::readFiltered(&ioBufferedStream::compress, bytes);
    fuzz::roundTrip(&ioBufferedStream::compress, bytes);
    return 0;
}
