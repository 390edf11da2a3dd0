// SPDX-License-Identifier: MIT

// What others need for the work of packing.cpp. The peer has no form that seeks a bound: a user
// starts at the side of the total area and adds 5 per cent until all fit.

#include "packingWorkload.h"

#define STB_RECT_PACK_IMPLEMENTATION
#include <stb/stb_rect_pack.h>
namespace {
std::vector<stbrp_rect> rects(int n) {
    std::vector<stbrp_rect> v;
    for (auto& [width, height] : bench::rectSizes(n)) {
        stbrp_rect x{};
        x.w = width;
        x.h = height;
        v.push_back(x);
    }
    return v;
}
bool pack(std::vector<stbrp_rect>& v, int side) {
    static std::vector<stbrp_node> nodes(65536);
    stbrp_context x;
    stbrp_init_target(&x, side, side, nodes.data(), std::min(side, 65536));
    return stbrp_pack_rects(&x, v.data(), int(v.size()));
}
void seek(State& s, int n) {
    auto a = rects(n);
    double area = 0;
    for (auto& x : a)
        area += double(x.w) * x.h;
    double side = 0;
    for (auto _ : s) {
        side = std::sqrt(area);
        for (;;) {
            auto b = a;
            if (pack(b, int(side)))
                break;
            side *= 1.05;
        }
    }
    s.counters["fill"] = area / (side * side);
    bench::items(s, size_t(n));
}
const bool registered = [] {
    for (int n : {100, 1000, 10000, 100000}) {
        auto t = "/" + std::to_string(n);
        bench::reg("pack/stb_rect_pack" + t, [n](State& s) {
            auto a = rects(n);
            for (auto _ : s) {
                auto b = a;
                bench::require(pack(b, bench::roomySide(n)), "all fit");
            }
            bench::items(s, size_t(n));
        });
        bench::reg("pack_seek/stb_rect_pack" + t, [n](State& s) { seek(s, n); });
    }
    return true;
}();
} // namespace
