// SPDX-License-Identifier: MIT

// Linear algebra in double precision, beside the header libraries of the field: the same workload
// on the same numbers in one process. Each operation runs over an array of kItems in the
// first-level cache, and stores its result; "point_array" runs over a million points, 24 MB in and
// 24 MB out. Names are <workload>/<peer>; a peer "limit_..." is plain code without a library, and
// not a peer. Before anything is timed, each peer's results are compared with ours.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#define GLM_ENABLE_EXPERIMENTAL
#include <benchmark/benchmark.h>

#include "Base/Linear/zeLinearMatrix.h"
#include "Base/Linear/zeLinearQuaternion.h"

#include <Eigen/Geometry>
#include <Imath/ImathMatrix.h>
#include <Imath/ImathQuat.h>
#include <Imath/ImathVec.h>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtx/matrix_operation.hpp>

namespace {

using namespace zeLinear;

using EigenCompact = Eigen::Transform<double, 3, Eigen::AffineCompact>;
using EigenAffine = Eigen::Transform<double, 3, Eigen::Affine>;

constexpr std::size_t kItems = 512;
constexpr std::size_t kPoints = 1'000'000;

/// The same numbers on every machine, between -1 and 1.
double nextNumber() {
    static std::uint64_t state = 70;
    std::uint64_t z = (state += 0x9e3779b97f4a7c15U);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-52 - 1;
}

// One set of inputs, in the types of each library.

struct Points {
    std::vector<Point> ours;
    std::vector<Vector> vectors;
    std::vector<Imath::V3d> imath;
    std::vector<Eigen::Vector3d> eigen;
    std::vector<glm::dvec3> glm;

    explicit Points(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const double x = nextNumber();
            const double y = nextNumber();
            const double z = nextNumber();
            ours.emplace_back(x, y, z);
            vectors.emplace_back(x, y, z);
            imath.emplace_back(x, y, z);
            eigen.emplace_back(x, y, z);
            glm.emplace_back(x, y, z);
        }
    }
};

struct Matrices {
    std::vector<AffineMatrix> ours;
    std::vector<ProjMatrix> proj;
    std::vector<Imath::M44d> imath;
    std::vector<EigenAffine> eigen;
    std::vector<EigenCompact> compact;
    std::vector<glm::dmat4> glm;

    Matrices() {
        for (std::size_t k = 0; k < kItems; ++k) {
            AffineMatrix a;
            Imath::M44d im;
            EigenAffine e = EigenAffine::Identity();
            glm::dmat4 g(1);
            for (int i = 0; i < 4; ++i)
                for (int j = 0; j < 3; ++j)
                    e.matrix()(j, i) = g[i][j] = im[i][j] = a.m[i][j] = nextNumber() + (i == j);
            ours.push_back(a);
            proj.emplace_back(a);
            imath.push_back(im);
            eigen.push_back(e);
            compact.emplace_back(e);
            glm.push_back(g);
        }
    }
};

struct Rotations {
    std::vector<Quaternion> ours;
    std::vector<Imath::Quatd> imath;
    std::vector<Eigen::Quaterniond> eigen;
    std::vector<glm::dquat> glm;

    Rotations() {
        for (std::size_t k = 0; k < kItems; ++k) {
            Quaternion q(nextNumber(), nextNumber(), nextNumber(), nextNumber());
            q.normalize();
            ours.push_back(q);
            imath.emplace_back(q.w, q.x, q.y, q.z);
            eigen.emplace_back(q.w, q.x, q.y, q.z);
            glm.emplace_back(q.w, q.x, q.y, q.z);
        }
    }
};

// The numbers of a result, by which the peers are compared.

using Numbers = std::vector<double>;

