// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearMatrix.h"

namespace zeLinear {

namespace {

/// The 2-by-2 minors of rows 0 and 1 (upper) and of rows 2 and 3 (lower), for the column pairs 01,
/// 02, 03, 12, 13, 23: the determinant and the cofactors of a 4-by-4 matrix come from these.
struct Minors {
    double upper[6];
    double lower[6];

    explicit Minors(const ProjMatrix& matrix) {
        fill(upper, matrix.m[0], matrix.m[1]);
        fill(lower, matrix.m[2], matrix.m[3]);
    }

    double determinant() const {
        return upper[0] * lower[5] - upper[1] * lower[4] + upper[2] * lower[3] +
               upper[3] * lower[2] - upper[4] * lower[1] + upper[5] * lower[0];
    }

private:
    static void fill(double (&minors)[6], const double (&a)[4], const double (&b)[4]) {
        minors[0] = a[0] * b[1] - a[1] * b[0];
        minors[1] = a[0] * b[2] - a[2] * b[0];
        minors[2] = a[0] * b[3] - a[3] * b[0];
        minors[3] = a[1] * b[2] - a[2] * b[1];
        minors[4] = a[1] * b[3] - a[3] * b[1];
        minors[5] = a[2] * b[3] - a[3] * b[2];
    }
};

/// The cofactors of a row, but for the sign, from the other row of its pair and the minors of the
/// other two.
Tuple4 cofactors(const double (&partner)[4], const double (&minors)[6]) {
    return Tuple4(partner[1] * minors[5] - partner[2] * minors[4] + partner[3] * minors[3],
                  -partner[0] * minors[5] + partner[2] * minors[2] - partner[3] * minors[1],
                  partner[0] * minors[4] - partner[1] * minors[2] + partner[3] * minors[0],
                  -partner[0] * minors[3] + partner[1] * minors[1] - partner[2] * minors[0]);
}

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
    return Minors(*this).determinant();
}

bool ProjMatrix::invertFast() {
    const Minors minors(*this);
    const double det = minors.determinant();
    if (std::fabs(det) < epsilonTol)
        return false;
    const auto scaled = [](const Tuple4& t, double divisor) {
        return detail::each<Tuple4>([divisor](double s) { return s / divisor; }, t);
    };
    // Rows 0 and 1 pair with the lower minors, 2 and 3 with the upper; the signs alternate.
    ProjMatrix result(
        scaled(cofactors(m[1], minors.lower), det), scaled(cofactors(m[0], minors.lower), -det),
        scaled(cofactors(m[3], minors.upper), det), scaled(cofactors(m[2], minors.upper), -det));
    result.transpose();
    *this = result;
    return true;
}

ProjMatrix ProjMatrix::inverse() const {
    ProjMatrix result = *this;
    result.invert();
    return result;
}

} // namespace zeLinear
