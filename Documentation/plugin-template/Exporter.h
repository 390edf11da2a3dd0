// SPDX-License-Identifier: MIT
// What the program and its plug-ins agree upon: a type of service. The program publishes this
// header.

#pragma once

#include <string>

#include "Base/Plugin/zePluginService.h"

/// Turns lines into another form. Whoever finds a service of the type "exporter" casts it to this
/// class: what is registered under that name must be one.
class Exporter : public zePlugin::Service {
public:
    using Service::Service;
    zeString::IString getType() const override { return L"exporter"; }

    /// Puts the other form of `text` into `out`. False if that failed, with the reason in `out`.
    virtual bool convert(const std::string& text, std::string& out) = 0;
};
