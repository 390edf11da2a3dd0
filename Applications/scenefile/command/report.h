// SPDX-License-Identifier: MIT

/// @file
/// What the commands print about a document.

#pragma once

#include <iosfwd>
#include <string>

#include "Base/Linear/zeLinearRange.h"

#include "document/document.h"

namespace scenefile {

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

} // namespace scenefile
