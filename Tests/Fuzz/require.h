// SPDX-License-Identifier: MIT

/// @file
/// What a target finds wrong ends it.

#pragma once

#include <cstdlib>

inline void require(bool holds) {
    if (!holds)
        std::abort();
}
