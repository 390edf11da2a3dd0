// SPDX-License-Identifier: MIT

/// @file
/// The command line: run(), and the parts that it is made of.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Base/Linear/zeLinearMatrix.h"
#include "Base/Linear/zeLinearRange.h"

#include "document/document.h"

namespace zeOS {
class AppOutputStream;
}

namespace scenefile {

/// Does what the arguments (without the program's name) ask for, and returns the exit code: 0 for
/// success, 1 for bad input or a failed write, 2 for wrong use. Results go to app::results(),
/// messages to app::messages(), both of which must be open, and without control characters from
/// outside. A file "-" is standard input or output itself.
int run(const std::vector<std::string>& arguments);

// Commands.

struct Call;

/// What a command is called, takes and does.
struct Command {
    const char* name;
    const char* files; ///< The types of its arguments, for zeOS::GetOpt.
    const wchar_t* usage;
    std::vector<std::string> options; ///< Those that it takes.
    void (*run)(const Call&);
    std::size_t written = 0; ///< Which of the files it writes, from 1; 0 if none.
};

const std::vector<Command>& commands();

// Arguments.

/// The command, its files and its options.
struct Arguments {
    const Command* command = nullptr;
    std::vector<std::string> files;
    DocumentForm form;
    bool skipUnsupported = false;
    int segments = 48;
    zeLinear::AffineMatrix transform; ///< The product of all steps: the first one acts first.
    std::optional<std::string> keyFile;
    std::optional<std::string> expectedHash;
    std::vector<std::string> options; ///< The names of the options that were given.
};

/// Nothing if the help or the version was asked for, and has been printed. Throws a UsageError for
/// an option that does not exist, or a value that it cannot have, and a Failure for a file that
/// cannot be read or written.
std::optional<Arguments> parseArguments(const std::vector<std::string>& list);

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
void showDocument(const Document& document, zeOS::AppOutputStream& out);

/// What was checked, for a document that loadDocument() found nothing wrong with.
void reportSound(const Document& document, zeOS::AppOutputStream& out);

/// "bounds (0 0 0) to (1 1 1)": the corners, to 9 digits.
std::string boundsText(const zeLinear::Range3d& bounds);

/// "1 face", "2 faces"; catalogs have them under "one_face" and "many_face".
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
