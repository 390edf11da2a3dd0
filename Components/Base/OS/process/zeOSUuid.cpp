// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSUuid.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <cstring>
#include <ctime>
#include <string_view>

#include "Base/Strings/zeStringCString.h"

namespace zeOS {
namespace {

std::atomic<unsigned int> counter{0};

/// Reads the group of hexadecimal digits at `position`; false if there is anything else in it.
bool readGroup(std::string_view text, unsigned int position, unsigned int length,
               unsigned int& value) {
    const char* const end = text.data() + position + length;
    const auto [stop, error] = std::from_chars(text.data() + position, end, value, 16);
    return error == std::errc() && stop == end;
}

unsigned int joinHalves(unsigned int high, unsigned int low) {
    return high << 16 | low;
}

} // namespace

Uuid::Uuid(const unsigned int* words) {
    std::memcpy(words_, words, sizeof words_);
}

Uuid::Uuid(const unsigned char* bytes) {
    for (unsigned int& word : words_)
        for (int i = 0; i < 4; ++i)
            word = word << 8 | *bytes++;
}

Uuid::Uuid(const zeString::CString& string) {
    const std::string_view text = string;
    if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
        text[23] != '-')
        return;
    unsigned int groups[6];
    if (readGroup(text, 0, 8, groups[0]) && readGroup(text, 9, 4, groups[1]) &&
        readGroup(text, 14, 4, groups[2]) && readGroup(text, 19, 4, groups[3]) &&
        readGroup(text, 24, 4, groups[4]) && readGroup(text, 28, 8, groups[5])) {
        words_[0] = groups[0];
        words_[1] = joinHalves(groups[1], groups[2]);
        words_[2] = joinHalves(groups[3], groups[4]);
        words_[3] = groups[5];
    }
}

bool Uuid::generate() {
    words_[0] = static_cast<unsigned int>(pthread_self());
    words_[1] = static_cast<unsigned int>(::getpid());
    words_[2] = static_cast<unsigned int>(std::time(nullptr));
    words_[3] = counter.fetch_add(1, std::memory_order_relaxed) + 1;
    return true;
}

bool Uuid::valid() const {
    return compare(Uuid()) != 0;
}

void Uuid::get(unsigned int* words) const {
    std::memcpy(words, words_, sizeof words_);
}

void Uuid::get(unsigned char* bytes) const {
    for (const unsigned int word : words_)
        for (int shift = 24; shift >= 0; shift -= 8)
            *bytes++ = static_cast<unsigned char>(word >> shift);
}

int Uuid::compare(const Uuid& other) const {
    return std::memcmp(words_, other.words_, sizeof words_);
}

void Uuid::reset() {
    *this = Uuid();
}

bool Uuid::set(const unsigned int* words) {
    if (valid())
        return false;
    *this = Uuid(words);
    return true;
}

zeString::CString Uuid::asString() const {
    zeString::CString text;
    text.format("%08X-%04X-%04X-%04X-%04X%08X", words_[0], words_[1] >> 16, words_[1] & 0xFFFF,
                words_[2] >> 16, words_[2] & 0xFFFF, words_[3]);
    return text;
}

} // namespace zeOS