Numbers numbers(const Vector& v) {
    return {v.x, v.y, v.z};
}
Numbers numbers(const Point& p) {
    return {p.x, p.y, p.z};
}
Numbers numbers(const Imath::V3d& v) {
    return {v.x, v.y, v.z};
}
Numbers numbers(const Eigen::Vector3d& v) {
    return {v.x(), v.y(), v.z()};
}
Numbers numbers(const glm::dvec3& v) {
    return {v.x, v.y, v.z};
}
Numbers numbers(const Quaternion& q) {
    return {q.x, q.y, q.z, q.w};
}
Numbers numbers(const Imath::Quatd& q) {
    return {q.v.x, q.v.y, q.v.z, q.r};
}
Numbers numbers(const Eigen::Quaterniond& q) {
    return {q.x(), q.y(), q.z(), q.w()};
}
Numbers numbers(const glm::dquat& q) {
    return {q.x, q.y, q.z, q.w};
}
template<class Get>
Numbers rows(int count, Get get) {
    Numbers result;
    for (int i = 0; i < count; ++i)
        for (int j = 0; j < 3; ++j)
            result.push_back(get(i, j));
    return result;
}
// Matrices are compared by the first three columns; rotations have no translation of interest.
Numbers numbers(const AffineMatrix& m) {
    return rows(4, [&](int i, int j) { return m.m[i][j]; });
}
Numbers numbers(const ProjMatrix& m) {
    return rows(4, [&](int i, int j) { return m.m[i][j]; });
}
Numbers numbers(const Imath::M44d& m) {
    return rows(4, [&](int i, int j) { return m[i][j]; });
}
Numbers numbers(const EigenAffine& m) {
    return rows(4, [&](int i, int j) { return m.matrix()(j, i); });
}
Numbers numbers(const EigenCompact& m) {
    return rows(4, [&](int i, int j) { return m.matrix()(j, i); });
}
Numbers numbers(const Eigen::Matrix4d& m) {
    return rows(4, [&](int i, int j) { return m(j, i); });
}
Numbers numbers(const Eigen::Matrix3d& m) {
    return rows(3, [&](int i, int j) { return m(j, i); });
}
Numbers numbers(const glm::dmat4& m) {
    return rows(4, [&](int i, int j) { return m[i][j]; });
}
Numbers numbers(const glm::dmat3& m) {
    return rows(3, [&](int i, int j) { return m[i][j]; });
}

/// A peer's numbers must be ours to 1e-9, or all of the other sign (rotations).
bool agree(const Numbers& a, const Numbers& b) {
    double same = 0;
    double turned = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        same = std::max(same, std::fabs(a[i] - b[i]) / (1 + std::fabs(a[i])));
        turned = std::max(turned, std::fabs(a[i] + b[i]) / (1 + std::fabs(a[i])));
    }
    return std::min(same, turned) < 1e-9;
}

/// A workload: what each library computes from item i and its successor.
class Workload {
public:
    explicit Workload(std::string name) : name_(std::move(name)) {}

    /// The first peer is ours; the others are compared with it.
    template<class T, class F>
    Workload& add(const std::string& peer, const std::vector<T>& items, F f) {
        using Result = std::decay_t<decltype(f(items[0], items[0]))>;
        check(peer, [&](std::size_t i) { return numbers(f(items[i], items[i + 1])); });
        benchmark::RegisterBenchmark((name_ + '/' + peer).c_str(), [&items, f](auto& state) {
            const std::size_t n = items.size();
            std::vector<Result> results(n);
            for (auto _ : state) {
                for (std::size_t i = 0; i < n; ++i)
                    results[i] = f(items[i], items[i + 1 < n ? i + 1 : 0]);
                benchmark::DoNotOptimize(results.data());
                benchmark::ClobberMemory();
            }
            state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
        });
        return *this;
    }

private:
    void check(const std::string& peer, const std::function<Numbers(std::size_t)>& result) {
        for (std::size_t i = 0; i < 16; ++i) {
            if (ours_.size() <= i)
                ours_.push_back(result(i));
            else if (!agree(ours_[i], result(i))) {
                std::fprintf(stderr, "%s/%s differs from ours\n", name_.c_str(), peer.c_str());
                std::exit(1);
            }
        }
    }

    std::string name_;
    std::vector<Numbers> ours_;
};

