// SPDX-License-Identifier: MIT

/// @file
/// The state of a zeTCP::Socket.

#pragma once

#include <cstdio>
#include <memory>

#include "Base/TCP/zeTCPAddress.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilInterval.h"

namespace zeTCP {

class SocketImpl : public ze::ImplBase {
public:
    /// The sides that close() takes, and `closed` holds.
    enum Side : unsigned { readSide = 1, writeSide = 2, bothSides = 3 };

    int fd = -1;
    std::unique_ptr<Address> localAddress;  ///< A cache.
    std::unique_ptr<Address> remoteAddress; ///< A client's target, or a cache.
    bool connected = false;                 ///< Set by ServerSocket alone.
    bool throwMode = false;
    zeUtil::Interval timeout;
    unsigned closed = 0;         ///< Sides.
    std::FILE* stream = nullptr; ///< Owns `fd` where it is not null.
};

} // namespace zeTCP
