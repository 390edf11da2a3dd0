// SPDX-License-Identifier: MIT

// What one would take instead for the work of moveable.cpp.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <memory_resource>
#include <sstream>

#include "OS/moveableWorkload.h"
#include <boost/pool/pool.hpp>

namespace {

struct BoostPool {
    boost::pool<> pool{memory::elementSize, 1024};
    void* get() { return pool.malloc(); }
    void put(void* element) { pool.free(element); }
};

struct String {
    std::string bytes;
    size_t position = 0;
    void write(const char* data, size_t n) { bytes.append(data, n); }
    void rewind() { position = 0; }
    void read(char* data, size_t n) {
        std::memcpy(data, bytes.data() + position, n);
        position += n;
    }
};

struct StringStream {
    std::stringstream stream;
    void write(const char* data, size_t n) { stream.write(data, static_cast<long>(n)); }
    void rewind() { stream.seekg(0); }
    void read(char* data, size_t n) { stream.read(data, static_cast<long>(n)); }
};

/// Maps the first 64 KiB of a file over and over.
template<class Touch>
void mapAnew(State& s, Touch touch) {
    const bench::ScratchFile scratch("map");
    const int fd = open(scratch.path.c_str(), O_RDWR | O_CREAT, 0600);
    bench::require(fd >= 0 && ftruncate(fd, 1 << 20) == 0, "a file can be made");
    for (auto _ : s) {
        void* const bytes =
            mmap(nullptr, memory::mapSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        touch(static_cast<char*>(bytes));
        munmap(bytes, memory::mapSize);
    }
    close(fd);
}

const bool registered = [] {
    memory::registerPool<BoostPool>("boost_pool");
    memory::registerStream<String>("std_string");
    memory::registerStream<StringStream>("std_stringstream");
    memory::registerChunks(
        "malloc", [](size_t size) { return malloc(size); }, free);
    bench::reg("map_cached/mmap_munmap",
               [](State& s) { mapAnew(s, [](char* bytes) { bench::keep(bytes); }); });
    bench::reg("map_cold/mmap_munmap", [](State& s) {
        mapAnew(s, [](char* bytes) {
            for (size_t i = 0; i < memory::mapSize; i += 4096)
                bytes[i] = 1;
        });
    });
    return true;
}();

} // namespace
