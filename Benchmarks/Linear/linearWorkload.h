// SPDX-License-Identifier: MIT

/// @file
/// Linear algebra in double precision: the inputs, and the timed loop, which are the same for us
/// and for the peers. Each operation runs over an array of kItems in the first-level cache, and
/// stores its result; "point_array" runs over a million points, 24 MB in and 24 MB out. Names are
/// <workload>/<peer>; a peer "limit_..." is plain code without a library. Before anything is timed,
/// the first results of all who do the same work are compared.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>

#include "Base/Linear/zeLinearQuaternion.h"

namespace linear {

using namespace zeLinear;

constexpr std::size_t kItems = 128; // the largest need 32 KiB, in and out
constexpr std::size_t kPoints = 1'000'000;

/// The same numbers on every machine, between -1 and 1.
inline double nextNumber() {
    static std::uint64_t state = 70;
    std::uint64_t z = (state += 0x9e3779b97f4a7c15U);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-52 - 1;
}

/// The inputs, in our types; the peers convert them.
struct Inputs {
    std::vector<AffineMatrix> matrices;
    std::vector<Quaternion> rotations;
    std::vector<Vector> vectors;
    std::vector<Point> points;
    std::vector<Point> million;

    Inputs() {
        for (std::size_t i = 0; i < kItems; ++i) {
            AffineMatrix m;
            for (auto& row : m.m)
                for (double& entry : row)
                    entry += nextNumber();
            matrices.push_back(m);
            Quaternion q{nextNumber(), nextNumber(), nextNumber(), nextNumber()};
            q.normalize();
            rotations.push_back(q);
            vectors.push_back(Vector{nextNumber(), nextNumber(), nextNumber()});
            points.push_back(Point::origin + vectors.back());
        }
        for (std::size_t i = 0; i < kPoints; ++i)
            million.push_back(Point{nextNumber(), nextNumber(), nextNumber()});
    }
};

inline const Inputs& inputs() {
    static const Inputs all;
    return all;
}

/// The numbers of a result, by which those who do the same work are compared: matrices by their
/// first three columns.
using Numbers = std::vector<double>;

template<class Get>
Numbers rows(int count, Get get) {
    Numbers result;
    for (int i = 0; i < count; ++i)
        for (int j = 0; j < 3; ++j)
            result.push_back(get(i, j));
    return result;
}

/// Equal to 1e-9, or all of the other sign (rotations).
inline bool agree(const Numbers& a, const Numbers& b) {
    double same = 0;
    double turned = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        same = std::max(same, std::fabs(a[i] - b[i]) / (1 + std::fabs(a[i])));
        turned = std::max(turned, std::fabs(a[i] + b[i]) / (1 + std::fabs(a[i])));
    }
    return std::min(same, turned) < 1e-9;
}

/// Ends the program if the results differ from those of the first who did this work.
inline void compare(const std::string& workload, const std::string& peer,
                    const std::vector<Numbers>& results) {
    static std::map<std::string, std::vector<Numbers>> first;
    const auto& expected = first.try_emplace(workload, results).first->second;
    for (std::size_t i = 0; i < results.size(); ++i)
        if (!agree(expected[i], results[i])) {
            std::fprintf(stderr, "%s/%s: another result\n", workload.c_str(), peer.c_str());
            std::exit(1);
        }
}

/// Registers a benchmark of f(item, next item) over all items, which live as long as the program.
/// `numbers` of its result must be found.
template<class T, class F>
void add(const std::string& workload, const std::string& peer, const std::vector<T>& items, F f) {
    using Result = std::decay_t<decltype(f(items[0], items[0]))>;
    std::vector<Numbers> results;
    for (std::size_t i = 0; i < 16; ++i)
        results.push_back(numbers(Result(f(items[i], items[i + 1]))));
    compare(workload, peer, results);
    benchmark::RegisterBenchmark((workload + '/' + peer).c_str(), [&items, f](auto& state) {
        const std::size_t n = items.size();
        std::vector<Result> out(n);
        for (auto _ : state) {
            for (std::size_t i = 0; i < n; ++i)
                out[i] = f(items[i], items[i + 1 < n ? i + 1 : 0]);
            benchmark::DoNotOptimize(out.data());
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
    });
}

} // namespace linear

namespace zeLinear {

// Found by argument-dependent look-up.

inline linear::Numbers numbers(const Vector& v) {
    return {v.x, v.y, v.z};
}
inline linear::Numbers numbers(const Point& p) {
    return {p.x, p.y, p.z};
}
inline linear::Numbers numbers(const Quaternion& q) {
    return {q.x, q.y, q.z, q.w};
}
inline linear::Numbers numbers(const AffineMatrix& m) {
    return linear::rows(4, [&](int i, int j) { return m.m[i][j]; });
}
inline linear::Numbers numbers(const ProjMatrix& m) {
    return linear::rows(4, [&](int i, int j) { return m.m[i][j]; });
}

} // namespace zeLinear
