// SPDX-License-Identifier: MIT

// Fixed-size elements, memory streams and moveable memory. map_cached: mapping and unmapping a
// chunk of a block that is mapped already; map_cold: mapping 64 KiB of a file, touching each page,
// unmapping.

#include <filesystem>

#include "Base/OS/zeOSFSAllocator.h"
#include "Base/OS/zeOSMemoryIOStream.h"
#include "Base/OS/zeOSMoveableMemory.h"
#include "Base/Strings/zeStringIString.h"

#include "OS/moveableWorkload.h"

namespace {

struct FixedSize {
    zeOS::FSAllocator pool{memory::elementSize, 32768};
    void* get() { return pool.alloc(); }
    void put(void* element) { pool.free(element); }
};

struct Stream {
    zeOS::MemoryIOStream stream{65536, nullptr};
    Stream() { stream.openForWrite(); }
    void write(const char* data, size_t n) { stream.write(data, n, nullptr); }
    void rewind() { stream.openForRead(); }
    void read(char* data, size_t n) { stream.read(data, n, nullptr); }
};

/// Lives as long as the program.
zeOS::MoveableMemory& moveable() {
    static zeOS::MoveableMemory* const one = [] {
        auto* const made = new zeOS::MoveableMemory;
        const std::string folder = std::filesystem::temp_directory_path().string();
        bench::require(made->initializeFiles(zeString::IString(folder.c_str()), L"bench"),
                       "there is a folder for temporary files");
        return made;
    }();
    return *one;
}

zeOS::MoveableAllocator& chunks() {
    static auto* const one = new zeOS::MoveableAllocator(moveable());
    return *one;
}

void mapCached(State& s) {
    zeOS::MoveableChunk* const chunk = chunks().allocate(1000);
    for (auto _ : s) {
        void* bytes = chunk->map();
        bench::keep(bytes);
        chunk->unmap();
    }
    delete chunk;
}

void mapCold(State& s) {
    const ze::Reference<zeOS::MoveableMapping> region = moveable().allocate(memory::mapSize);
    for (auto _ : s) {
        char* const bytes = static_cast<char*>(region->map());
        for (size_t i = 0; i < memory::mapSize; i += 4096)
            bytes[i] = 1;
        region->unmap();
    }
}

const bool registered = [] {
    memory::registerPool<FixedSize>("ours");
    memory::registerStream<Stream>("ours");
    memory::registerChunks(
        "ours", [](size_t size) { return chunks().allocate(size); },
        [](zeOS::MoveableChunk* chunk) { delete chunk; });
    bench::reg("map_cached/ours", mapCached);
    bench::reg("map_cold/ours", mapCold);
    return true;
}();

} // namespace
