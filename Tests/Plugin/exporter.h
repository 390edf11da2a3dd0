// SPDX-License-Identifier: MIT

/// @file
/// What the test program and its plug-ins share. The types are of this header alone: each library
/// compiles them by itself, hidden.

#pragma once

#include <string>
#include <vector>

#include "Base/Plugin/zePluginService.h"
#include "Base/Utility/zeUtilError.h"

using Lines = std::vector<std::string>;

/// The program's: what happened, in order. Plug-ins add lines such as "a.so initialized".
ZEBASE_API Lines& journal();

struct Exporter : zePlugin::Service {
    using Service::Service;
    zeString::IString getType() const override { return L"exporter"; }
    virtual std::string run() = 0;
};

struct Refusal : zeUtil::Error {};
