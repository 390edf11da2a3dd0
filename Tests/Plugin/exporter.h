// SPDX-License-Identifier: MIT

/// @file
/// What the test program and its plug-ins share: a library that both link, and types of this header
/// alone, which each compiles by itself.

#pragma once

#include <string>
#include <vector>

#include "Base/Plugin/zePluginService.h"

/// What happened, in order: plug-ins add lines such as "a.so initialized".
ZEBASE_API std::vector<std::string>& journal();

/// Exported, with an out-of-line virtual: one type information in the process.
class ZEBASE_API Exporter : public zePlugin::Service {
public:
    using Service::Service;
    ~Exporter() override;
    zeString::IString getType() const override; // "exporter"
    virtual std::string run() = 0;
};

/// Hidden in each library, as all that is compiled with -fvisibility=hidden.
struct Shape {
    virtual ~Shape() = default;
};
struct Circle : Shape {};
struct ShapeError {};
