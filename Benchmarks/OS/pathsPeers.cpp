// SPDX-License-Identifier: MIT

// What others need for the work of paths.cpp, and the limits below which nothing can go. The peers
// work on narrow text, as their users do.

#include <filesystem>

#include "Support/Workload.h"

#include <boost/filesystem/path.hpp>

namespace {

std::vector<std::wstring> wideTexts() {
    std::vector<std::wstring> result;
    for (const std::string& path : bench::paths())
        result.emplace_back(path.begin(), path.end());
    return result;
}

/// All three passes at once, for paths that never leave their root.
std::wstring normalised(const std::wstring& text) {
    std::wstring result(text.size(), 0);
    wchar_t* const begin = &result[0];
    wchar_t* out = begin;
    const wchar_t* in = text.data();
    const wchar_t* const end = in + text.size();
    while (in < end) {
        if (*in == '/') {
            while (in + 1 < end && in[1] == '/')
                ++in;
            while (end - in > 3 && in[1] == '.' && in[2] == '.' && in[3] == '/' && out > begin) {
                while (out > begin && *--out != '/') {
                }
                in += 3;
                while (in + 1 < end && in[1] == '/')
                    ++in;
            }
        }
        *out++ = *in++;
    }
    while (out - begin > 1 && out[-1] == '/')
        --out;
    result.resize(size_t(out - begin));
    return result;
}

template<class Path>
void peer(const std::string& name) {
    static const std::vector<std::string> texts = bench::paths();
    static const std::vector<Path> paths = [] {
        std::vector<Path> result;
        for (const std::string& text : texts) {
            result.push_back(Path(text).lexically_normal());
            const std::wstring expected = normalised({text.begin(), text.end()});
            bench::require(result.back().wstring() == expected, "the normal form");
        }
        return result;
    }();
    bench::reg("normalise/" + name, [](State& s) {
        for (auto _ : s)
            for (const std::string& text : texts)
                bench::keep(Path(text).lexically_normal());
        bench::items(s, texts.size());
    });
    bench::reg("join/" + name, [](State& s) {
        for (auto _ : s)
            for (const Path& path : paths)
                bench::keep((path / "sub/name.dat").lexically_normal());
        bench::items(s, paths.size());
    });
    bench::reg("split/" + name, [](State& s) {
        for (auto _ : s)
            for (const Path& normal : paths) {
                const Path path(normal.native());
                bench::keep(path.parent_path());
                bench::keep(path.filename());
                bench::keep(path.stem());
                bench::keep(path.extension());
            }
        bench::items(s, paths.size());
    });
}

void onePass(State& s) {
    const std::vector<std::wstring> texts = wideTexts();
    for (auto _ : s)
        for (const std::wstring& text : texts)
            bench::keep(normalised(text));
    bench::items(s, texts.size());
}

void fourCopies(State& s) {
    const std::vector<std::wstring> texts = wideTexts();
    for (auto _ : s)
        for (const std::wstring& text : texts) {
            const std::wstring path(text);
            const size_t slash = path.rfind(L'/'), dot = path.rfind(L'.');
            bench::keep(std::wstring(path, 0, slash));
            bench::keep(std::wstring(path, slash + 1));
            bench::keep(std::wstring(path, slash + 1, dot - slash - 1));
            bench::keep(std::wstring(path, dot + 1));
        }
    bench::items(s, texts.size());
}

const bool registered = [] {
    peer<std::filesystem::path>("std_filesystem");
    peer<boost::filesystem::path>("boost_filesystem");
    bench::reg("normalise/limit_one_pass", onePass);
    bench::reg("split/limit_four_copies", fourCopies);
    return true;
}();

} // namespace
