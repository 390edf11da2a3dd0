// SPDX-License-Identifier: MIT

#include "Base/IO/ioClientContext.h"

ioClientReadContext::~ioClientReadContext() = default;

void ioClientReadContext::prePacketRead() {}

void ioClientReadContext::postPacketRead() {}
