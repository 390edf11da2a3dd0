// SPDX-License-Identifier: MIT

// Conversion between UTF-8 and wide text of 16, 256 and 65536 characters (ascii; latin, where every
// 8th character takes two bytes; cjk, three bytes each), and what a wide string is used for most.

#include <clocale>

#include "Base/Strings/zeStringIString.h"
#include "Support/Workload.h"

namespace {

using zeString::IString;

void toWide(State& s, const std::string& text) {
    for (auto _ : s) {
        IString wide(text.c_str(), zeString::EncodingUTF8, nullptr);
        bench::keep(wide.asWChar());
    }
    bench::bytes(s, text.size());
}

/// Conversion proper: the cached narrow form is thrown away by an edit each time.
void toNarrow(State& s, const std::string& text) {
    IString wide(text.c_str(), zeString::EncodingUTF8, nullptr);
    bench::require(text == wide.asUTF8(nullptr), "the text came back");
    for (auto _ : s) {
        wide.erase(wide.length(), 0);
        bench::keep(wide.asUTF8(nullptr));
    }
    bench::bytes(s, text.size());
}

void cachedNarrow(State& s, const std::string& text) {
    IString wide(text.c_str(), zeString::EncodingUTF8, nullptr);
    for (auto _ : s)
        bench::keep(wide.asUTF8(nullptr));
    bench::bytes(s, text.size());
}

void copy(State& s) {
    const IString text(20, L'x');
    for (auto _ : s) {
        IString copied(text);
        bench::keep(copied);
    }
}

void appendCharacters(State& s) {
    for (auto _ : s) {
        IString text;
        for (int i = 0; i < 1000000; ++i)
            text.append(wchar_t('a' + i % 26));
        bench::keep(text);
    }
}

void replaceAll(State& s, const wchar_t* to) {
    std::wstring source;
    for (int i = 0; i < 1000; ++i)
        source += L"path/with/${NAME}/x";
    const IString from(L"${NAME}"), with(to), original(source.c_str());
    for (auto _ : s) {
        IString text(original);
        text.replace(from, with);
        bench::keep(text);
    }
}

const bool registered = [] {
    if (!setlocale(LC_ALL, "C.UTF-8"))
        std::abort();
    for (const char* kind : {"ascii", "latin", "cjk"})
        for (size_t n : {16, 256, 65536}) {
            const std::string size = std::string("/") + kind + "/" + std::to_string(n);
            const std::string text = bench::utf8(kind, n);
            bench::reg("utf8_to_wide/ours" + size, [text](State& s) { toWide(s, text); });
            bench::reg("wide_to_utf8/ours" + size, [text](State& s) { toNarrow(s, text); });
        }
    bench::reg("wide_to_utf8/ours_cached/ascii/16",
               [](State& s) { cachedNarrow(s, bench::utf8("ascii", 16)); });
    bench::reg("wstring_copy20/ours", copy);
    bench::reg("wstring_append1M/ours", appendCharacters);
    bench::reg("wstring_replace_all/ours", [](State& s) { replaceAll(s, L"project"); });
    bench::reg("wstring_replace_all_longer/ours",
               [](State& s) { replaceAll(s, L"longer_project_name"); });
    return true;
}();

} // namespace
