// SPDX-License-Identifier: MIT

// Linear algebra: ours. The workload is described in linearWorkload.h.

#include "Linear/linearWorkload.h"

namespace linear {
namespace {

template<class M>
M inverted(M m) {
    m.invert();
    return m;
}

template<class M>
M invertedFast(M m) {
    m.invertFast();
    return m;
}

const std::vector<ProjMatrix>& projections() {
    static const std::vector<ProjMatrix> all(inputs().matrices.begin(), inputs().matrices.end());
    return all;
}

const bool registered = [] {
    const Inputs& in = inputs();
    add("mul", "ours", in.matrices, [](auto& a, auto& b) { return b * a; });
    add("point", "ours", in.points, [m = in.matrices[1]](auto& p, auto&) { return p * m; });
    add("point_array", "ours", in.million, [m = in.matrices[1]](auto& p, auto&) { return p * m; });
    add("invert", "ours", in.matrices, [](auto& a, auto&) { return inverted(a); });
    add("invert_fast", "ours", in.matrices, [](auto& a, auto&) { return invertedFast(a); });
    add("invert4", "ours", projections(), [](auto& a, auto&) { return invertedFast(a); });
    add("invert4_pivots", "ours", projections(), [](auto& a, auto&) { return inverted(a); });
    add("normalise", "ours", in.vectors, [](auto v, auto&) {
        v.normalize();
        return v;
    });
    add("cross", "ours", in.vectors, [](auto& a, auto& b) { return cross(a, b); });
    add("slerp", "ours", in.rotations, [](auto& a, auto& b) { return slerp(a, b, 0.3); });
    add("quat_to_matrix", "ours", in.rotations, [](auto& q, auto&) {
        AffineMatrix m;
        q.getMatrix(m);
        return m;
    });
    return true;
}();

} // namespace
} // namespace linear
