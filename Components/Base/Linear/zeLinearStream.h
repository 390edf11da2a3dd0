// SPDX-License-Identifier: MIT

/// @file
/// Text output of the value types, for logs and debuggers: the name of the type and its numbers,
/// as the stream is set to print a double.
///
/// | Type                                       | Text                                    |
/// |--------------------------------------------|-----------------------------------------|
/// | Normal, Point, PointFlt, Vector, VectorFlt | `Point(1,2,3)`                          |
/// | Point2                                     | `Point2(1,2)`                           |
/// | Line                                       | `Line(Point(1,2,3),Normal(0,0,1))`      |
/// | AffineMatrix, ProjMatrix, ProjMatrixFlt    | `AffineMatrix(`, a line for each row,   |
/// |                                            | and `)` on a line that is not ended     |
///
/// The lines of a matrix end with `std::endl`, which flushes the stream. Parametric lines and
/// planes have no text form; their parts do.
///
/// Threads: as the stream allows.
///
/// @code
/// #include "Base/Linear/zeLinearPoint.h"
/// #include <sstream>
/// std::ostringstream text;
/// text << zeLinear::Point(1, 2.5, 3);
/// assert(text.str() == "Point(1,2.5,3)");
/// @endcode

#pragma once

#include <iosfwd>

#include "Base/zeBaseExport.h"

namespace zeLinear {

class Normal;
struct Point;
struct PointFlt;
struct Point2;
struct Vector;
struct VectorFlt;
struct Line;
struct ParamLine;
struct ParamPlane;
struct AffineMatrix;
struct ProjMatrix;
struct ProjMatrixFlt;

/// @{
/// Writes the form of the table above, and returns `stream`.
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const Normal& n);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const Point& p);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const PointFlt& p);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const Point2& p);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const Vector& v);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const VectorFlt& v);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const Line& line);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const AffineMatrix& m);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const ProjMatrix& m);
ZEBASE_API std::ostream& operator<<(std::ostream& stream, const ProjMatrixFlt& m);
/// @}

/// @{
/// Deleted: both would convert to one of their parts and print that. Print the parts.
std::ostream& operator<<(std::ostream& stream, const ParamLine& line) = delete;
std::ostream& operator<<(std::ostream& stream, const ParamPlane& plane) = delete;
/// @}

} // namespace zeLinear
