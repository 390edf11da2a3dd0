// SPDX-License-Identifier: MIT

/// @file
/// How often memory was asked for, and how much: a test program that links AllocationCount.cpp
/// counts.

#pragma once

#include <cstddef>

/// Calls of operator new so far, and the bytes that they asked for.
std::size_t allocationCount();
std::size_t allocatedBytes();

/// Lets the n-th next call of operator new fail, and none with 0.
void failAllocation(std::size_t n);
