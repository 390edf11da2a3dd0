// SPDX-License-Identifier: MIT

// What others need for the work of text.cpp, and the limits below which nothing can go.

#include <charconv>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "Support/Workload.h"

#include <fmt/compile.h>
#include <fmt/os.h>
using bench::Rec;
namespace {
constexpr size_t N = 200000, M = 1000000;
constexpr size_t BLK = 262144;
const bench::ScratchFile scratch("text.peers");
const std::string& F = scratch.path;
void items(State& s, size_t n) {
    s.SetItemsProcessed(int64_t(s.iterations() * n));
}
template<class T, class... A>
void tc(char*& p, T v, A... a) {
    p = std::to_chars(p, p + 40, v, a...).ptr;
    *p++ = ' ';
}
char* line(char* p, const Rec& r) {
    memcpy(p, "{ 2 0 ", 6);
    p += 6;
    tc(p, r.id);
    for (double d : {r.x, r.y, r.z})
        tc(p, d, std::chars_format::general, 16);
    tc(p, double(r.w), std::chars_format::general, 7);
    tc(p, int(r.kind));
    *p++ = r.flag ? '1' : '0';
    *p++ = ' ';
    *p++ = '"';
    memcpy(p, r.name.data(), r.name.size());
    p += r.name.size();
    *p++ = '"';
    *p++ = ' ';
    tc(p, r.ref);
    *p++ = '}';
    *p++ = '\n';
    return p;
}
void prep() {
    FILE* f = fopen(F.c_str(), "wb");
    char b[512];
    for (auto& r : bench::recs(N))
        fwrite(b, 1, size_t(line(b, r) - b), f);
    fclose(f);
}
const bool registered = [] {
    bench::recs(N);
    static std::vector<double> ds = bench::doubles(M, 5);
    static std::vector<int> is(M);
    {
        bench::Rng r(6);
        for (auto& i : is)
            i = int(r()) >> r.below(24);
    }
    bench::reg("small_write/fprintf", [](State& s) {
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "wb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            for (auto& r : bench::recs(N))
                fprintf(f, "{ 2 0 %d %.16g %.16g %.16g %.7g %d %d \"%s\" %u }\n", r.id, r.x, r.y,
                        r.z, r.w, r.kind, r.flag, r.name.c_str(), r.ref);
            fclose(f);
        }
        items(s, N);
    });
    bench::reg("small_write/ostream", [](State& s) {
        for (auto _ : s) {
            std::ofstream f(F, std::ios::binary);
            for (auto& r : bench::recs(N))
                f << "{ 2 0 " << r.id << ' ' << std::setprecision(16) << r.x << ' ' << r.y << ' '
                  << r.z << ' ' << std::setprecision(7) << r.w << ' ' << r.kind << ' ' << r.flag
                  << " \"" << r.name << "\" " << r.ref << " }\n";
        }
        items(s, N);
    });
    bench::reg("small_write/fmt", [](State& s) {
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "wb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            fmt::memory_buffer b;
            for (auto& r : bench::recs(N)) {
                b.clear();
                fmt::format_to(
                    std::back_inserter(b),
                    FMT_COMPILE("{{ 2 0 {} {:.16g} {:.16g} {:.16g} {:.7g} {} {:d} \"{}\" {} }}\n"),
                    r.id, r.x, r.y, r.z, r.w, r.kind, r.flag, r.name, r.ref);
                fwrite(b.data(), 1, b.size(), f);
            }
            fclose(f);
        }
        items(s, N);
    });
    bench::reg("small_write/limit_to_chars", [](State& s) {
        for (auto _ : s) {
            int fd = open(F.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
            std::vector<char> b(BLK + 512);
            char* p = b.data();
            for (auto& r : bench::recs(N)) {
                p = line(p, r);
                if (p - b.data() >= long(BLK)) {
                    if (write(fd, b.data(), size_t(p - b.data())) < 0)
                        abort();
                    p = b.data();
                }
            }
            if (write(fd, b.data(), size_t(p - b.data())) < 0)
                abort();
            close(fd);
        }
        items(s, N);
    });
    bench::reg("small_read/istream", [](State& s) {
        prep();
        for (auto _ : s) {
            std::ifstream f(F);
            Rec r;
            char ch;
            int a, b;
            double t = 0;
            for (size_t i = 0; i < N; ++i) {
                f >> ch >> a >> b >> r.id >> r.x >> r.y >> r.z >> r.w >> r.kind >> r.flag >>
                    r.name >> r.ref >> ch;
                t += r.id + r.x;
            }
            bench::keep(t);
        }
        items(s, N);
    });
    bench::reg("small_read/fscanf", [](State& s) {
        prep();
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "rb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            Rec r;
            int fl;
            char nm[64];
            double t = 0;
            for (size_t i = 0; i < N; ++i) {
                if (fscanf(f, " { 2 0 %d %lf %lf %lf %f %hd %d \"%63[^\"]\" %u }", &r.id, &r.x,
                           &r.y, &r.z, &r.w, &r.kind, &fl, nm, &r.ref) != 9)
                    abort();
                r.name = nm;
                t += r.id + r.x;
            }
            bench::keep(t);
            fclose(f);
        }
        items(s, N);
    });
    bench::reg("small_read/strtol_strtod", [](State& s) {
        prep();
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "rb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            char b[1024];
            Rec r;
            double t = 0;
            while (fgets(b, sizeof b, f)) {
                char* p = b + 6;
                r.id = int(strtol(p, &p, 10));
                r.x = strtod(p, &p);
                r.y = strtod(p, &p);
                r.z = strtod(p, &p);
                r.w = strtof(p, &p);
                r.kind = int16_t(strtol(p, &p, 10));
                r.flag = strtol(p, &p, 10);
                p += 2;
                char* q = strchr(p, '"');
                r.name.assign(p, q);
                r.ref = uint32_t(strtoul(q + 1, &p, 10));
                t += r.id + r.x;
            }
            bench::keep(t);
            fclose(f);
        }
        items(s, N);
    });
    bench::reg("small_read/limit_from_chars", [](State& s) {
        prep();
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "rb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            char b[1024];
            Rec r;
            double t = 0;
            while (fgets(b, sizeof b, f)) {
                const char *p = b + 6, *e = b + 512;
                auto g = [&](auto& x) { p = std::from_chars(p, e, x).ptr + 1; };
                g(r.id);
                g(r.x);
                g(r.y);
                g(r.z);
                g(r.w);
                g(r.kind);
                int fl;
                g(fl);
                r.flag = fl;
                ++p;
                auto q = (const char*)memchr(p, '"', 64);
                r.name.assign(p, q);
                p = q + 2;
                g(r.ref);
                t += r.id + r.x;
            }
            bench::keep(t);
            fclose(f);
        }
        items(s, N);
    });
    bench::reg("format_int/snprintf", [](State& s) {
        char b[32];
        for (auto _ : s)
            for (int i : is) {
                snprintf(b, 28, "%ld", long(i));
                bench::keep(b);
            }
        items(s, M);
    });
    bench::reg("format_int/fmt", [](State& s) {
        char b[32];
        for (auto _ : s)
            for (int i : is) {
                *fmt::format_to(b, FMT_COMPILE("{}"), i) = 0;
                bench::keep(b);
            }
        items(s, M);
    });
    bench::reg("format_int/limit_to_chars", [](State& s) {
        char b[32];
        for (auto _ : s)
            for (int i : is) {
                *std::to_chars(b, b + 32, long(i)).ptr = 0;
                bench::keep(b);
            }
        items(s, M);
    });
    bench::reg("format_double/snprintf", [](State& s) {
        char b[64];
        for (auto _ : s)
            for (double d : ds) {
                snprintf(b, 64, "%.16g", d);
                bench::keep(b);
            }
        items(s, M);
    });
    bench::reg("format_double/fmt_16g", [](State& s) {
        char b[64];
        for (auto _ : s)
            for (double d : ds) {
                *fmt::format_to(b, FMT_COMPILE("{:.16g}"), d) = 0;
                bench::keep(b);
            }
        items(s, M);
    });
    bench::reg("format_double/to_chars_16g", [](State& s) {
        char b[64];
        for (auto _ : s)
            for (double d : ds) {
                *std::to_chars(b, b + 64, d, std::chars_format::general, 16).ptr = 0;
                bench::keep(b);
            }
        items(s, M);
    });
    bench::reg("format_double/limit_to_chars_shortest", [](State& s) {
        char b[64];
        for (auto _ : s)
            for (double d : ds) {
                *std::to_chars(b, b + 64, d).ptr = 0;
                bench::keep(b);
            }
        items(s, M);
    });
    static std::string txt;
    static std::vector<uint32_t> at;
    {
        char b[64];
        for (double d : ds) {
            at.push_back(uint32_t(txt.size()));
            txt.append(b, size_t(snprintf(b, 64, "%.16g ", d)));
        }
    }
    bench::reg("parse_double/strtod", [](State& s) {
        for (auto _ : s) {
            double t = 0;
            for (uint32_t a : at)
                t += strtod(&txt[a], nullptr);
            bench::keep(t);
        }
        items(s, M);
    });
    bench::reg("parse_double/limit_from_chars", [](State& s) {
        for (auto _ : s) {
            double t = 0, d;
            for (uint32_t a : at) {
                std::from_chars(&txt[a], &txt[a] + 32, d);
                t += d;
            }
            bench::keep(t);
        }
        items(s, M);
    });
    bench::reg("format_string/snprintf_std_string", [](State& s) {
        int i = 0;
        for (auto _ : s) {
            char b[256];
            snprintf(b, 256, "%s: %d of %d (%.3f)", "loading model", ++i, 1000, i * 0.001);
            std::string o(b);
            bench::keep(o);
        }
    });
    bench::reg("format_string/fmt", [](State& s) {
        int i = 0;
        for (auto _ : s) {
            ++i;
            std::string o = fmt::format(FMT_COMPILE("{}: {} of {} ({:.3f})"), "loading model", i,
                                        1000, i * 0.001);
            bench::keep(o);
        }
    });
    bench::reg("format_string/ostringstream", [](State& s) {
        int i = 0;
        for (auto _ : s) {
            ++i;
            std::ostringstream o;
            o << "loading model"
              << ": " << i << " of " << 1000 << " (" << std::fixed << std::setprecision(3)
              << i * 0.001 << ")";
            std::string t = o.str();
            bench::keep(t);
        }
    });
    bench::reg("format_string/swprintf_std_wstring", [](State& s) {
        int i = 0;
        for (auto _ : s) {
            wchar_t b[256];
            ++i;
            swprintf(b, 256, L"%S: %d of %d (%.3f)", L"loading model", i, 1000, i * 0.001);
            std::wstring o(b);
            bench::keep(o);
        }
    });
    return true;
}();
} // namespace
