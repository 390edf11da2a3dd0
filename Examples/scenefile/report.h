// SPDX-License-Identifier: MIT

/// @file
/// What the commands tell about a document.

#pragma once

#include <iosfwd>
#include <string>

#include "document.h"

namespace scenefile {

/// What is in the document, with counts and sizes: its packets by type, its vertices, and each
/// object with its runs of elements.
void showDocument(const Document& document, const std::string& path, std::ostream& out);

/// What was checked, for a document that loadDocument() found nothing wrong with.
void reportSound(const Document& document, const std::string& path, std::ostream& out);

/// "3 nodes, 2 meshes, ...", in one line.
std::string summary(const Scene& scene);

/// How many of the scene's coordinates a text document, with its 16 digits, does not hold exactly.
int countRounded(const Scene& scene);

} // namespace scenefile
