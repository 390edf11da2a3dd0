// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearMatrix.h"

namespace zeLinear {

namespace {

/// Two numbers that go through the same operations at once, with the results of each by itself.
using Pair = double __attribute__((vector_size(16)));

/// What the determinant and the cofactors of a 4-by-4 matrix come from. Rows 0 and 1 are its upper
/// half, 2 and 3 its lower one, and what both halves have stands in a pair.
struct Halves {
    Pair first[4];  ///< Rows 0 and 2, by column.
    Pair second[4]; ///< Rows 1 and 3.
    /// The 2-by-2 minors of the half, for the column pairs 01, 02, 03, 12, 13, 23.
    Pair minors[6];
    Pair othersMinors[6]; ///< Those of the other half.

    explicit Halves(const ProjMatrix& matrix) {
        const auto& m = matrix.m;
        for (int j = 0; j < 4; ++j) {
            first[j] = Pair{m[0][j], m[2][j]};
            second[j] = Pair{m[1][j], m[3][j]};
        }
        minors[0] = first[0] * second[1] - first[1] * second[0];
        minors[1] = first[0] * second[2] - first[2] * second[0];
        minors[2] = first[0] * second[3] - first[3] * second[0];
        minors[3] = first[1] * second[2] - first[2] * second[1];
        minors[4] = first[1] * second[3] - first[3] * second[1];
        minors[5] = first[2] * second[3] - first[3] * second[2];
        for (int i = 0; i < 6; ++i)
            othersMinors[i] = Pair{minors[i][1], minors[i][0]};
    }

    double determinant() const {
        const Pair sum = minors[0] * othersMinors[5] - minors[1] * othersMinors[4] +
                         minors[2] * othersMinors[3] + minors[3] * othersMinors[2] -
                         minors[4] * othersMinors[1] + minors[5] * othersMinors[0];
        return sum[0]; // sum[1] has the same terms, added in the opposite order
    }

    /// The cofactors of a row, but for the sign, from the other row of its half and the minors of
    /// the other half.
    void cofactors(Pair (&result)[4], const Pair (&partner)[4]) const {
        const auto& minor = othersMinors;
        result[0] = partner[1] * minor[5] - partner[2] * minor[4] + partner[3] * minor[3];
        result[1] = -partner[0] * minor[5] + partner[2] * minor[2] - partner[3] * minor[1];
        result[2] = partner[0] * minor[4] - partner[1] * minor[2] + partner[3] * minor[0];
        result[3] = -partner[0] * minor[3] + partner[1] * minor[1] - partner[2] * minor[0];
    }
};

/// Turns row `i` of a frame towards row `j`: the rows of a rotation, multiplied in front.
template<class M>
void turnRows(M& matrix, int i, int j, double angle) {
    const double s = std::sin(angle);
    const double c = std::cos(angle);
    const auto a = matrix.row(i);
    const auto b = matrix.row(j);
    (c * a + s * b).get(matrix.m[i]);
    (c * b - s * a).get(matrix.m[j]);
}

} // namespace

// AffineMatrix

void AffineMatrix::rotateX(double angle) {
    turnRows(*this, 1, 2, angle);
}

void AffineMatrix::rotateY(double angle) {
    turnRows(*this, 2, 0, angle);
}

void AffineMatrix::rotateZ(double angle) {
    turnRows(*this, 0, 1, angle);
}

void AffineMatrix::rotate(double angle, const Normal& axis) {
    const double c = std::cos(angle);
    AffineMatrix outer;
    AffineMatrix skew;
    outer.outerProduct(axis, axis);
    skew.crossMatrix(axis);
    preMult(AffineMatrix(c) + (1 - c) * outer - std::sin(angle) * skew);
}

void AffineMatrix::rotate(double angle, const Line& axis) {
    const Vector toAxis = axis.point - Point::origin;
    translate(toAxis);
    rotate(angle, axis.direction);
    translate(-toAxis);
}

void AffineMatrix::rotate(const Normal& from, const Normal& to) {
    const Normal axis(cross(from, to));
    const double turn = angle(from, to);
    if (axis.valid)
        rotate(turn, axis);
    else if (turn > toRadians(90))
        rotate(toRadians(180), Normal(from.orthogonalVector()));
}

void AffineMatrix::mirror(const Plane& plane) {
    AffineMatrix reflection;
    reflection.outerProduct(plane.normal, plane.normal);
    reflection = Identity - 2 * reflection;
    (plane.point - plane.point * reflection).get(reflection.m[3]);
    preMult(reflection);
}

AffineMatrix AffineMatrix::inverse() const {
    AffineMatrix result = *this;
    result.invert();
    return result;
}

AffineMatrix AffineMatrix::vectorMatrix(bool& ok) const {
    AffineMatrix result = *this;
    ok = result.invert();
    if (ok)
        result.transpose();
    return result;
}

AffineMatrix AffineMatrix::normalMatrix(bool& ok) const {
    AffineMatrix result = vectorMatrix(ok);
    if (ok && det3x3() < 0)
        result *= AffineMatrix(-1.0);
    return result;
}

// AffineMatrix2

void AffineMatrix2::rotate(double angle) {
    turnRows(*this, 0, 1, angle);
}

AffineMatrix2 AffineMatrix2::inverse() const {
    AffineMatrix2 result = *this;
    result.invert();
    return result;
}

// ProjMatrix

double ProjMatrix::det4x4() const {
    return Halves(*this).determinant();
}

bool ProjMatrix::invertFast() {
    const Halves halves(*this);
    const double det = halves.determinant();
    if (std::fabs(det) < epsilonTol)
        return false;
    Pair first[4];
    Pair second[4];
    halves.cofactors(first, halves.second);
    halves.cofactors(second, halves.first);
    for (int i = 0; i < 4; ++i) { // The inverse is the transpose, and the signs alternate.
        const Pair even = first[i] / Pair{det, det};
        const Pair odd = second[i] / Pair{-det, -det};
        const double row[] = {even[0], odd[0], even[1], odd[1]};
        std::memcpy(m[i], row, sizeof row);
    }
    return true;
}

ProjMatrix ProjMatrix::inverse() const {
    ProjMatrix result = *this;
    result.invert();
    return result;
}

} // namespace zeLinear
