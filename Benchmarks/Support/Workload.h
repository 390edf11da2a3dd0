// SPDX-License-Identifier: MIT

/// @file
/// Deterministic workloads, shared by the library's benchmarks and by its peers'.
///
/// A benchmark is named <workload>/<peer>[/<size>] and registered by a static initialiser. The peer
/// "ours" is the library; "limit…" is a physical limit or the best known technique, and "context…"
/// another kind of thing: both are left out when the best peer is looked for.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

/// splitmix64: the same numbers on every machine.
class Rng {
public:
    explicit Rng(uint64_t seed) : state_(seed) {}

    uint64_t operator()() {
        uint64_t z = (state_ += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    uint32_t below(uint32_t n) { return uint32_t(((*this)() >> 32) * n >> 32); }
    double unit() { return double((*this)() >> 11) * 0x1p-53; }

private:
    uint64_t state_;
};

template<class V>
void shuffle(V& v, uint64_t seed) {
    Rng random(seed);
    for (size_t i = v.size(); i > 1; --i)
        std::swap(v[i - 1], v[random.below(uint32_t(i))]);
}

/// One small packet: 9 values, a body of about 52 bytes, 64 with the 12-byte head.
struct Rec {
    int32_t id;
    double x, y, z;
    float w;
    int16_t kind;
    bool flag;
    std::string name;
    uint32_t ref;
};

inline const std::vector<Rec>& recs(size_t n) {
    static std::vector<Rec> records;
    if (records.size() == n)
        return records;
    records.clear();
    Rng random(1);
    for (size_t i = 0; i < n; ++i) {
        Rec rec{int32_t(i),
                random.unit() * 1000 - 500,
                random.unit() * 1000 - 500,
                random.unit(),
                float(random.unit()),
                int16_t(random.below(100)),
                bool(random() & 1),
                "",
                uint32_t(random.below(uint32_t(n)) + 1)};
        for (int k = 8 + int(random.below(9)); k; --k)
            rec.name += char('a' + random.below(26));
        records.push_back(rec);
    }
    return records;
}

/// The same with numbers as documents mostly hold them, of two or three decimal places.
inline const std::vector<Rec>& shortRecs(size_t n) {
    static std::vector<Rec> records;
    if (records.size() == n)
        return records;
    records = recs(n);
    for (Rec& r : records) {
        r.x = std::round(r.x * 1000) / 1000;
        r.y = std::round(r.y * 100) / 100;
        r.z = std::round(r.z * 100) / 100;
        r.w = std::round(r.w * 100) / 100;
    }
    return records;
}

inline std::vector<double> doubles(size_t n, uint64_t seed = 2) {
    Rng random(seed);
    std::vector<double> v(n);
    for (double& d : v)
        d = random.unit() * 2000 - 1000;
    return v;
}

/// English-like words, the frequent ones more often.
inline std::string text(size_t n) {
    Rng random(3);
    std::vector<std::string> words(4096);
    for (std::string& word : words)
        for (int k = 2 + int(random.below(9)); k; --k)
            word += char('a' + std::min(random.below(26), random.below(26)));
    std::string s;
    while (s.size() < n) {
        const double u = random.unit();
        s += words[size_t(u * u * u * 4095)];
        s += random.below(12) ? ' ' : '\n';
    }
    s.resize(n);
    return s;
}

/// n pointers 64 bytes apart: ascending for seed 0, else shuffled.
inline std::vector<void*> ptrs(size_t n, uint64_t seed) {
    std::vector<void*> v(n);
    for (size_t i = 0; i < n; ++i)
        v[i] = reinterpret_cast<void*>(uintptr_t(0x500000000000) + i * 64);
    if (seed)
        shuffle(v, seed);
    return v;
}

/// The same n keys, in an order by seed.
inline std::vector<int64_t> keys(size_t n, uint64_t seed) {
    std::vector<int64_t> v(n);
    Rng random(20);
    for (int64_t& k : v)
        k = int64_t(random() >> 1);
    shuffle(v, seed);
    return v;
}

/// UTF-8 text of n characters: "ascii", "latin" (every 8th takes two bytes), "cjk" (three bytes
/// each).
inline std::string utf8(const std::string& kind, size_t n) {
    Rng random(40);
    std::string s;
    for (size_t i = 0; i < n; ++i) {
        if (kind == "cjk") {
            const uint32_t u = 0x4e00 + random.below(20000);
            s += char(0xe0 | u >> 12);
            s += char(0x80 | (u >> 6 & 63));
            s += char(0x80 | (u & 63));
        } else if (kind == "latin" && i % 8 == 7) {
            const uint32_t u = 0xc0 + random.below(60);
            s += char(0xc0 | u >> 6);
            s += char(0x80 | (u & 63));
        } else {
            s += char('a' + random.below(26));
        }
    }
    return s;
}

/// 1000 paths of 3 to 12 components; a third have doubled separators, a third "/../".
inline std::vector<std::string> paths() {
    Rng random(50);
    std::vector<std::string> v;
    for (int i = 0; i < 1000; ++i) {
        std::string path;
        const int components = 3 + int(random.below(10));
        for (int k = 0; k < components; ++k) {
            path += '/';
            if (i % 3 == 0 && k && random.below(4) == 0)
                path += '/';
            if (i % 3 == 1 && k && random.below(4) == 0)
                path += "../";
            for (int j = 2 + int(random.below(10)); j; --j)
                path += char('a' + random.below(26));
        }
        v.push_back(path + ".txt");
    }
    return v;
}

/// A file in the temporary directory (point TMPDIR to a memory file system: the disk is not
/// measured), removed when the program ends.
struct ScratchFile {
    explicit ScratchFile(const std::string& name)
        : path(std::filesystem::temp_directory_path() /
               ("zebase-bench." + std::to_string(getpid()) + "." + name)) {}
    ~ScratchFile() { unlink(path.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string path;
};

template<class F>
benchmark::internal::Benchmark* reg(const std::string& name, F f) {
    return benchmark::RegisterBenchmark(name.c_str(), f)->Unit(benchmark::kMicrosecond);
}

template<class T>
void keep(const T& value) {
    benchmark::DoNotOptimize(value);
}

inline void items(benchmark::State& state, size_t perIteration) {
    state.SetItemsProcessed(int64_t(size_t(state.iterations()) * perIteration));
}

inline void bytes(benchmark::State& state, size_t perIteration) {
    state.SetBytesProcessed(int64_t(size_t(state.iterations()) * perIteration));
}

/// A result is verified before it is timed: a wrong one ends the program.
inline void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "benchmark: wrong result: %s\n", what);
    std::abort();
}

} // namespace bench

using benchmark::State;
