// SPDX-License-Identifier: MIT

/// @file
/// The command line: run(), and the parts that it is made of.

#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "Base/Linear/zeLinearMatrix.h"
#include "Base/Linear/zeLinearRange.h"

#include "document/document.h"

namespace scenefile {

/// Does what the arguments (without the program's name) ask for, and returns the exit code: 0 for
/// success, 1 for bad input or a failed write, 2 for wrong use. Results are printed to `out`,
/// messages to `err`, both without control characters from outside. A file "-" is standard input
/// or output itself, not `out`.
int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

// Arguments.

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

// Reports.

/// What is in the document, with counts and sizes: its packets by type, its vertices, and each
/// object with its transform, its bounds and its runs of elements.
void showDocument(const Document& document, std::ostream& out);

/// What was checked, for a document that loadDocument() found nothing wrong with.
void reportSound(const Document& document, std::ostream& out);

/// "bounds (0 0 0) to (1 1 1)": the corners, to 9 digits.
std::string boundsText(const zeLinear::Range3d& bounds);

/// "1 face", "2 faces".
std::string counted(std::int64_t count, const char* noun);

/// "3 nodes, 2 meshes, ...", in one line.
std::string summary(const Scene& scene);

// Digests.

/// The bytes of `keyFile`, or else of the environment's SCENEFILE_KEY, or else "scenefile": a key
/// that everybody has, and that detects accidental changes only. Throws a Failure for one that is
/// empty.
std::string hashKey(const std::optional<std::string>& keyFile);

/// 64 digits: see zeOS::CreateFileHash(). Throws a Failure if the file cannot be read.
std::string fileHash(const std::string& path, const std::string& key);

/// Throws a UsageError if `expected` is no digest, and a Failure if it is not `hash`, that of the
/// file `path`.
void expectHash(const std::string& path, const std::string& hash, const std::string& expected);

} // namespace scenefile
