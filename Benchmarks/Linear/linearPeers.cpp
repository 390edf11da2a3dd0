// SPDX-License-Identifier: MIT

// Linear algebra: the header libraries of the field, on the same inputs. Their matrices multiply
// column vectors, and are the transposes of ours, but for Imath's.

#define GLM_ENABLE_EXPERIMENTAL
#include "Linear/linearWorkload.h"
#include <Eigen/Geometry>
#include <Imath/ImathMatrix.h>
#include <Imath/ImathQuat.h>
#include <Imath/ImathVec.h>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtx/matrix_operation.hpp>

using EigenAffine = Eigen::Transform<double, 3, Eigen::Affine>;
using EigenCompact = Eigen::Transform<double, 3, Eigen::AffineCompact>;

// Found by argument-dependent look-up: beside the types.

namespace IMATH_INTERNAL_NAMESPACE {
linear::Numbers numbers(const V3d& v) {
    return {v.x, v.y, v.z};
}
linear::Numbers numbers(const Quatd& q) {
    return {q.v.x, q.v.y, q.v.z, q.r};
}
linear::Numbers numbers(const M44d& m) {
    return linear::rows(4, [&](int i, int j) { return m[i][j]; });
}
} // namespace IMATH_INTERNAL_NAMESPACE

namespace Eigen {
linear::Numbers numbers(const Vector3d& v) {
    return {v.x(), v.y(), v.z()};
}
linear::Numbers numbers(const Quaterniond& q) {
    return {q.x(), q.y(), q.z(), q.w()};
}
linear::Numbers numbers(const Matrix3d& m) {
    return linear::rows(3, [&](int i, int j) { return m(j, i); });
}
linear::Numbers numbers(const Matrix4d& m) {
    return linear::rows(4, [&](int i, int j) { return m(j, i); });
}
linear::Numbers numbers(const EigenAffine& m) {
    return linear::rows(4, [&](int i, int j) { return m.matrix()(j, i); });
}
linear::Numbers numbers(const EigenCompact& m) {
    return linear::rows(4, [&](int i, int j) { return m.matrix()(j, i); });
}
} // namespace Eigen

namespace glm {
linear::Numbers numbers(const dvec3& v) {
    return {v.x, v.y, v.z};
}
linear::Numbers numbers(const dquat& q) {
    return {q.x, q.y, q.z, q.w};
}
linear::Numbers numbers(const dmat3& m) {
    return linear::rows(3, [&](int i, int j) { return m[i][j]; });
}
linear::Numbers numbers(const dmat4& m) {
    return linear::rows(4, [&](int i, int j) { return m[i][j]; });
}
} // namespace glm

namespace linear {
namespace {

/// Three numbers each.
template<class T, class Source>
std::vector<T> threes(const std::vector<Source>& source) {
    std::vector<T> result;
    for (const Source& s : source)
        result.push_back(T(s.x, s.y, s.z));
    return result;
}

template<class T>
std::vector<T> rotations() {
    std::vector<T> result;
    for (const Quaternion& q : inputs().rotations)
        result.push_back(T(q.w, q.x, q.y, q.z));
    return result;
}

template<class T, class Entry>
std::vector<T> matrices(const T& identity, Entry entry) {
    std::vector<T> result(kItems, identity);
    for (std::size_t k = 0; k < kItems; ++k)
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 3; ++j)
                entry(result[k], i, j) = inputs().matrices[k].m[i][j];
    return result;
}

/// The inputs in the types of the peers, for as long as the program runs.
struct PeerInputs {
    template<class V>
    struct Points {
        std::vector<V> few = threes<V>(inputs().points);
        std::vector<V> million = threes<V>(inputs().million);
    };
    Points<Imath::V3d> imathPoints;
    Points<Eigen::Vector3d> eigenPoints;
    Points<glm::dvec3> glmPoints;

    std::vector<Imath::Quatd> imathRotations = rotations<Imath::Quatd>();
    std::vector<Eigen::Quaterniond> eigenRotations = rotations<Eigen::Quaterniond>();
    std::vector<glm::dquat> glmRotations = rotations<glm::dquat>();

