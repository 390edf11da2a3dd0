// SPDX-License-Identifier: MIT

// What others need for the work of strings.cpp, and the limits below which nothing can go.

#include <iconv.h>

#include <clocale>
#include <cwchar>
#include <memory>

#include "Support/Workload.h"

#include <boost/locale/encoding_utf.hpp>
#include <unicode/ustring.h>
namespace {
std::wstring decode(const std::string& s) {
    std::wstring o(s.size(), 0);
    wchar_t* q = &o[0];
    const uint8_t *p = (const uint8_t*)s.data(), *e = p + s.size();
    while (p < e) {
        while (e - p >= 8) {
            uint64_t x;
            memcpy(&x, p, 8);
            if (x & 0x8080808080808080ull)
                break;
            for (int i = 0; i < 8; ++i)
                q[i] = p[i];
            p += 8;
            q += 8;
        }
        if (p == e)
            break;
        uint32_t b = *p;
        if (b < 0x80) {
            *q++ = wchar_t(b);
            ++p;
        } else if (b < 0xe0 && e - p > 1 && (p[1] & 0xc0) == 0x80) {
            *q++ = wchar_t((b & 31) << 6 | (p[1] & 63));
            p += 2;
        } else if (b < 0xf0 && e - p > 2 && (p[1] & 0xc0) == 0x80 && (p[2] & 0xc0) == 0x80) {
            *q++ = wchar_t((b & 15) << 12 | (p[1] & 63) << 6 | (p[2] & 63));
            p += 3;
        } else
            break;
    }
    o.resize(size_t(q - &o[0]));
    return o;
}
std::string encode(const std::wstring& s) {
    std::string o(s.size() * 3, 0);
    char* q = &o[0];
    for (wchar_t c : s) {
        uint32_t u = uint32_t(c);
        if (u < 0x80)
            *q++ = char(u);
        else if (u < 0x800) {
            *q++ = char(0xc0 | u >> 6);
            *q++ = char(0x80 | (u & 63));
        } else {
            *q++ = char(0xe0 | u >> 12);
            *q++ = char(0x80 | (u >> 6 & 63));
            *q++ = char(0x80 | (u & 63));
        }
    }
    o.resize(size_t(q - &o[0]));
    return o;
}
size_t conv(iconv_t d, const void* in, size_t n, void* out, size_t cap) {
    char *i = (char*)in, *o = (char*)out;
    size_t l = cap;
    if (iconv(d, &i, &n, &o, &l) == size_t(-1))
        abort();
    return cap - l;
}
[[gnu::noinline]] void pushBack(std::wstring& text, wchar_t c) {
    text.push_back(c);
}
const bool registered = [] {
    if (!setlocale(LC_ALL, "C.UTF-8"))
        abort();
    for (std::string k : {"ascii", "latin", "cjk"})
        for (size_t n : {16, 256, 65536}) {
            auto t = "/" + k + "/" + std::to_string(n);
            std::string u = bench::utf8(k, n);
            std::wstring x = decode(u);
            if (encode(x) != u)
                abort();
            auto b = [=](State& s) { s.SetBytesProcessed(int64_t(s.iterations() * u.size())); };
            bench::reg("utf8_to_wide/iconv_kept_descriptor" + t, [=](State& s) {
                iconv_t d = iconv_open("UCS-4LE", "UTF-8");
                for (auto _ : s) {
                    std::wstring o(u.size(), 0);
                    o.resize(conv(d, u.data(), u.size(), &o[0], o.size() * 4) / 4);
                    bench::keep(o);
                }
                iconv_close(d);
                b(s);
            });
            bench::reg("utf8_to_wide/limit_iconv_opened_per_call_two_passes" + t, [=](State& s) {
                for (auto _ : s) {
                    iconv_t d = iconv_open("UCS-4LE", "UTF-8");
                    auto q = malloc(4 * u.size());
                    size_t m = conv(d, u.data(), u.size(), q, 4 * u.size()) / 4;
                    free(q);
                    iconv_close(d);
                    auto z = new wchar_t[m + 1];
                    d = iconv_open("UCS-4LE", "UTF-8");
                    conv(d, u.data(), u.size(), z, m * 4 + 4);
                    iconv_close(d);
                    std::wstring o(z, m);
                    delete[] z;
                    bench::keep(o);
                }
                b(s);
            });
            bench::reg("utf8_to_wide/mbstowcs" + t, [=](State& s) {
                for (auto _ : s) {
                    std::wstring o(u.size(), 0);
                    o.resize(mbstowcs(&o[0], u.c_str(), o.size()));
                    bench::keep(o);
                }
                b(s);
            });
            bench::reg("utf8_to_wide/boost_locale_utf" + t, [=](State& s) {
                for (auto _ : s)
                    bench::keep(boost::locale::conv::utf_to_utf<wchar_t>(u));
                b(s);
            });
            bench::reg("utf8_to_wide/icu" + t, [=](State& s) {
                std::vector<UChar> m(u.size() + 1);
                for (auto _ : s) {
                    UErrorCode e = U_ZERO_ERROR;
                    int32_t a, q;
                    u_strFromUTF8(m.data(), int32_t(m.size()), &a, u.data(), int32_t(u.size()), &e);
                    std::wstring o(size_t(a), 0);
                    e = U_ZERO_ERROR;
                    u_strToUTF32((UChar32*)&o[0], a, &q, m.data(), a, &e);
                    o.resize(size_t(q));
                    bench::keep(o);
                }
                b(s);
            });
            bench::reg("utf8_to_wide/limit_decoder" + t, [=](State& s) {
                for (auto _ : s)
                    bench::keep(decode(u));
                b(s);
            });
            if (k == "ascii")
                bench::reg("utf8_to_wide/limit_widen" + t, [=](State& s) {
                    for (auto _ : s) {
                        std::wstring o(u.begin(), u.end());
                        bench::keep(o);
                    }
                    b(s);
                });
            bench::reg("wide_to_utf8/iconv_kept_descriptor" + t, [=](State& s) {
                iconv_t d = iconv_open("UTF-8", "UCS-4LE");
                for (auto _ : s) {
                    std::string o(x.size() * 3, 0);
                    o.resize(conv(d, x.data(), x.size() * 4, &o[0], o.size()));
                    bench::keep(o);
                }
                iconv_close(d);
                b(s);
            });
            bench::reg("wide_to_utf8/limit_iconv_opened_per_call_two_passes" + t, [=](State& s) {
                for (auto _ : s) {
                    iconv_t d = iconv_open("UTF-8", "UCS-4LE");
                    auto q = malloc(6 * x.size());
                    size_t m = conv(d, x.data(), x.size() * 4, q, 6 * x.size());
                    free(q);
                    iconv_close(d);
                    auto z = new char[m + 1];
                    d = iconv_open("UTF-8", "UCS-4LE");
                    conv(d, x.data(), x.size() * 4, z, m + 1);
                    iconv_close(d);
                    std::string o(z, m);
                    delete[] z;
                    bench::keep(o);
                }
                b(s);
            });
            bench::reg("wide_to_utf8/wcstombs" + t, [=](State& s) {
                for (auto _ : s) {
                    std::string o(x.size() * 3 + 1, 0);
                    o.resize(wcstombs(&o[0], x.c_str(), o.size()));
                    bench::keep(o);
                }
                b(s);
            });
            bench::reg("wide_to_utf8/boost_locale_utf" + t, [=](State& s) {
                for (auto _ : s)
                    bench::keep(boost::locale::conv::utf_to_utf<char>(x));
                b(s);
            });
            bench::reg("wide_to_utf8/limit_encoder" + t, [=](State& s) {
                for (auto _ : s)
                    bench::keep(encode(x));
                b(s);
            });
        }
    bench::reg("wstring_copy20/std_wstring", [](State& s) {
        std::wstring a(20, L'x');
        for (auto _ : s) {
            std::wstring o(a);
            bench::keep(o);
        }
    });
    bench::reg("wstring_copy20/limit_two_allocations", [](State& s) {
        std::wstring a(20, L'x');
        for (auto _ : s) {
            auto o = new std::wstring(a);
            bench::keep(o);
            delete o;
        }
    });
    bench::reg("wstring_append1M/std_wstring", [](State& s) {
        for (auto _ : s) {
            std::wstring o;
            for (int i = 0; i < 1000000; ++i)
                o.append(1, wchar_t('a' + i % 26));
            bench::keep(o);
        }
    });
    bench::reg("wstring_append1M/limit_on_the_heap_by_a_call", [](State& s) {
        for (auto _ : s) {
            auto o = std::make_unique<std::wstring>();
            for (int i = 0; i < 1000000; ++i)
                pushBack(*o, wchar_t('a' + i % 26));
            bench::keep(o);
        }
    });
    bench::reg("wstring_replace_all/std_wstring", [](State& s) {
        std::wstring a;
        for (int i = 0; i < 1000; ++i)
            a += L"path/with/${NAME}/x";
        for (auto _ : s) {
            std::wstring o(a);
            size_t p = 0;
            while ((p = o.find(L"${NAME}", p)) != o.npos) {
                o.replace(p, 7, L"project");
                p += 7;
            }
            bench::keep(o);
        }
    });
    bench::reg("wstring_replace_all_longer/limit_one_pass", [](State& s) {
        std::wstring a, f = L"${NAME}";
        for (int i = 0; i < 1000; ++i)
            a += L"path/with/${NAME}/x";
        for (auto _ : s) {
            std::wstring o;
            o.reserve(a.size() * 2);
            size_t p = 0, q;
            while ((q = a.find(f, p)) != a.npos) {
                o.append(a, p, q - p);
                o += L"longer_project_name";
                p = q + 7;
            }
            o.append(a, p, a.npos);
            bench::keep(o);
        }
    });
    bench::reg("wstring_replace_all_longer/std_wstring", [](State& s) {
        std::wstring a;
        for (int i = 0; i < 1000; ++i)
            a += L"path/with/${NAME}/x";
        for (auto _ : s) {
            std::wstring o(a);
            size_t p = 0;
            while ((p = o.find(L"${NAME}", p)) != o.npos) {
                o.replace(p, 7, L"longer_project_name");
                p += 19;
            }
            bench::keep(o);
        }
    });
    return true;
}();
} // namespace
