// SPDX-License-Identifier: MIT

/// @file
/// What the editor and a plug-in for a format agree on. Two libraries make one format: a small
/// declaration, "serviceDecl_NAME", by which it is found, and the exporter itself beside it, which
/// is not opened before somebody exports.

#pragma once

#include <string>
#include <vector>

namespace notebook {

/// The type of the services that declarations register; a service's name is that of its format.
inline constexpr const wchar_t* exporterType = L"notebook.exporter";

/// What an exporter has, under this name and with C linkage: it adds the text in its format to
/// `out`. The lines may have any bytes but newlines.
using Export = void(const std::string& title, const std::vector<std::string>& lines,
                    std::string& out);
inline constexpr const wchar_t* exportSymbol = L"exportLines";

} // namespace notebook