void registerProducts(const Matrices& m, const Points& p, const Points& million) {
    Workload("mul")
        .add("ours", m.ours, [](auto& a, auto& b) { return b * a; })
        .add("imath", m.imath, [](auto& a, auto& b) { return b * a; })
        .add("eigen_Affine3d", m.eigen, [](auto& a, auto& b) { return EigenAffine(a * b); })
        .add("eigen_AffineCompact3d", m.compact,
             [](auto& a, auto& b) { return EigenCompact(a * b); })
        .add("glm", m.glm, [](auto& a, auto& b) { return a * b; });
    for (const auto& [name, points] :
         {std::pair("point", &p), std::pair("point_array", &million)}) {
        Workload(name)
            .add("ours", points->ours, [a = m.ours[1]](auto& q, auto&) { return q * a; })
            .add("imath", points->imath, [a = m.imath[1]](auto& q, auto&) { return q * a; })
            .add("eigen", points->eigen,
                 [a = m.eigen[1]](auto& q, auto&) { return Eigen::Vector3d(a * q); })
            .add("glm", points->glm,
                 [a = m.glm[1]](auto& q, auto&) { return glm::dvec3(a * glm::dvec4(q, 1)); })
            .add("limit_12", points->ours, [a = m.ours[1]](auto& q, auto&) {
                const auto& e = a.m;
                return Point(q.x * e[0][0] + q.y * e[1][0] + q.z * e[2][0] + e[3][0],
                             q.x * e[0][1] + q.y * e[1][1] + q.z * e[2][1] + e[3][1],
                             q.x * e[0][2] + q.y * e[1][2] + q.z * e[2][2] + e[3][2]);
            });
    }
}

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

void registerInverses(const Matrices& m) {
    Workload("invert")
        .add("ours", m.ours, [](auto& a, auto&) { return inverted(a); })
        .add("imath_gjInverse", m.imath, [](auto& a, auto&) { return a.gjInverse(); });
    Workload("invert_fast")
        .add("ours", m.ours, [](auto& a, auto&) { return invertedFast(a); })
        .add("imath", m.imath, [](auto& a, auto&) { return a.inverse(); })
        .add("eigen_Affine3d", m.eigen,
             [](auto& a, auto&) { return EigenAffine(a.inverse(Eigen::Affine)); })
        .add("eigen_AffineCompact3d", m.compact,
             [](auto& a, auto&) { return EigenCompact(a.inverse(Eigen::Affine)); })
        .add("glm_affineInverse", m.glm, [](auto& a, auto&) { return glm::affineInverse(a); });
    Workload("invert4")
        .add("ours_invertFast", m.proj, [](auto& a, auto&) { return invertedFast(a); })
        .add("ours_invert", m.proj, [](auto& a, auto&) { return inverted(a); })
        .add("eigen", m.eigen, [](auto& a, auto&) { return Eigen::Matrix4d(a.matrix().inverse()); })
        .add("glm", m.glm, [](auto& a, auto&) { return glm::inverse(a); });
}

void registerVectors(const Points& p) {
    Workload("normalise")
        .add("ours", p.vectors,
             [](auto a, auto&) {
                 a.normalize();
                 return a;
             })
        .add("imath", p.imath, [](auto& a, auto&) { return a.normalized(); })
        .add("eigen", p.eigen, [](auto& a, auto&) { return Eigen::Vector3d(a.normalized()); })
        .add("glm", p.glm, [](auto& a, auto&) { return glm::normalize(a); });
    Workload("cross")
        .add("ours", p.vectors, [](auto& a, auto& b) { return cross(a, b); })
        .add("imath", p.imath, [](auto& a, auto& b) { return a.cross(b); })
        .add("eigen", p.eigen, [](auto& a, auto& b) { return Eigen::Vector3d(a.cross(b)); })
        .add("glm", p.glm, [](auto& a, auto& b) { return glm::cross(a, b); });
}

void registerRotations(const Rotations& r) {
    Workload("slerp")
        .add("ours", r.ours, [](auto& a, auto& b) { return slerp(a, b, 0.3); })
        .add("imath", r.imath, [](auto& a, auto& b) { return Imath::slerpShortestArc(a, b, 0.3); })
        .add("eigen", r.eigen, [](auto& a, auto& b) { return a.slerp(0.3, b); })
        .add("glm", r.glm, [](auto& a, auto& b) { return glm::slerp(a, b, 0.3); });
    Workload("quat_to_matrix")
        .add("ours", r.ours,
             [](auto& a, auto&) {
                 AffineMatrix m;
                 a.getMatrix(m);
                 return m;
             })
        .add("imath", r.imath, [](auto& a, auto&) { return a.toMatrix44(); })
        .add("eigen", r.eigen, [](auto& a, auto&) { return a.toRotationMatrix(); })
        .add("glm", r.glm, [](auto& a, auto&) { return glm::mat3_cast(a); });
}

} // namespace

int main(int argc, char** argv) {
    const Matrices matrices;
    const Rotations rotations;
    const Points points(kItems);
    const Points million(kPoints);
    registerProducts(matrices, points, million);
    registerInverses(matrices);
    registerVectors(points);
    registerRotations(rotations);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
