// SPDX-License-Identifier: MIT

/// @file
/// The keyed digest of a document's name and content.

#pragma once

#include <optional>
#include <string>

namespace scenefile {

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
