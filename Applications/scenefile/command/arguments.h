// SPDX-License-Identifier: MIT

/// @file
/// The arguments of the command line.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Base/Linear/zeLinearMatrix.h"

#include "document/document.h"

namespace scenefile {

/// What `scenefile --help` prints.
extern const char* const helpText;

/// The command, its files and its options.
struct Arguments {
    std::vector<std::string> words; ///< The command and its files.
    DocumentForm form;
    bool skipUnsupported = false;
    int segments = 48;
    zeLinear::AffineMatrix transform; ///< The product of all steps: the first one acts first.
    std::optional<std::string> keyFile;
    std::optional<std::string> expectedHash;
    bool help = false;
    std::vector<std::string> options; ///< The names of the options that were given.
};

/// Throws a UsageError for an option that does not exist, or a value that it cannot have.
Arguments parseArguments(const std::vector<std::string>& list);

/// @name The values of the options that make a transform
/// @{

/// "DEGREES,AXIS", right-handed about an axis through the origin: x, y, z, or a direction "X,Y,Z".
/// Quarter turns about x, y and z are exact. Throws a UsageError.
zeLinear::AffineMatrix rotation(const std::string& value);

/// "FACTOR", or "X,Y,Z" with a factor for each axis; none of them is 0. Throws a UsageError.
zeLinear::AffineMatrix scaling(const std::string& value);

/// "X,Y,Z". Throws a UsageError.
zeLinear::AffineMatrix translation(const std::string& value);
/// @}

} // namespace scenefile
