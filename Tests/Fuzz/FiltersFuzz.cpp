// SPDX-License-Identifier: MIT

#include <cstddef>
#include <cstdint>

#include "Base/IO/ioBuffer.h"

#include "Fuzz/FilterFuzz.h"

// FILTER is the name of the operation that pushes the target's filter.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    fuzz::readFiltered(&ioBufferedStream::FILTER, bytes);
    fuzz::roundTrip(&ioBufferedStream::FILTER, bytes);
    return 0;
}
