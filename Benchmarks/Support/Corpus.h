// SPDX-License-Identifier: MIT

/// @file
/// Bytes to compress, guard and encipher: deterministic, like all workloads.

#pragma once

#include "Support/Workload.h"

namespace bench {

inline std::string randomBytes(size_t n) {
    Rng random(3);
    std::string bytes;
    bytes.reserve(n + 8);
    while (bytes.size() < n) {
        const uint64_t x = random();
        bytes.append(reinterpret_cast<const char*>(&x), 8);
    }
    bytes.resize(n);
    return bytes;
}

/// Small packets as a binary file holds them: heads, numbers, a name.
inline std::string recordBytes(size_t n) {
    Rng random(3);
    std::string bytes;
    bytes.reserve(n + 64);
    for (uint32_t i = 0; bytes.size() < n; ++i) {
        const int32_t head[3] = {2, 0, 40};
        float numbers[6];
        for (float& x : numbers)
            x = float(int(random.below(2000)) - 1000) / 8;
        bytes.append(reinterpret_cast<const char*>(head), sizeof head);
        bytes.append(reinterpret_cast<const char*>(&i), sizeof i);
        bytes.append(reinterpret_cast<const char*>(numbers), sizeof numbers);
        bytes += "material_";
        bytes += char('0' + random.below(10));
        bytes += '\0';
        bytes += '\1';
    }
    bytes.resize(n);
    return bytes;
}

inline const char* const corpora[] = {"text", "records", "random"};

/// One of the corpora; made once for each size.
inline const std::string& corpus(const std::string& kind, size_t n) {
    static std::vector<std::pair<std::string, std::string>> made;
    const std::string key = kind + '/' + std::to_string(n);
    for (const auto& [name, bytes] : made)
        if (name == key)
            return bytes;
    made.reserve(16); // references stay valid
    made.emplace_back(key, kind == "text"      ? text(n)
                           : kind == "records" ? recordBytes(n)
                                               : randomBytes(n));
    return made.back().second;
}

} // namespace bench
