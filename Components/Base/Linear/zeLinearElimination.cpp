// SPDX-License-Identifier: MIT

// Inversion by elimination. All entries stay in registers. This file is compiled without SLP
// vectorisation, whose shuffles cost more than its arithmetic saves.

#include <cstddef>
#include <utility>

#include "Base/Linear/zeLinearMatrix.h"

namespace zeLinear {

namespace {

/// Without a branch, which random pivots would make unpredictable.
template<std::size_t N>
void exchangeIf(bool exchange, double (&a)[N], double (&b)[N]) {
    for (std::size_t j = 0; j < N; ++j) {
        const double s = a[j];
        const double t = b[j];
        a[j] = exchange ? t : s;
        b[j] = exchange ? s : t;
    }
}

/// One column of the elimination, which is a constant so that all loops unroll. Entries of `matrix`
/// up to the column are not read again, and so not written.
template<std::size_t Column, std::size_t N>
bool eliminateColumn(double (&matrix)[N][N], double (&inverse)[N][N]) {
    std::size_t pivot = Column; // A tie keeps the earlier row.
    for (std::size_t row = Column + 1; row < N; ++row)
        if (std::fabs(matrix[row][Column]) > std::fabs(matrix[pivot][Column]))
            pivot = row;
    for (std::size_t row = Column + 1; row < N; ++row) {
        exchangeIf(row == pivot, matrix[row], matrix[Column]);
        exchangeIf(row == pivot, inverse[row], inverse[Column]);
    }
    if (std::fabs(matrix[Column][Column]) < epsilonTol)
        return false;

    const double scale = 1 / matrix[Column][Column];
    for (std::size_t j = Column + 1; j < N; ++j)
        matrix[Column][j] *= scale;
    for (std::size_t j = 0; j < N; ++j)
        inverse[Column][j] *= scale;
    for (std::size_t row = 0; row < N; ++row) {
        if (row == Column)
            continue;
        const double factor = matrix[row][Column];
        for (std::size_t j = Column + 1; j < N; ++j)
            matrix[row][j] -= factor * matrix[Column][j];
        for (std::size_t j = 0; j < N; ++j)
            inverse[row][j] -= factor * inverse[Column][j];
    }
    return true;
}

/// Gauss-Jordan elimination with partial pivoting, on a copy of the square part of `source` with
/// the identity beside it. False if a pivot is below epsilonTol; `inverse` then holds nothing
/// useful.
template<AnyMatrix M, std::size_t N>
bool eliminate(const M& source, double (&inverse)[N][N]) {
    double matrix[N][N];
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t j = 0; j < N; ++j) {
            matrix[i][j] = source.m[i][j];
            inverse[i][j] = i == j ? 1 : 0;
        }
    return [&]<std::size_t... Column>(std::index_sequence<Column...>) {
        return (eliminateColumn<Column>(matrix, inverse) && ...);
    }
    (std::make_index_sequence<N>());
}

} // namespace

bool AffineMatrix::invert() {
    double inverse[3][3];
    if (!eliminate(*this, inverse))
        return false;
    AffineMatrix result{Vector(inverse[0]), Vector(inverse[1]), Vector(inverse[2]), Vector::zero};
    (-(row(3) * result)).get(result.m[3]);
    *this = result;
    return true;
}

bool AffineMatrix2::invert() {
    double inverse[2][2];
    if (!eliminate(*this, inverse))
        return false;
    AffineMatrix2 result{Vector2(inverse[0]), Vector2(inverse[1]), Vector2::zero};
    (-(row(2) * result)).get(result.m[2]);
    *this = result;
    return true;
}

bool ProjMatrix::invert() {
    double inverse[4][4];
    if (!eliminate(*this, inverse))
        return false;
    *this =
        ProjMatrix(Tuple4(inverse[0]), Tuple4(inverse[1]), Tuple4(inverse[2]), Tuple4(inverse[3]));
    return true;
}

} // namespace zeLinear
