// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearStream.h"

#include <ostream>

#include "Base/Linear/zeLinearMatrix.h"

namespace zeLinear {

namespace {

template<class T>
std::ostream& writeThree(std::ostream& stream, const char* name, const T& t) {
    return stream << name << '(' << t.x << ',' << t.y << ',' << t.z << ')';
}

template<class M>
std::ostream& writeRows(std::ostream& stream, const char* name, const M& matrix) {
    stream << name << '(' << std::endl;
    for (const auto& row : matrix.m) {
        const char* separator = "";
        for (double entry : row) {
            stream << separator << entry;
            separator = ",";
        }
        stream << std::endl;
    }
    return stream << ')';
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const Normal& n) {
    return writeThree(stream, "Normal", n);
}

std::ostream& operator<<(std::ostream& stream, const Point& p) {
    return writeThree(stream, "Point", p);
}

std::ostream& operator<<(std::ostream& stream, const PointFlt& p) {
    return writeThree(stream, "PointFlt", p);
}

std::ostream& operator<<(std::ostream& stream, const Point2& p) {
    return stream << "Point2(" << p.x << ',' << p.y << ')';
}

std::ostream& operator<<(std::ostream& stream, const Vector& v) {
    return writeThree(stream, "Vector", v);
}

std::ostream& operator<<(std::ostream& stream, const VectorFlt& v) {
    return writeThree(stream, "VectorFlt", v);
}

std::ostream& operator<<(std::ostream& stream, const Line& line) {
    return stream << "Line(" << line.point << ',' << line.direction << ')';
}

std::ostream& operator<<(std::ostream& stream, const AffineMatrix& m) {
    return writeRows(stream, "AffineMatrix", m);
}

std::ostream& operator<<(std::ostream& stream, const ProjMatrix& m) {
    return writeRows(stream, "ProjMatrix", m);
}

std::ostream& operator<<(std::ostream& stream, const ProjMatrixFlt& m) {
    return writeRows(stream, "ProjMatrixFlt", m);
}

} // namespace zeLinear
