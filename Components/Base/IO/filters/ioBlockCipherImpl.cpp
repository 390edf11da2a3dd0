// SPDX-License-Identifier: MIT

#include "Base/IO/filters/ioBlockCipherImpl.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

namespace ioBlockCipher {

namespace {

/// A number for each of eight blocks, one a lane.
using Lanes = std::uint32_t __attribute__((vector_size(32)));

/// Shifts rather than std::rotl, which does not take vectors.
template<class Word, class Amount>
[[gnu::always_inline]] inline void rotateLeft(Word& x, const Amount& n) {
    x = x << (n & 31) | x >> (-n & 31);
}

template<class Word, class Amount>
[[gnu::always_inline]] inline void rotateRight(Word& x, const Amount& n) {
    x = x >> (n & 31) | x << (-n & 31);
}

template<class Word>
[[gnu::always_inline]] inline void mix(Word& result, const Word& x) {
    result = x * (2 * x + 1);
    rotateLeft(result, 5u);
}

/// `count` words, or vectors of them, go through the rounds side by side: a round is a chain of
/// operations that wait for one another, and those of other blocks fill the gaps.
template<class Word, unsigned count>
struct Blocks {
    static constexpr unsigned size = count * sizeof(Word) / 4;

    Word a[count], b[count], c[count], d[count];

    [[gnu::always_inline]] void load(const char* data) {
        std::uint32_t words[4][size];
        for (unsigned block = 0; block < size; ++block)
            for (int word = 0; word < 4; ++word, data += 4)
                std::memcpy(&words[word][block], data, 4);
        std::memcpy(a, words[0], sizeof a);
        std::memcpy(b, words[1], sizeof b);
        std::memcpy(c, words[2], sizeof c);
        std::memcpy(d, words[3], sizeof d);
    }

    [[gnu::always_inline]] void store(char* data) const {
        std::uint32_t words[4][size];
        std::memcpy(words[0], a, sizeof a);
        std::memcpy(words[1], b, sizeof b);
        std::memcpy(words[2], c, sizeof c);
        std::memcpy(words[3], d, sizeof d);
        for (unsigned block = 0; block < size; ++block)
            for (int word = 0; word < 4; ++word, data += 4)
                std::memcpy(data, &words[word][block], 4);
    }

    [[gnu::always_inline]] void encipher(const Schedule& s) {
        for (unsigned i = 0; i < count; ++i) {
            b[i] += s[0];
            d[i] += s[1];
        }
        for (int round = 1; round <= rounds; ++round) {
            for (unsigned i = 0; i < count; ++i) {
                Word t, u;
                mix(t, b[i]);
                mix(u, d[i]);
                Word x = a[i] ^ t;
                Word y = c[i] ^ u;
                rotateLeft(x, u);
                rotateLeft(y, t);
                a[i] = b[i];
                b[i] = y + s[2 * round + 1];
                c[i] = d[i];
                d[i] = x + s[2 * round];
            }
        }
        for (unsigned i = 0; i < count; ++i) {
            a[i] += s[2 * rounds + 2];
            c[i] += s[2 * rounds + 3];
        }
    }

    [[gnu::always_inline]] void decipher(const Schedule& s) {
        for (unsigned i = 0; i < count; ++i) {
            c[i] -= s[2 * rounds + 3];
            a[i] -= s[2 * rounds + 2];
        }
        for (int round = rounds; round >= 1; --round) {
            for (unsigned i = 0; i < count; ++i) {
                Word t, u;
                mix(t, a[i]);
                mix(u, c[i]);
                Word x = d[i] - s[2 * round];
                Word y = b[i] - s[2 * round + 1];
                rotateRight(x, u);
                rotateRight(y, t);
                d[i] = c[i];
                c[i] = y ^ u;
                b[i] = a[i];
                a[i] = x ^ t;
            }
        }
        for (unsigned i = 0; i < count; ++i) {
            d[i] -= s[1];
            b[i] -= s[0];
        }
    }
};

enum class Direction { encipher, decipher };

template<class State, Direction direction>
[[gnu::always_inline]] inline void transformSome(char* data, const Schedule& schedule) {
    State state;
    state.load(data);
    if constexpr (direction == Direction::encipher)
        state.encipher(schedule);
    else
        state.decipher(schedule);
    state.store(data);
}

template<class State, Direction direction>
[[gnu::always_inline]] inline void transformAll(char* data, unsigned blocks,
                                                const Schedule& schedule) {
    for (; blocks >= State::size; blocks -= State::size, data += State::size * blockBytes)
        transformSome<State, direction>(data, schedule);
    if (blocks > 0) {
        char rest[State::size * blockBytes] = {};
        const unsigned restBytes = blocks * blockBytes;
        std::memcpy(rest, data, restBytes);
        transformSome<State, direction>(rest, schedule);
        std::memcpy(data, rest, restBytes);
    }
}

template<Direction direction>
[[gnu::target("avx2")]] void transformByAvx2(char* data, unsigned blocks,
                                             const Schedule& schedule) {
    transformAll<Blocks<Lanes, 2>, direction>(data, blocks, schedule);
}

template<Direction direction>
void transform(char* data, unsigned blocks, const Schedule& schedule, Kernel kernel) {
    if (kernel == Kernel::avx2)
        transformByAvx2<direction>(data, blocks, schedule);
    else
        transformAll<Blocks<std::uint32_t, 3>, direction>(data, blocks, schedule);
}

} // namespace

Kernel bestKernel() {
    return __builtin_cpu_supports("avx2") ? Kernel::avx2 : Kernel::plain;
}

void expandKey(Schedule& schedule, const unsigned char (&key)[keyBytes], Constants constants) {
    constexpr unsigned keyWords = keyBytes / 4;
    constexpr auto scheduleWords = static_cast<unsigned>(std::size(Schedule{}));
    std::uint32_t words[keyWords];
    std::memcpy(words, key, keyBytes);
    for (unsigned i = 0; i < scheduleWords; ++i)
        schedule[i] = constants.first + i * constants.step;
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    for (unsigned i = 0; i < 3 * scheduleWords; ++i) {
        std::uint32_t& s = schedule[i % scheduleWords];
        std::uint32_t& k = words[i % keyWords];
        a = s = std::rotl(s + a + b, 3);
        b = k = std::rotl(k + a + b, static_cast<int>((a + b) % 32));
    }
}

void encipher(char* data, unsigned blocks, const Schedule& schedule, Kernel kernel) {
    transform<Direction::encipher>(data, blocks, schedule, kernel);
}

void decipher(char* data, unsigned blocks, const Schedule& schedule, Kernel kernel) {
    transform<Direction::decipher>(data, blocks, schedule, kernel);
}

} // namespace ioBlockCipher