    std::vector<Imath::M44d> imath =
        matrices(Imath::M44d(), [](auto& m, int i, int j) -> double& { return m[i][j]; });
    std::vector<EigenAffine> eigen =
        matrices(EigenAffine(EigenAffine::Identity()),
                 [](auto& m, int i, int j) -> double& { return m.matrix()(j, i); });
    std::vector<EigenCompact> compact =
        matrices(EigenCompact(EigenCompact::Identity()),
                 [](auto& m, int i, int j) -> double& { return m.matrix()(j, i); });
    std::vector<glm::dmat4> glm =
        matrices(glm::dmat4(1), [](auto& m, int i, int j) -> double& { return m[i][j]; });
};

const PeerInputs& peers() {
    static const PeerInputs all;
    return all;
}

void addProducts() {
    const PeerInputs& in = peers();
    add("mul", "imath", in.imath, [](auto& a, auto& b) { return b * a; });
    add("mul", "eigen_Affine3d", in.eigen, [](auto& a, auto& b) { return EigenAffine(a * b); });
    add("mul", "eigen_AffineCompact3d", in.compact,
        [](auto& a, auto& b) { return EigenCompact(a * b); });
    add("mul", "glm", in.glm, [](auto& a, auto& b) { return a * b; });
}

void addPoints(const std::string& workload, const std::vector<Imath::V3d>& imath,
               const std::vector<Eigen::Vector3d>& eigen, const std::vector<glm::dvec3>& glm,
               const std::vector<Point>& plain) {
    const PeerInputs& in = peers();
    add(workload, "imath", imath, [m = in.imath[1]](auto& p, auto&) { return p * m; });
    add(workload, "eigen", eigen,
        [m = in.eigen[1]](auto& p, auto&) { return Eigen::Vector3d(m * p); });
    add(workload, "glm", glm,
        [m = in.glm[1]](auto& p, auto&) { return glm::dvec3(m * glm::dvec4(p, 1)); });
    add(workload, "limit_12", plain, [a = inputs().matrices[1]](auto& p, auto&) {
        const auto& m = a.m;
        return Point(p.x * m[0][0] + p.y * m[1][0] + p.z * m[2][0] + m[3][0],
                     p.x * m[0][1] + p.y * m[1][1] + p.z * m[2][1] + m[3][1],
                     p.x * m[0][2] + p.y * m[1][2] + p.z * m[2][2] + m[3][2]);
    });
}

void addInverses() {
    const PeerInputs& in = peers();
    add("invert", "imath_gjInverse", in.imath, [](auto& a, auto&) { return a.gjInverse(); });
    add("invert_fast", "imath", in.imath, [](auto& a, auto&) { return a.inverse(); });
    add("invert_fast", "eigen_Affine3d", in.eigen,
        [](auto& a, auto&) { return EigenAffine(a.inverse(Eigen::Affine)); });
    add("invert_fast", "eigen_AffineCompact3d", in.compact,
        [](auto& a, auto&) { return EigenCompact(a.inverse(Eigen::Affine)); });
    add("invert_fast", "glm_affineInverse", in.glm,
        [](auto& a, auto&) { return glm::affineInverse(a); });
    add("invert4", "eigen", in.eigen,
        [](auto& a, auto&) { return Eigen::Matrix4d(a.matrix().inverse()); });
    add("invert4", "glm", in.glm, [](auto& a, auto&) { return glm::inverse(a); });
    add("invert4_pivots", "imath_gjInverse", in.imath,
        [](auto& a, auto&) { return a.gjInverse(); });
}

void addVectors() {
    const auto& imath = peers().imathPoints.few;
    const auto& eigen = peers().eigenPoints.few;
    const auto& glm = peers().glmPoints.few;
    add("normalise", "imath", imath, [](auto& a, auto&) { return a.normalized(); });
    add("normalise", "eigen", eigen,
        [](auto& a, auto&) { return Eigen::Vector3d(a.normalized()); });
    add("normalise", "glm", glm, [](auto& a, auto&) { return glm::normalize(a); });
    add("cross", "imath", imath, [](auto& a, auto& b) { return a.cross(b); });
    add("cross", "eigen", eigen, [](auto& a, auto& b) { return Eigen::Vector3d(a.cross(b)); });
    add("cross", "glm", glm, [](auto& a, auto& b) { return glm::cross(a, b); });
}

void addRotations() {
    const PeerInputs& in = peers();
    add("slerp", "imath", in.imathRotations,
        [](auto& a, auto& b) { return Imath::slerpShortestArc(a, b, 0.3); });
    add("slerp", "eigen", in.eigenRotations, [](auto& a, auto& b) { return a.slerp(0.3, b); });
    add("slerp", "glm", in.glmRotations, [](auto& a, auto& b) { return glm::slerp(a, b, 0.3); });
    add("quat_to_matrix", "imath", in.imathRotations,
        [](auto& q, auto&) { return q.toMatrix44(); });
    add("quat_to_matrix", "eigen", in.eigenRotations,
        [](auto& q, auto&) { return q.toRotationMatrix(); });
    add("quat_to_matrix", "glm", in.glmRotations, [](auto& q, auto&) { return glm::mat3_cast(q); });
}

const bool registered = [] {
    const PeerInputs& in = peers();
    addProducts();
    addPoints("point", in.imathPoints.few, in.eigenPoints.few, in.glmPoints.few, inputs().points);
    addPoints("point_array", in.imathPoints.million, in.eigenPoints.million, in.glmPoints.million,
              inputs().million);
    addInverses();
    addVectors();
    addRotations();
    return true;
}();

} // namespace
} // namespace linear
