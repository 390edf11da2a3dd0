// SPDX-License-Identifier: MIT

/// @file
/// What moveable.cpp and moveablePeers.cpp measure alike.

#pragma once

#include <string>
#include <vector>

#include "Support/Workload.h"

namespace memory {

constexpr size_t elementCount = 100000;
constexpr size_t elementSize = 32;
constexpr size_t streamSize = 64 << 20;
constexpr size_t mapSize = 65536;

/// Registers the three workloads of a pool of elements: `Pool` has get() and put().
template<class Pool>
void registerPool(const std::string& name) {
    for (const bool shuffled : {false, true})
        bench::reg((shuffled ? "fixed_random/" : "fixed_fill/") + name, [=](State& s) {
            std::vector<size_t> order(elementCount);
            for (size_t i = 0; i < elementCount; ++i)
                order[i] = elementCount - 1 - i;
            if (shuffled)
                bench::shuffle(order, 80);
            std::vector<void*> elements(elementCount);
            for (auto _ : s) {
                Pool pool;
                for (void*& element : elements)
                    *static_cast<size_t*>(element = pool.get()) = 1;
                for (size_t i : order)
                    pool.put(elements[i]);
            }
            bench::items(s, elementCount);
        });
    bench::reg("fixed_churn/" + name, [](State& s) {
        Pool pool;
        std::vector<void*> elements(elementCount);
        for (void*& element : elements)
            element = pool.get();
        bench::Rng random(81);
        for (auto _ : s)
            for (int i = 0; i < 1000000; ++i) {
                void*& element = elements[random.below(elementCount)];
                pool.put(element);
                *static_cast<size_t*>(element = pool.get()) = 1;
            }
        for (void* element : elements)
            pool.put(element);
        bench::items(s, 1000000);
    });
}

/// Registers writing a stream in pieces and reading it back in the same pieces. `Stream` has
/// write(data, n), rewind() and read(data, n).
template<class Stream>
void registerStream(const std::string& name) {
    for (const size_t piece : {size_t(100), size_t(65536)})
        bench::reg("memory_stream/" + name + "/" + std::to_string(piece), [=](State& s) {
            const std::string data(piece, 'd');
            std::string read(piece, '\0');
            for (auto _ : s) {
                Stream stream;
                for (size_t n = 0; n + piece <= streamSize; n += piece)
                    stream.write(data.data(), piece);
                stream.rewind();
                for (size_t n = 0; n + piece <= streamSize; n += piece)
                    stream.read(read.data(), piece);
                bench::keep(read);
            }
            bench::require(read == data, "what was written comes back");
            bench::bytes(s, 2 * streamSize);
        });
}

/// Registers taking 10,000 chunks of 32 to 8192 bytes and giving them back in shuffled order.
/// `take(size)` gives a pointer for `give`.
template<class Take, class Give>
void registerChunks(const std::string& name, Take take, Give give) {
    bench::reg("chunk_alloc/" + name, [=](State& s) {
        constexpr size_t count = 10000;
        bench::Rng random(82);
        std::vector<size_t> sizes(count), order(count);
        for (size_t i = 0; i < count; ++i) {
            sizes[i] = 32 + random.below(8160);
            order[i] = i;
        }
        bench::shuffle(order, 83);
        std::vector<decltype(take(size_t(1)))> chunks(count);
        for (auto _ : s) {
            for (size_t i = 0; i < count; ++i)
                chunks[i] = take(sizes[i]);
            bench::keep(chunks);
            for (size_t i : order)
                give(chunks[i]);
        }
        bench::items(s, count);
    });
}

} // namespace memory
