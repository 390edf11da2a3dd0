// SPDX-License-Identifier: MIT

/// @file
/// The values of the options that make a transform.

#pragma once

#include <string>

#include "Base/Linear/zeLinearMatrix.h"

namespace scenefile {

// Each throws a UsageError if the value is none of the forms.

/// "DEGREES,AXIS", right-handed about an axis through the origin: x, y, z, or a direction "X,Y,Z".
/// Quarters of a turn about x, y and z are exact.
zeLinear::AffineMatrix rotation(const std::string& value);

/// "FACTOR", or "X,Y,Z" with a factor for each axis; none of them is 0.
zeLinear::AffineMatrix scaling(const std::string& value);

/// "X,Y,Z".
zeLinear::AffineMatrix translation(const std::string& value);

} // namespace scenefile
